#include "core/base/HostError.h"
#include "far/FarEnds.h"

#include <dlfcn.h>
#include <system_error>

#include <filesystem>
#include <string>

namespace qo::host
{
namespace
{
/// Beside the program as an installed one has it, and so in the folder of the build.
std::string modulePath()
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return (program.parent_path() / "../" QO_FAR_MODULE).lexically_normal().string();
}

const FarEnds& loadFarEnds()
{
    const auto fail = [](const std::string& cause)
    {
        return HostError(ExitCode::failed,
                         "the part for devices, services and friends cannot be loaded: " + cause);
    };
    // All its symbols at once: one that is missing is said here rather than in the midst of work.
    void* const module = ::dlopen(modulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module)
        throw fail(::dlerror()); // NOLINT(concurrency-mt-unsafe)
    const auto farEndsOf = reinterpret_cast<FarEndsOf*>(::dlsym(module, "qoFarEnds"));
    const FarEnds* const found = farEndsOf ? farEndsOf(QO_VERSION) : nullptr;
    if (!found)
        throw fail("it is not of version " QO_VERSION ", as this program is; after an upgrade, "
                   "start the program anew");
    return *found;
}
} // namespace

const FarEnds& farEnds()
{
    static const FarEnds& loaded = loadFarEnds();
    return loaded;
}
} // namespace qo::host
