#include "support/LogCapture.h"

#include "types/Utf.h"

LogCapture::LogCapture(int level)
{
    setMaxLevel(level);
    setQoKernelLogger(this);
}

LogCapture::~LogCapture()
{
    setQoKernelLogger(nullptr);
}

std::vector<LogCapture::Line> LogCapture::lines() const
{
    const qo::Guard guard(m_lock);
    return m_lines;
}

int LogCapture::count(const std::string& text, int level) const
{
    int found = 0;
    for (const Line& line : lines())
        found += (level == 0 || line.level == level) && line.text.find(text) != std::string::npos;
    return found;
}

std::string LogCapture::all() const
{
    std::string result;
    for (const Line& line : lines())
        result += std::to_string(line.level) + ": " + line.text + "\n";
    return result;
}

void LogCapture::clear()
{
    const qo::Guard guard(m_lock);
    m_lines.clear();
}

void LogCapture::writeText(int level, const CString& text)
{
    const qo::Guard guard(m_lock);
    m_lines.push_back({level, qo::toUtf8(text)});
}
