#include "cli/places/FarPlace.h"

#include "core/base/HostFiles.h"

#include <QoKernel/Collection.h>

#include <boost/make_shared.hpp>

#include <algorithm>

namespace qo::cli
{
CQoCollPath FarPlace::path(const std::string& typed) const
{
    CQoCollPath path = m_root;
    // Points and doubled slashes mean what they mean on a disk.
    const std::string plain = host::absolutePath("/" + typed);
    for (std::size_t start = 1; start < plain.size();)
    {
        const std::size_t end = std::min(plain.find('/', start), plain.size());
        path = path.child(componentOf(plain.substr(start, end - start)));
        start = end + 1;
    }
    return path;
}

std::string FarPlace::shown(const CStringArray& components) const
{
    std::string text;
    for (const CString& component : components)
        text += (text.empty() ? "" : "/") + nameOf(component);
    return text;
}

CString FarPlace::componentOf(const std::string& name) const
{
    return farComponent(fromUtf8(name));
}

std::string FarPlace::nameOf(const CString& component) const
{
    return toUtf8(farNameOf(component));
}

CString FarPlace::localNameOf(const CString& component) const
{
    return safeLocalName(farNameOf(component));
}

FarEntry FarPlace::need(const CQoCollPath& path, IQoProgress& progress)
{
    FarEntry entry;
    (void)takeCause();
    if (find(path, progress, entry))
        return entry;
    stopIfCancelled(progress);
    const std::string cause = takeCause();
    if (cause.empty())
        throw HostError(ExitCode::notFound, "there is no " + shownWhole(path));
    throw HostError(ExitCode::failed, shownWhole(path) + " cannot be looked up: " + cause);
}

void FarPlace::fail(const std::string& what)
{
    const std::string cause = takeCause();
    throw HostError(ExitCode::failed, what + ": " + (cause.empty() ? "no cause was given" : cause));
}

bool FarPlace::room(std::int64_t&)
{
    return false;
}

std::string FarPlace::send(const CString&, std::int64_t, CQoCollPath&, bool, IQoProgress&)
{
    return m_name + " takes no files";
}

void FarPlace::addRecord(const CQoCollPath& path, std::int64_t size, QoFileDbItemArray& records)
{
    const auto record = boost::make_shared<QoFileDbItem>();
    record->path = path.toString();
    record->size = size;
    records.Add(record);
}

std::string FarPlace::remove(const CQoCollPath&, IQoProgress&)
{
    return "nothing can be removed from " + m_name;
}

void stopIfCancelled(IQoProgress& progress)
{
    if (progress.isCanceled())
        throw HostError(ExitCode::interrupted, "interrupted");
}
} // namespace qo::cli
