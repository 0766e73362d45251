#include "core/base/HostError.h"
#include "far/FarEnds.h"

#include <dlfcn.h>

namespace qo::host
{
namespace
{
/// Where installed programs have their modules, seen from the program, and so in the folder of the
/// build. The system's loader knows what the first word means.
constexpr const char* modulePath = "$ORIGIN/../" QO_FAR_MODULE;

const FarEnds& loadFarEnds()
{
    const auto fail = [](const std::string& cause)
    {
        return HostError(ExitCode::failed,
                         "the part for devices, services and friends cannot be loaded: " + cause);
    };
    // All its symbols at once: one that is missing is said here rather than in the midst of work.
    void* const module = ::dlopen(modulePath, RTLD_NOW | RTLD_LOCAL);
    if (!module)
        throw fail(::dlerror());
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
