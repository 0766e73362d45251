#include "core/session/FailureMemory.h"

#include "core/base/DatabaseError.h"
#include "core/base/HostFiles.h"

#include <algorithm>

namespace qo::host
{
namespace
{
struct FailureLine
{
    int level;
    const char16_t* start;
};
/// The lines that end an operation.
constexpr FailureLine failureLines[] = {{qo::level::error, u"CQoCollection::load : "},
                                        {qo::level::error, u"CQoCollection::saveToDb : "},
                                        {qo::level::detail, u"CMusicTagEx::readTag: "},
                                        {qo::level::detail, u"CMusicTagEx::writeTagKVTagLib : "}};

/// Lines that end with the path of a file, and what they mean to its owner.
struct FileLine
{
    std::u16string_view start;
    const char* ofOne;
    const char* ofMany;
};
constexpr FileLine fileLines[] = {
    {u"CMusicTagEx::readTag: ITagsReader->Read() failed for file ",
     "a file has tags that could not be read (\"qo info\" says why)",
     "files have tags that could not be read (\"qo info\" says why)"},
    {u"found duplicated db file: ",
     "a file was left out, as the collection knows another one by its name, upper and lower case "
     "being the same",
     "files were left out, as the collection knows others by their names, upper and lower case "
     "being the same"}};
constexpr int mostNamed = 3;

/// "13: Permission denied" without the number, which users do not need.
CString withoutNumber(const CString& words)
{
    const std::u16string_view text = words.view();
    const std::size_t digits = text.find_first_not_of(u"0123456789");
    const bool isNumbered =
        digits != text.npos && digits > 0 && text.substr(digits).starts_with(u": ");
    return isNumbered ? words.Mid(static_cast<int>(digits) + 2) : words;
}
} // namespace

FailureMemory::FailureMemory()
{
    setWithDetails(false);
    setQoKernelLogger(this);
}

FailureMemory::~FailureMemory()
{
    setQoKernelLogger(nullptr);
}

void FailureMemory::setWithDetails(bool withDetails)
{
    const int least = withDetails ? qo::level::detail : qo::level::error;
    setMaxLevel(std::max(builtInLogger().getMaxLevel(), least));
}

std::string FailureMemory::lastFailure() const
{
    const std::lock_guard lock(m_mutex);
    return toUtf8(m_lastFailure);
}

void FailureMemory::forget()
{
    const std::lock_guard lock(m_mutex);
    m_lastFailure.Empty();
    m_files.clear();
}

std::vector<std::string> FailureMemory::fileRemarks() const
{
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> sentences;
    for (const FileLine& line : fileLines)
    {
        const auto found = m_files.find(line.start);
        if (found == m_files.end())
            continue;
        const FileRemark& remark = found->second;
        std::string text =
            remark.files == 1 ? line.ofOne : std::to_string(remark.files) + " " + line.ofMany;
        for (int i = 0; i < remark.first.GetSize(); ++i)
            text += (i == 0 ? ": " : ", ") + shownPath(remark.first[i]);
        if (remark.files > mostNamed)
            text += " and " + std::to_string(remark.files - mostNamed) + " more";
        sentences.push_back(std::move(text));
    }
    return sentences;
}

void FailureMemory::writeText(int level, const CString& text)
{
    if (builtInLogger().takes(level))
        builtInLogger().writeText(level, text);
    noteFailure(level, text);
    if (level == qo::level::error)
        noteFile(text);
}

void FailureMemory::noteFailure(int level, const CString& text)
{
    for (const FailureLine& line : failureLines)
    {
        const CString prefix(line.start);
        if (level != line.level || !text.view().starts_with(prefix.view()))
            continue;
        const std::lock_guard lock(m_mutex);
        // Codes and further lines are for developers; they stay in the log.
        m_lastFailure = fromUtf8(databaseWords(withoutNumber(text.Mid(prefix.GetLength()))));
        m_lastFailure.Trim();
    }
}

void FailureMemory::noteFile(const CString& text)
{
    for (const FileLine& line : fileLines)
    {
        if (!text.view().starts_with(line.start))
            continue;
        const std::lock_guard lock(m_mutex);
        FileRemark& remark = m_files[line.start];
        ++remark.files;
        if (remark.first.GetSize() < mostNamed)
            remark.first.Add(text.Mid(static_cast<int>(line.start.size())));
    }
}
} // namespace qo::host
