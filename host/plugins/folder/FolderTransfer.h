#pragma once

#include "plugins/folder/FolderEntry.h"

#include <vector>

namespace qo::host
{
/// Reads a file, or a range of it.
class FolderDownload final : public IPluginDownload
{
public:
    FolderDownload(const CString& source, const CString& target);

    bool SetRange(std::int64_t first, std::int64_t end) override;
    bool GetSize(std::int64_t& size) override;
    bool Run(IQoProgress* progress) override;

private:
    const CString m_source;
    const CString m_target;
    std::int64_t m_first = 0;
    std::int64_t m_end; ///< the one after the last byte
};

/// Copies a local file into the folder, a slice in each Poll(). Until its last byte the copy has
/// another name, which no listing shows.
class FolderUpload final : public IPluginOperation
{
public:
    FolderUpload(const CString& source, const CString& folder, const CString& name, bool replace);
    ~FolderUpload() override;

    void Poll() override;
    int GetState() override { return m_state; }
    bool GetProgress(std::int64_t& done, std::int64_t& total) override;
    void GetResults(PluginResultArray& results) override { results.Append(m_results); }
    CString GetErrorText() override { return m_error; }

private:
    bool open();
    /// True while there is more to copy.
    bool copyBlock();
    void finish();
    void fail(const CString& path, int error);

    const CString m_source;
    const CString m_target;
    const CString m_name;
    const CString m_part;
    const bool m_replace;
    std::vector<char> m_block;
    std::unique_ptr<IFile> m_in;
    std::unique_ptr<IFile> m_out;
    std::int64_t m_done = 0;
    int m_state = OS_Created;
    CString m_error;
    PluginResultArray m_results;
};
} // namespace qo::host
