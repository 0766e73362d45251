#include "Database/src/DbFacade/SQLiteTimeLog.h"

#include "Database/src/DbFacade/SQLiteReport.h"
#include "common/LogLevel.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

CSQLiteTimeLog::CSQLiteTimeLog(const char16_t* tag, const CString& text)
    : m_text(text), m_tag(tag), m_start(qo::systemClock().tickCount())
{
}

CSQLiteTimeLog::~CSQLiteTimeLog()
{
    if (!qo::sqlite::isLogged(qo::level::detail))
        return;
    CString line;
    line.Format(
        u"[%05d ms spent] in %s (%s)", qo::systemClock().tickCount() - m_start, m_tag, m_text);
    qo::sqlite::log(qo::level::detail, __LINE__, line);
}
