#include "platform/TemporaryNames.h"

#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/posix/OpenFolder.h"
#include "platform/posix/TreeRemover.h"
#include "types/Guid.h"
#include "types/Utf.h"

#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <unordered_map>

namespace qo
{
namespace
{
constexpr std::string_view namePrefix = ".qo-tmp-";
constexpr std::string_view hexDigits = "0123456789abcdef";
constexpr std::size_t machineDigits = 8;
constexpr std::size_t randomLetters = 6;
constexpr std::int64_t ticksOfADay = std::int64_t(24) * 3600 * 10'000'000;

/// Machine and process of a temporary name.
struct Owner
{
    std::string_view machine;
    unsigned process = 0;
};

bool parseName(std::string_view name, Owner& owner)
{
    if (!name.starts_with(namePrefix))
        return false;
    name.remove_prefix(namePrefix.size());
    const std::size_t afterMachine = name.find_first_not_of(hexDigits);
    if (afterMachine != machineDigits || name[afterMachine] != '-')
        return false;
    owner.machine = name.substr(0, machineDigits);
    name.remove_prefix(machineDigits + 1);
    const std::size_t digits = name.find_first_not_of(hexDigits);
    if (digits == 0 || digits > machineDigits || name.size() != digits + 1 + randomLetters ||
        name[digits] != '-')
        return false;
    owner.process =
        static_cast<unsigned>(std::stoul(std::string(name.substr(0, digits)), nullptr, 16));
    return name.find_first_of("-./", digits + 1) == std::string_view::npos;
}

/// A process number means nothing on another machine, or in another container, which may have the
/// same folder: both are in this text.
const std::string& machineText()
{
    static const std::string text = []
    {
        char host[HOST_NAME_MAX + 1] = {};
        (void)::gethostname(host, HOST_NAME_MAX);
        char space[64] = {};
        (void)!::readlink("/proc/self/ns/pid", space, sizeof(space) - 1);
        char digits[machineDigits + 1];
        const std::size_t hash = std::hash<std::string>{}(std::string(host) + space);
        std::snprintf(digits, sizeof(digits), "%08x", static_cast<unsigned>(hash));
        return std::string(digits);
    }();
    return text;
}

bool isLeft(const Owner& owner, const struct stat& st)
{
    const bool isHere = owner.machine == machineText();
    if (isHere && owner.process == static_cast<unsigned>(::getpid()))
        return false;
    if (isHere && !isProcessRunning(owner.process))
        return true;
    // The time of the last change cannot be set back, unlike that of the last write.
    const FILETIME changed = fromUnixTime(st.st_ctim.tv_sec, st.st_ctim.tv_nsec);
    return toTicks(systemClock().now()) - toTicks(changed) > ticksOfADay;
}

/// Calls the function for each name in the folder that a writer left behind; how often it said yes.
int countLeft(const std::string& folder,
              const std::function<bool(int folder, const char* name, const struct stat& st)>& take)
{
    const OpenFolder open(::opendir(folder.c_str()));
    int count = 0;
    // The stream belongs to this call alone.
    while (const dirent* entry =
               open ? ::readdir(open.get()) : nullptr) // NOLINT(concurrency-mt-unsafe)
    {
        const int in = ::dirfd(open.get());
        Owner owner;
        struct stat st;
        if (parseName(entry->d_name, owner) &&
            ::fstatat(in, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && isLeft(owner, st))
            count += take(in, entry->d_name, st) ? 1 : 0;
    }
    return count;
}

bool removeLeft(int folder, const char* name, const struct stat& st)
{
    if (S_ISREG(st.st_mode))
        return ::unlinkat(folder, name, 0) == 0;
    const auto onSameDisk = [&](const struct stat& inner) { return inner.st_dev == st.st_dev; };
    return S_ISDIR(st.st_mode) && TreeRemover{onSameDisk, {}}.remove(folder, name, name);
}

/// Writing ten thousand covers into one folder must not list it ten thousand times.
bool isDue(const std::string& folder)
{
    using Clock = std::chrono::steady_clock;
    constexpr auto interval = std::chrono::minutes(10);
    constexpr std::size_t mostRemembered = 10'000;
    static std::mutex mutex;
    static std::unordered_map<std::string, Clock::time_point> clearedAt;
    const std::lock_guard lock(mutex);
    if (clearedAt.size() >= mostRemembered)
        clearedAt.clear();
    const Clock::time_point now = Clock::now();
    const auto [found, isNew] = clearedAt.try_emplace(folder, now);
    if (!isNew && now - found->second < interval)
        return false;
    found->second = now;
    return true;
}
} // namespace

bool isTemporaryName(std::string_view name)
{
    Owner owner;
    return parseName(name, owner);
}

std::string temporaryBeside(const std::string& target)
{
    const std::string folder = target.substr(0, target.rfind('/') + 1);
    if (isDue(folder))
        countLeft(folder, removeLeft);
    char process[2 * sizeof(pid_t) + 1];
    std::snprintf(process, sizeof(process), "%x", static_cast<unsigned>(::getpid()));
    return folder + std::string(namePrefix) + machineText() + "-" + process + "-" +
           std::string(randomLetters, 'X');
}

CString temporaryPathBeside(const CString& target)
{
    // The folder stays as it was given: one that maps to nothing must not become the root.
    const std::string path = temporaryBeside(toSystemPath(target));
    const std::size_t name = path.rfind('/') + 1;
    return target.Left(target.ReverseFind(u'\\') + 1) +
           fromUtf8(path.substr(name, path.size() - randomLetters - name)) +
           guidToText(systemClock().newGuid()).Left(randomLetters);
}

int clearTemporaries(const CString& folder)
{
    const std::string path = toSystemPath(folder);
    return path.empty() ? 0 : countLeft(path, removeLeft);
}

int countTemporaries(const CString& folder)
{
    const std::string path = toSystemPath(folder);
    const auto count = [](int, const char*, const struct stat&) { return true; };
    return path.empty() ? 0 : countLeft(path, count);
}

bool isProcessRunning(unsigned process)
{
    const auto id = static_cast<pid_t>(process);
    return id > 0 && (::kill(id, 0) == 0 || errno != ESRCH);
}
} // namespace qo
