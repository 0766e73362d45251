#include "core/runs/MoveJournal.h"

#include "core/base/Disk.h"
#include "core/runs/JournalFile.h"
#include "core/runs/JournalText.h"

namespace qo::host
{
namespace
{
/// None for what is not there.
FolderRights rightsOf(const std::string& folder)
{
    NameInfo info;
    if (disk::look(folder, info) != 0)
        return {};
    return {info.mode, info.owner, info.group};
}
} // namespace

MoveJournal::MoveJournal(std::unique_ptr<JournalFile> file, MoveProgress progress)
    : m_file(std::move(file)), m_progress(std::move(progress))
{
}

MoveJournal::~MoveJournal() = default;

std::unique_ptr<MoveJournal> MoveJournal::make(const std::string& path, MoveProgress::Start start)
{
    auto file = JournalFile::make(path, journaltext::start(start));
    return std::unique_ptr<MoveJournal>(
        new MoveJournal(std::move(file), MoveProgress(std::move(start))));
}

std::unique_ptr<MoveJournal> MoveJournal::open(const std::string& path)
{
    auto file = JournalFile::open(path);
    MoveProgress progress = journaltext::read(path, file->content());
    file->cutTornLine();
    return std::unique_ptr<MoveJournal>(new MoveJournal(std::move(file), std::move(progress)));
}

const std::string& MoveJournal::path() const
{
    return m_file->path();
}

std::size_t MoveJournal::addStep(const MoveStep& step)
{
    m_file->append(journaltext::step(step, m_progress.files()));
    m_progress.addStep(step);
    return m_progress.stepCount() - 1;
}

void MoveJournal::begin(const std::vector<std::size_t>& steps)
{
    std::string lines;
    for (const std::size_t number : steps)
    {
        MoveStep step = m_progress.step(number);
        if (step.kind == MoveStep::Kind::removeFolder)
            step.rights = rightsOf(step.to);
        // It may still lie where an earlier step of the batch will take it from.
        const bool isFree = step.kind == MoveStep::Kind::move &&
                            !disk::isSameEntry(m_progress.place(step.file), step.to);
        lines += journaltext::begin(number, step, isFree);
        m_progress.begin(number, step.rights, isFree);
    }
    m_file->append(lines);
    m_file->sync();
}

void MoveJournal::copied(std::size_t step, const FileMark& copy)
{
    m_file->append(journaltext::copied(step, copy));
    m_file->sync();
    m_progress.setCopy(step, copy);
}

void MoveJournal::done(std::size_t step)
{
    m_file->append(journaltext::done(step));
    m_progress.done(step);
}

void MoveJournal::skipped(std::size_t step)
{
    m_file->append(journaltext::skipped(step));
    m_progress.skipped(step);
}

void MoveJournal::failed(std::size_t step, const std::string& why)
{
    m_file->append(journaltext::failed(step, why));
    m_progress.failed(step, why);
}

void MoveJournal::lost(std::size_t step)
{
    m_file->append(journaltext::lost(step));
    m_progress.lost(step);
}

void MoveJournal::known(std::size_t file, const FileMark& mark)
{
    m_file->append(journaltext::known(file, mark));
    m_progress.setMark(file, mark);
}

void MoveJournal::note(const std::string& sentence)
{
    m_file->append(journaltext::note(sentence));
    m_progress.addNote(sentence);
}

void MoveJournal::tried()
{
    m_file->append(journaltext::tried());
    m_file->sync();
    m_progress.tried();
}

void MoveJournal::applied()
{
    const std::size_t count = m_progress.moves().size();
    m_file->append(journaltext::applied(count));
    m_file->sync();
    (void)m_progress.setApplied(count);
}

void MoveJournal::finished()
{
    m_file->append(journaltext::finished());
    m_file->sync();
    m_progress.finished();
}
} // namespace qo::host
