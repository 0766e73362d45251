#pragma once

#include <QoKernel/Statistics.h>

#include <memory>

namespace qo::host
{
/// The only reporter of usage statistics that this host has: while it lives, it keeps what the
/// kernel reports, and adds it to a file of the user's own at the end. Nothing is sent anywhere.
/// The file is one JSON object; what cannot be read begins anew. With the lock of the data folder,
/// on the kernel's thread.
class UsageFile final : public IUsageStatistics
{
public:
    explicit UsageFile(CString path);
    ~UsageFile() override; ///< writes; a failure leaves a line in the log
    UsageFile(const UsageFile&) = delete;
    UsageFile& operator=(const UsageFile&) = delete;

    void reportText(const char16_t* key, const char16_t* value) override;
    void reportNumber(const char16_t* key, int value) override;
    void increment(const char16_t* key, int amount) override;

private:
    struct Content;

    CString m_path;
    std::unique_ptr<Content> m_content;
    bool m_hasChanged = false;
};
} // namespace qo::host
