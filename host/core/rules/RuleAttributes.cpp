#include "core/rules/RuleAttributes.h"

#include "core/plan/TargetName.h"

#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

#include <algorithm>
#include <ctime>
#include <utility>

namespace qo::host
{
namespace
{
using Params = QorganizerDef::VelmoraFileParams;

bool isEndOfRecording(CNSAtom::EType attribute)
{
    return (attribute >= CNSAtom::TimeEndHMEU && attribute <= CNSAtom::TimeEndHMSUS) ||
           (attribute >= CNSAtom::DateEndEU && attribute <= CNSAtom::DateEndINT);
}

CString timeOfTwelveHours(const CalendarTime& moment, bool withSeconds)
{
    constexpr int noon = 12;
    const int hour = moment.hour % noon == 0 ? noon : moment.hour % noon;
    CString text;
    text.Format(u"%02d-%02d", hour, moment.minute);
    if (withSeconds)
        text.AppendFormat(u"-%02d", moment.second);
    return text + (moment.hour < noon ? u" AM" : u" PM");
}

CalendarTime calendarTime(const std::tm& time)
{
    return {time.tm_year + 1900,
            time.tm_mon + 1,
            time.tm_mday,
            time.tm_hour,
            time.tm_min,
            std::min(time.tm_sec, 59),
            0};
}

/// False when there is no such moment.
bool localMoment(const FILETIME& time, CalendarTime& moment)
{
    const std::time_t seconds = toUnixSeconds(time);
    std::tm local{};
    if (toTicks(time) == 0 || !::localtime_r(&seconds, &local))
        return false;
    moment = calendarTime(local);
    return true;
}

/// Of seconds that are local time already.
bool recordedMoment(std::int64_t localSeconds, CalendarTime& moment)
{
    const std::time_t seconds = localSeconds;
    std::tm time{};
    if (localSeconds == 0 || !::gmtime_r(&seconds, &time))
        return false;
    moment = calendarTime(time);
    return true;
}

const CString& sourceField(const Params& params)
{
    switch (params.source)
    {
    case IPostProcessingQueue::sourceRadioRecording:
    case IPostProcessingQueue::sourceRadioWish:
        return params.stationName;
    case IPostProcessingQueue::sourcePodcast:
        return params.podcastChannel;
    case IPostProcessingQueue::sourceShare:
        return params.shareName;
    case IPostProcessingQueue::sourceWebRecording:
    case IPostProcessingQueue::sourceWebVideo:
        return params.webOrigin;
    default:
        return params.origin;
    }
}

bool isNumber(const CString& text)
{
    const std::u16string_view digits = text.view();
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), isDigit);
}

/// So that names sort by it.
CString sortableNumber(const CString& text)
{
    CString number = text;
    if (const int slash = text.Find(u'/'); slash >= 0)
        number = text.Left(slash).Trim();
    if (!isNumber(number))
        return text;
    return number.GetLength() == 1 ? u"0" + number : number;
}

CString tagText(const boost::shared_ptr<CHDFile>& file, CNSAtom::EType attribute)
{
    CString text;
    if (file->getFileType() == CHDFile::FT_Music)
        text = CNSUtils::getTagInfo(attribute, static_cast<CHDMusicFile&>(*file).getTag());
    // The analysis of names may have found since what the tag has not.
    if (text.IsEmpty())
        file->getAtomValueFromDbFileItem(attribute, text);
    text.Trim();
    return attribute == CNSAtom::TrackNumber ? sortableNumber(text) : text;
}
} // namespace

CString timeText(CNSAtom::EType attribute, const CalendarTime& moment)
{
    CString text;
    switch (attribute)
    {
    case CNSAtom::TimeStartHMEU:
    case CNSAtom::TimeEndHMEU:
        text.Format(u"%02d-%02d", moment.hour, moment.minute);
        break;
    case CNSAtom::TimeStartHMSEU:
    case CNSAtom::TimeEndHMSEU:
        text.Format(u"%02d-%02d-%02d", moment.hour, moment.minute, moment.second);
        break;
    case CNSAtom::TimeStartHMUS:
    case CNSAtom::TimeEndHMUS:
        return timeOfTwelveHours(moment, false);
    case CNSAtom::TimeStartHMSUS:
    case CNSAtom::TimeEndHMSUS:
        return timeOfTwelveHours(moment, true);
    case CNSAtom::DateStartEU:
    case CNSAtom::DateEndEU:
        text.Format(u"%02d.%02d.%04d", moment.day, moment.month, moment.year);
        break;
    case CNSAtom::DateStartUS:
    case CNSAtom::DateEndUS:
        text.Format(u"%02d-%02d-%04d", moment.month, moment.day, moment.year);
        break;
    case CNSAtom::DateStartINT:
    case CNSAtom::DateEndINT:
        text.Format(u"%04d-%02d-%02d", moment.year, moment.month, moment.day);
        break;
    default:
        break;
    }
    return text;
}

CString RuleAttributes::valueOf(const boost::shared_ptr<CHDFile>& file, CNSAtom::EType attribute)
{
    const QoFileDbItemPtr& record = file->getDbItem();
    CString text;
    if (attribute >= CNSAtom::Artist && attribute <= CNSAtom::Genre)
        text = tagText(file, attribute);
    else if (attribute == CNSAtom::Source)
        text = sourceName(record);
    else
        text = momentText(record, attribute);
    return plainValue(std::move(text));
}

const Params& RuleAttributes::paramsOf(const QoFileDbItemPtr& record)
{
    if (m_record != record)
    {
        m_record = record;
        m_params = {};
        CVelmoraFileParamsUtils::FromDbParam(record->params, m_params);
    }
    return m_params;
}

CString RuleAttributes::sourceName(const QoFileDbItemPtr& record)
{
    const Params& params = paramsOf(record);
    const CString& name = sourceField(params);
    return name.IsEmpty() ? params.origin : name;
}

CString RuleAttributes::momentText(const QoFileDbItemPtr& record, CNSAtom::EType attribute)
{
    const Params& params = paramsOf(record);
    const std::int64_t recorded =
        isEndOfRecording(attribute) ? params.recordingEnd : params.recordingStart;
    CalendarTime moment;
    const bool hasMoment =
        recordedMoment(recorded, moment) || localMoment(record->createTime, moment);
    return hasMoment ? timeText(attribute, moment) : CString();
}
} // namespace qo::host
