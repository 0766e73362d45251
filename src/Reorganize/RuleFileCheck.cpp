#include "Reorganize/RuleFileCheck.h"

#include "common/XmlCheck.h"

bool qo::isReadableRuleFile(std::string_view bytes)
{
    return isReadableXml(
        bytes, {largestRuleFile, deepestRuleFile, mostRuleFileElements, mostRuleFileAttributes});
}
