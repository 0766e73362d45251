#include "core/base/HostFiles.h"

#include "core/base/ClosestName.h"
#include "core/base/HostError.h"

#include <QoKernel/Devices.h>
#include <QoKernel/Inside.h>
#include <QoKernel/Sharing.h>

#include <climits>
#include <sys/stat.h>
#include <system_error>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace qo::host
{
namespace
{
/// Folds ".", ".." and doubled slashes of an absolute path.
std::string foldDots(const std::string& path)
{
    std::string folded;
    std::size_t at = 0;
    while (at < path.size())
    {
        const std::size_t slash = std::min(path.find('/', at), path.size());
        const std::string part = path.substr(at, slash - at);
        at = slash + 1;
        if (part == "..")
            folded.resize(folded.empty() ? 0 : folded.rfind('/'));
        else if (!part.empty() && part != ".")
            folded += "/" + part;
    }
    return folded.empty() ? "/" : folded;
}

/// As collections know it: a file of a device by the device's id, where that has a letter.
CString collectionForm(const std::string& path)
{
    const CString form = fromSystemPath(path);
    UsbDeviceInfoPtr device;
    if (form.GetLength() < 2 || form[1] != u':' ||
        !theQoUSBManager.getDeviceByLetter(form[0], device))
        return form;
    return theQoUSBManager.getFullPath(device->m_id, form.Mid(2)).toString();
}
} // namespace

int readFile(const CString& path, std::size_t limit, std::string& content)
{
    int error = 0;
    const std::unique_ptr<IFile> file = fileSystem().open(path, OpenMode::read, error);
    if (!file)
        return error;
    content.clear();
    char buffer[65536];
    for (;;)
    {
        const std::int64_t got = file->read(buffer, sizeof(buffer));
        if (got < 0)
            return file->error();
        if (got == 0)
            return 0;
        content.append(buffer, static_cast<std::size_t>(got));
        if (content.size() > limit)
            return EFBIG;
    }
}

std::string
fileRemark(const CStringArray& files, const std::string& ofOne, const std::string& ofMany)
{
    constexpr int mostNamed = 3;
    const int count = files.GetSize();
    if (count == 0)
        return {};
    const std::string text = count == 1 ? ofOne : std::to_string(count) + " " + ofMany;
    std::vector<std::string> named;
    for (int i = 0; i < std::min(count, mostNamed); ++i)
        named.push_back(shownPath(files[i]));
    return text + ": " + firstOf(named, static_cast<std::size_t>(count));
}

std::string errorWords(int error)
{
    return std::generic_category().message(error);
}

std::string plainWords(const CString& cause)
{
    std::string words = toUtf8(cause);
    words.resize(std::min(words.find('\n'), words.size()));
    const std::size_t digits = words.find_first_not_of("0123456789");
    if (digits != words.npos && digits > 0 && words.compare(digits, 2, ": ") == 0)
        words.erase(0, digits + 2);
    return words;
}

bool isDiskFull(const CString& path)
{
    std::uint64_t bytes = 0;
    const CString folder = path.Left(path.ReverseFind(u'\\') + 1);
    return fileSystem().room(folder, bytes) == 0 && bytes == 0;
}

std::string placeNameOf(const CQoCollPath& path)
{
    const CString& id = path.getDevice();
    if (path.isPhysicalPlugin() || path.isLogicalPlugin())
        return toUtf8(id);
    if (path.isShare())
        return toUtf8(CQoShareManager::getDeviceName(path));
    if (!path.isUSB() && !path.isWPD())
        return {};
    const auto& manager =
        path.isUSB() ? static_cast<const CQoUSBManagerBase&>(theQoUSBManager) : theQoWPDManager;
    UsbDeviceInfoPtr device;
    return toUtf8(manager.getDevice(id, device) ? device->m_name : id);
}

std::string shownPath(const CString& path)
{
    if (std::string system = toSystemPath(path); !system.empty())
        return system;
    const CQoCollPath parsed(path);
    // A disk has its files under its present drive letter.
    if (parsed.isUSB())
    {
        if (std::string real = toSystemPath(theQoUSBManager.getRealPath(parsed)); !real.empty())
            return real;
    }
    std::string shown = placeNameOf(parsed);
    if (shown.empty())
        return toUtf8(path);
    CStringArray names = parsed.getComponents();
    // A friend's paths look as they do there.
    if (parsed.isShare() && !names.IsEmpty() && names[0] == u"C:")
        names.RemoveAt(0);
    // The bytes of names come back as those of a path of the system do. On a service or device a
    // name may hold a slash, which no path of the system can have.
    for (const CString& name : names)
    {
        const std::string system = toSystemPath(u"C:\\" + name);
        shown += system.empty() ? "/" + toUtf8(name) : system;
    }
    return shown;
}

const CString& lastingPath(const CString& path)
{
    constexpr char16_t lettersOfDevices = u'D';
    const bool hasLetter = path.GetLength() >= 2 && path[1] == u':';
    if (hasLetter && toLower(path[0]) >= toLower(lettersOfDevices))
        throw HostError(ExitCode::usage,
                        shownPath(path) +
                            " lies on a device, so its path is not kept: it may lead elsewhere "
                            "the next time");
    return path;
}

std::string absolutePath(const std::string& typed)
{
    if (typed.empty())
        throw HostError(ExitCode::usage, "an empty path names nothing");
    if (typed[0] == '/')
        return foldDots(typed);
    std::error_code error;
    const std::filesystem::path here = std::filesystem::current_path(error);
    if (error)
        throw HostError(ExitCode::failed, "the current folder is not known: " + error.message());
    return foldDots(here.native() + "/" + typed);
}

std::string resolvedPath(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           std::free);
    return real ? real.get() : std::string();
}

std::vector<CString> spellings(const std::string& typed)
{
    const std::string lexical = absolutePath(typed);
    std::vector<CString> list{collectionForm(lexical)};
    const auto add = [&list](const std::string& path)
    {
        const CString form = collectionForm(path);
        if (std::find(list.begin(), list.end(), form) == list.end())
            list.push_back(form);
    };
    const std::size_t slash = lexical.rfind('/');
    const std::string folder = resolvedPath(lexical.substr(0, slash + 1));
    if (!folder.empty())
        add(folder + "/" + lexical.substr(slash + 1));
    const std::string real = resolvedPath(lexical);
    if (!real.empty())
        add(real);
    return list;
}
std::string existingFolder(const std::string& typed)
{
    absolutePath(typed);
    const std::string real = resolvedPath(typed);
    if (real.empty())
    {
        const int error = errno;
        const ExitCode code =
            error == ENOENT || error == ENOTDIR ? ExitCode::notFound : ExitCode::failed;
        throw HostError(code, typed + " cannot be used: " + errorWords(error));
    }
    struct stat info
    {
    };
    if (::stat(real.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        throw HostError(ExitCode::failed, typed + " is not a folder");
    return real;
}

CString timeStampOfNow()
{
    return timeStamp(systemClock().localTime());
}

CString passingPathBeside(const CString& target)
{
    return temporaryPathBeside(target);
}

void clearPassingFiles(const CString& folder)
{
    clearTemporaries(folder);
}

CString freeName(const CString& wanted)
{
    CString name = wanted;
    for (int i = 1; fileSystem().exists(name); ++i)
        name.Format(u"%s_%d", wanted, i);
    return name;
}
} // namespace qo::host
