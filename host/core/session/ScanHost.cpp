#include "core/session/ScanHost.h"

#include "core/base/DatabaseError.h"
#include "core/base/HostFiles.h"
#include "core/base/RecordedFile.h"

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
    m_ofOtherKind = 0;
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
    if (m_ofOtherKind > 0)
        sentences.push_back(std::to_string(m_ofOtherKind) +
                            (m_ofOtherKind == 1 ? " file was" : " files were") +
                            " read again, as the setting FileKinds makes something else of them "
                            "than at the last scan");
    std::erase_if(sentences, [](const std::string& sentence) { return sentence.empty(); });
    return sentences;
}
} // namespace qo::host
