#include "plugins/folder/FolderTransfer.h"

#include "core/base/HostFiles.h"
#include "plugins/base/PluginFailure.h"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace qo::host
{
namespace
{
constexpr std::size_t blockSize = std::size_t{256} * 1024;
/// How long one Poll() may copy: long enough to be fast, and short enough to be cancelled.
constexpr std::uint32_t slice = 200; // milliseconds
} // namespace

FolderDownload::FolderDownload(const CString& source, const CString& target)
    : m_source(source), m_target(target), m_end(std::numeric_limits<std::int64_t>::max())
{
}

bool FolderDownload::SetRange(std::int64_t first, std::int64_t end)
{
    if (first < 0 || end < first)
        return false;
    m_first = first;
    m_end = end;
    return true;
}

bool FolderDownload::GetSize(std::int64_t& size)
{
    FileInfo info;
    if (fileSystem().info(m_source, Spelling::exact, info) != 0 || info.kind != FileKind::regular)
        return false;
    size = info.size;
    return true;
}

bool FolderDownload::Run(IQoProgress* progress)
{
    int error = 0;
    const std::unique_ptr<IFile> in = fileSystem().open(m_source, OpenMode::read, error);
    const std::unique_ptr<IFile> out =
        in ? fileSystem().open(m_target, OpenMode::createAlways, error) : nullptr;
    if (!out || !in->seek(m_first))
    {
        setPluginFailure(failureAt(in ? m_target : m_source, error));
        return false;
    }
    std::vector<char> block(blockSize);
    std::int64_t left = std::min(m_end, in->sizeAtOpen()) - m_first;
    while (left > 0 && !progress->isCanceled())
    {
        const auto wanted = static_cast<std::size_t>(
            std::min<std::int64_t>(left, static_cast<std::int64_t>(block.size())));
        const std::int64_t count = in->read(block.data(), wanted);
        if (count <= 0 || !out->write(block.data(), static_cast<std::size_t>(count)))
        {
            const bool isRead = count > 0;
            setPluginFailure(isRead ? failureAt(m_target, out->error())
                                    : failureAt(m_source, in->error()));
            return false;
        }
        left -= count;
        progress->setPosition(static_cast<std::uintptr_t>(in->position() - m_first));
    }
    return left <= 0;
}

FolderUpload::FolderUpload(const CString& source,
                           const CString& folder,
                           const CString& name,
                           bool replace)
    : m_source(source)
    , m_target(combinePath(folder, name))
    , m_name(name)
    , m_part(passingPathBeside(m_target))
    , m_replace(replace)
    , m_block(blockSize)
{
    if (open())
        Poll(); // a small file is there at once
}

bool FolderUpload::open()
{
    NameInfo info;
    int error = !m_replace && fileSystem().look(m_target, info) == 0 ? EEXIST : 0;
    if (error == 0)
        m_in = fileSystem().open(m_source, OpenMode::read, error);
    if (m_in)
        m_out = fileSystem().open(m_part, OpenMode::createAlways, error);
    if (!m_out)
        fail(m_in || error == EEXIST ? m_target : m_source, error);
    return m_out != nullptr;
}

FolderUpload::~FolderUpload()
{
    if (m_out)
        fileSystem().removeFile(m_part);
}

void FolderUpload::Poll()
{
    const std::uint32_t start = systemClock().tickCount();
    while (m_out && copyBlock())
    {
        if (systemClock().tickCount() - start >= slice)
            return;
    }
}

bool FolderUpload::copyBlock()
{
    const std::int64_t count = m_in->read(m_block.data(), m_block.size());
    if (count < 0)
        fail(m_source, m_in->error());
    else if (count == 0)
        finish();
    else if (!m_out->write(m_block.data(), static_cast<std::size_t>(count)))
        fail(m_part, m_out->error());
    m_done += std::max<std::int64_t>(count, 0);
    return m_out != nullptr;
}

void FolderUpload::finish()
{
    int error = fileSystem().sync(m_part);
    if (error == 0)
        error = m_replace ? fileSystem().moveFile(m_part, m_target)
                          : fileSystem().moveFileNoReplace(m_part, m_target);
    if (error != 0)
        return fail(m_target, error);
    m_out.reset();
    const auto entry = entryAt(m_target, m_name, m_error);
    m_state = entry ? OS_Finished : OS_Failed;
    m_results.Add(entry);
}

void FolderUpload::fail(const CString& path, int error)
{
    if (m_out)
        fileSystem().removeFile(m_part);
    m_out.reset();
    m_state = OS_Failed;
    m_error = failureAt(path, error);
    setPluginFailure(m_error);
}

bool FolderUpload::GetProgress(std::int64_t& done, std::int64_t& total)
{
    done = m_done;
    total = m_in ? m_in->sizeAtOpen() : 0;
    return true;
}
} // namespace qo::host
