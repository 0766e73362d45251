#include "core/session/ScanHost.h"

#include "core/base/DatabaseError.h"
#include "core/base/HostFiles.h"
#include "core/base/RecordedFile.h"

namespace qo::host
{
bool ScanHost::mustRead(const QoFileDbItem& record, const FileInfo& seen)
{
    return m_readAll || isOtherFile(record, seen) ||
           (m_readAgain.contains(record.path) &&
            fileSystem().mayRead(CQoUtils::getRealPath(record.path)) == 0);
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

void ScanHost::beforeSave()
{
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
    case ETrouble::twin:
        m_twins.Add(path);
        break;
    }
}

void ScanHost::forget()
{
    m_lastFailure.clear();
    m_unread.RemoveAll();
    m_twins.RemoveAll();
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
        fileRemark(
            m_twins,
            "a file was left out, as the collection knows another one by its name, upper and "
            "lower case being the same",
            "files were left out, as the collection knows others by their names, upper and "
            "lower case being the same")};
    std::erase_if(sentences, [](const std::string& sentence) { return sentence.empty(); });
    return sentences;
}
} // namespace qo::host
