#include "core/session/KeyValueConfig.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{
/// One file for the whole run, named after the process.
const CString& settingsPath()
{
    static const CString path =
        qo::fromSystemPath("/tmp/qo-settings-fuzz-" + std::to_string(::getpid()));
    return path;
}
} // namespace

/// Any bytes are a settings file that can be read; what it is read as is written and read again the
/// same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using qo::host::KeyValueConfig;
    qo::IFileSystem& files = qo::fileSystem();
    const auto canBeMadeAgain = qo::Durability::canBeMadeAgain;
    if (files.replaceFile(settingsPath(), data, size, canBeMadeAgain) != 0)
        std::abort();
    std::vector<KeyValueConfig::Entry> first;
    {
        KeyValueConfig config(settingsPath());
        KVConfig::Section* const section = config.addSection(KVConfig::ordinarySection, u"Fuzz");
        config.setValue(config.addKey(section, u"key", u""), u" \n=\\ ");
        first = config.entries();
    }
    const KeyValueConfig again(settingsPath(), true);
    const std::vector<KeyValueConfig::Entry> second = again.entries();
    bool same = again.complaint().empty() && first.size() == second.size();
    for (std::size_t i = 0; same && i < first.size(); ++i)
        same = first[i].section == second[i].section && first[i].key == second[i].key &&
               first[i].value == second[i].value;
    if (!same)
        std::abort();
    return 0;
}
