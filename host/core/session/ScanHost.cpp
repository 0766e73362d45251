#include "core/session/ScanHost.h"

#include "core/base/DatabaseError.h"
#include "core/base/HostFiles.h"
#include "core/base/RecordedFile.h"
#include "core/base/UserName.h"
#include "core/session/Session.h"
#include "core/store/HostStore.h"

#include <QoKernel/Tags.h>

#include <utility>

namespace qo::host
{
bool ScanHost::mustRead(const QoFileDbItem& record, const FileInfo& seen)
{
    if (isOfOtherKind(record))
    {
        ++m_ofOtherKind;
        return true;
    }
    return m_readAll || isOtherFile(record, seen) ||
           (m_readAgain.contains(record.path) &&
            fileSystem().mayRead(CQoUtils::getRealPath(record.path)) == 0);
}

bool ScanHost::isOfOtherKind(const QoFileDbItem& record) const
{
    if (m_readExts.empty())
        return false;
    CString ext = fileExtOf(record.path);
    ext.MakeLower();
    return m_readExts.contains(toUtf8(ext));
}

void ScanHost::setReadAgain(const CStringArray& files)
{
    m_readAgain.clear();
    for (const CString& file : files)
        m_readAgain.insert(file);
}

void ScanHost::beforeNames(const QoFileDbItemArray& records)
{
    if (m_names)
        m_names->beforeNames(records);
}

void ScanHost::fileRead(const QoFileDbItem& record, const KVTagLib::CTags* tags)
{
    const bool isNew = record.dbState == dbState::added;
    if (!m_addedBy)
        m_addedBy = userBeside(Session::folder());
    if (isNew && !m_addedBy->IsEmpty())
        m_added.push_back(record.velmoraId);
    if (!tags)
        return;
    TagNotes notes;
    notes.id = record.velmoraId;
    tags->GetAlbumArtist(notes.albumArtist);
    tags->GetDisc(notes.disc);
    tags->GetComment(notes.comment);
    tags->GetRating(notes.rating);
    tags->GetPlayCount(notes.plays);
    if (!isNew || !notes.isEmpty())
        m_tagNotes.push_back(std::move(notes));
}

/// Before the records, so that a file whose record is saved never lacks its notes. Those of a
/// record that then is not saved harm nobody.
void ScanHost::storeNotes()
{
    const auto tagNotes = std::exchange(m_tagNotes, {});
    const auto added = std::exchange(m_added, {});
    try
    {
        HostStore store(Session::folder());
        if (!tagNotes.empty())
            store.setTagNotes(tagNotes);
        if (!added.empty())
            store.setAddedBy(added, *m_addedBy);
    }
    catch (const HostError& error)
    {
        m_notesFailure = error.what();
    }
}

void ScanHost::beforeSave()
{
    storeNotes();
    if (m_names)
        m_names->beforeSave();
}

void ScanHost::failed(ETrouble trouble, const CString& path, const CString& cause)
{
    switch (trouble)
    {
    case ETrouble::load:
    case ETrouble::save:
        // Codes and further lines are for who mends the program.
        m_lastFailure = databaseWords(cause);
        break;
    case ETrouble::readTag:
    case ETrouble::absent:
        m_unread.Add(path);
        break;
    case ETrouble::givenUp:
        m_givenUp.Add(path);
        break;
    case ETrouble::unlisted: // of far collections alone
        break;
    case ETrouble::twin:
        m_twins.Add(path);
        break;
    }
}

void ScanHost::forget()
{
    m_lastFailure.clear();
    m_unread.RemoveAll();
    m_givenUp.RemoveAll();
    m_twins.RemoveAll();
    m_ofOtherKind = 0;
    m_notesFailure.clear();
}

void ScanHost::forgetFile(const CString& path)
{
    for (int i = 0; i < m_unread.GetSize(); ++i)
    {
        if (m_unread[i] == path)
            return m_unread.RemoveAt(i);
    }
}

std::vector<std::string> ScanHost::fileRemarks() const
{
    std::vector<std::string> sentences = {
        fileRemark(m_unread,
                   "a file has tags that could not be read (\"qo info\" says why)",
                   "files have tags that could not be read (\"qo info\" says why)"),
        fileRemark(m_givenUp,
                   "the disk did not give a file, which the next scan reads",
                   "files were not given by their disk, and the next scan reads them"),
        fileRemark(
            m_twins,
            "a file was left out, as the collection knows another one by its name, upper and "
            "lower case being the same",
            "files were left out, as the collection knows others by their names, upper and "
            "lower case being the same")};
    if (m_ofOtherKind > 0)
        sentences.push_back(std::to_string(m_ofOtherKind) +
                            (m_ofOtherKind == 1 ? " file was" : " files were") +
                            " read again, as the setting FileKinds makes something else of them "
                            "than at the last scan");
    if (!m_notesFailure.empty())
        sentences.push_back("album artists, ratings and comments could not be kept: " +
                            m_notesFailure);
    std::erase_if(sentences, [](const std::string& sentence) { return sentence.empty(); });
    return sentences;
}
} // namespace qo::host
