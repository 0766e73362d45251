#pragma once

#include "common/LogLevel.h"
#include "common/LoggerEx.h"
#include "types/CriticalSection.h"

#include <string>
#include <vector>

/// While it lives it is the kernel's logger and keeps every line up to its level. Any thread may
/// write; captures do not nest.
class LogCapture : private CLoggerEx
{
public:
    struct Line
    {
        int level = 0;
        std::string text;
    };

    explicit LogCapture(int level = qo::level::detail);
    ~LogCapture() override;

    std::vector<Line> lines() const;
    /// How many lines of that level, 0 for any, hold the text.
    int count(const std::string& text, int level = 0) const;
    bool has(const std::string& text, int level = 0) const { return count(text, level) > 0; }
    /// All lines as "level: text", for the message of a failed expectation.
    std::string all() const;
    void clear();

protected:
    void writeText(int level, const CString& text) override;

private:
    mutable CCriticalSection m_lock;
    std::vector<Line> m_lines;
};
