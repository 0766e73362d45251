#pragma once

#include "core/session/ProgressReporter.h"

#include <string>

namespace qo::cli
{
/// The kernel takes a number of bytes as two words.
inline void showDone(IQoProgress& progress, std::uint64_t bytes)
{
    constexpr int wordBits = 32;
    progress.setDoneSize(static_cast<std::uint32_t>(bytes), bytes >> wordBits);
}

/// The bytes of one file, out of the positions that are reported of it.
class ByteProgress : public CDummyProgress
{
public:
    /// Positions are bytes; with a size they are hundredths of that.
    explicit ByteProgress(IQoProgress& shown, std::int64_t size = 0)
        : m_shown(shown), m_size(static_cast<std::uint64_t>(size > 0 ? size : 0))
    {
    }

    void setPosition(std::uintptr_t position) override
    {
        constexpr std::uint64_t hundred = 100;
        showDone(m_shown, m_size > 0 ? position * m_size / hundred : position);
    }
    bool isCanceled() override { return m_shown.isCanceled(); }

private:
    IQoProgress& m_shown;
    const std::uint64_t m_size;
};

/// Several files, one after the other, as one progress in bytes.
class TransferProgress final : public CDummyProgress
{
public:
    TransferProgress(host::ProgressReporter& reporter, std::int64_t allBytes) : m_reporter(reporter)
    {
        m_reporter.beginTransfer(allBytes);
    }

    void beginFile(const std::string& name)
    {
        m_name = name;
        m_reporter.showTransfer(m_before, m_name);
    }
    void endFile(std::int64_t size) { m_before += size; }

    void setDoneSize(std::uintptr_t low, std::uintptr_t high) override
    {
        constexpr int wordBits = 32;
        const auto done = static_cast<std::uint64_t>(low) | static_cast<std::uint64_t>(high)
                                                                << wordBits;
        m_reporter.showTransfer(m_before + static_cast<std::int64_t>(done), m_name);
    }
    bool isCanceled() override { return m_reporter.isCanceled(); }

private:
    host::ProgressReporter& m_reporter;
    std::int64_t m_before = 0; ///< bytes of the files that are done
    std::string m_name;
};
} // namespace qo::cli
