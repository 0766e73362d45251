#pragma once

#include <QoKernel/Kernel.h>

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qo::host
{
/// The kernel's logger while it lives. Passes every line on to the built-in logger and remembers
/// the last failure of a collection operation, since the kernel reports its cause only in the log.
class FailureMemory final : public CLoggerEx
{
public:
    FailureMemory();
    ~FailureMemory() override;

    /// Also remembers why a tag could not be read or written, which the kernel logs as a detail.
    void setWithDetails(bool withDetails);

    /// The last failure since forget(), in the kernel's words; empty when there was none.
    std::string lastFailure() const;
    /// A sentence for each way in which the collection could not take files in, or not their tags,
    /// since forget().
    std::vector<std::string> fileRemarks() const;
    void forget();

    void writeText(int level, const CString& text) override;

private:
    /// Files of which the kernel logged the same thing; the first ones by name.
    struct FileRemark
    {
        int files = 0;
        CStringArray first;
    };

    void noteFailure(int level, const CString& text);
    void noteFile(const CString& text);

    mutable std::mutex m_mutex;
    CString m_lastFailure;
    std::map<std::u16string_view, FileRemark> m_files; ///< by the start of the line
};
} // namespace qo::host
