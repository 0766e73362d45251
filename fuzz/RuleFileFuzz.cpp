#include "Reorganize/ReorganizeRule.h"
#include "Reorganize/ReorganizeRuleXmlParser.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace
{
using RulePtr = std::unique_ptr<CReorganizeRule>;

/// One file for the whole run, named after the process.
const std::string& rulePath()
{
    static const std::string path = "/tmp/qo-rule-fuzz-" + std::to_string(::getpid());
    return path;
}

RulePtr load()
{
    return RulePtr(CReorganizeRuleXmlParser::loadReorganizeRule(qo::fromSystemPath(rulePath())));
}

/// What the rule is written as.
std::string saved(const CReorganizeRule& rule)
{
    if (!CReorganizeRuleXmlParser::saveReorganizeRule(&rule, qo::fromSystemPath(rulePath())))
        std::abort();
    std::ifstream in(rulePath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
} // namespace

/// Any bytes are a rule file that can be read; the rule in it, if there is one, is written and read
/// again the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::ofstream(rulePath(), std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    const RulePtr rule = load();
    if (!rule)
        return 0;
    const std::string first = saved(*rule);
    const RulePtr again = load();
    if (!again || saved(*again) != first)
        std::abort();
    return 0;
}
