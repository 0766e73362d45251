#include "core/rules/RuleFile.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <cerrno>
#include <string>

namespace qo::host
{
namespace
{
/// The kernel says of a bad file only that it is one; the bytes tell more.
std::string faultOf(const std::string& bytes)
{
    if (bytes.find('\0') != std::string::npos || toUtf8(fromUtf8(bytes)) != bytes)
        return "it is no text in UTF-8";
    if (!isReadableRuleFile(bytes))
        return "it is no complete XML, or has more or deeper elements than a rule can have";
    if (bytes.find("<ReorganizeRule") == std::string::npos)
        return "it has no element ReorganizeRule";
    return "its elements are not closed in their order, or do not make a whole rule: every output "
           "needs a folder or a separator, every folder a name for some kind of file, every name "
           "that is not kept a pattern, and the rule a name";
}
} // namespace

std::unique_ptr<CReorganizeRule> readRuleFile(const CString& path)
{
    std::unique_ptr<CReorganizeRule> rule(CReorganizeRuleXmlParser::loadReorganizeRule(path));
    if (rule)
        return rule;
    const std::string shown = shownPath(path);
    std::string bytes;
    const int error = readFile(path, largestRuleFile, bytes);
    if (error == EFBIG)
        throw HostError(ExitCode::failed,
                        shown + " is no valid rule: it is larger than " +
                            std::to_string(largestRuleFile >> 10) + " KiB");
    if (error != 0)
        throw HostError(error == ENOENT || error == ENOTDIR ? ExitCode::notFound : ExitCode::failed,
                        shown + " cannot be read: " + errorWords(error));
    throw HostError(ExitCode::failed, shown + " is no valid rule: " + faultOf(bytes));
}
} // namespace qo::host
