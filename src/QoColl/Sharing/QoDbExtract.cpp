#include "QoColl/Sharing/QoDbExtract.h"

#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/CollInfoDbItem.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/CollPath.h"
#include "common/CountedObject.h"
#include "common/Log.h"
#include "common/StdioFileEx.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/CharClass.h"
#include "types/TextPool.h"
#include "types/Utf.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

namespace
{
constexpr unsigned extractVersion = 1;
constexpr unsigned extractRevision = 0;
constexpr std::u16string_view recordMark = u"INS:";

// What a peer can make its reader keep in memory.
constexpr std::int64_t largestExtract = std::int64_t(512) << 20;
constexpr int longestExtractLine = 64 * 1024;
constexpr std::size_t mostExtractRecords = 2'000'000;

/// Each character that is escaped, and the one that stands after the backslash for it.
constexpr std::array<std::pair<char16_t, char16_t>, 4> escapes = {
    {{u'\\', u'\\'}, {u'\r', u'r'}, {u'\n', u'n'}, {u'\t', u't'}}};

void appendEscaped(std::u16string& line, const CString& text)
{
    for (const char16_t c : text.view())
    {
        const auto* const escape =
            std::ranges::find(escapes, c, &std::pair<char16_t, char16_t>::first);
        if (escape != escapes.end())
            line += u'\\';
        line += escape != escapes.end() ? escape->second : c;
    }
    line += u'\t';
}

/// An unknown code stands for itself, and a backslash at the end for nothing.
CString unescaped(std::u16string_view text)
{
    if (text.find(u'\\') == std::u16string_view::npos)
        return CString(text);
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != u'\\')
        {
            result += text[i];
            continue;
        }
        if (++i == text.size())
            break;
        const auto* const escape =
            std::ranges::find(escapes, text[i], &std::pair<char16_t, char16_t>::second);
        result += escape != escapes.end() ? escape->first : text[i];
    }
    return CString(result);
}

void appendNumber(std::u16string& line, std::int64_t number, char16_t end)
{
    for (const char digit : std::to_string(number))
        line += static_cast<char16_t>(digit);
    line += end;
}

/// Reads "<name>:<number>"; false, with value unchanged, for any other text.
bool readHeaderNumber(std::u16string_view piece, std::u16string_view name, unsigned& value)
{
    if (!piece.starts_with(name))
        return false;
    piece.remove_prefix(name.size());
    const std::size_t digits = piece.find_first_not_of(u" \t+-");
    if (digits == std::u16string_view::npos || !qo::isDigit(piece[digits]))
        return false;
    const long long number = qo::textToInt64(piece);
    constexpr unsigned highest = std::numeric_limits<unsigned>::max();
    value = number < 0 || number > highest ? highest : static_cast<unsigned>(number);
    return true;
}

/// The fields of a record's line in turn.
class ExtractFields
{
public:
    explicit ExtractFields(std::u16string_view line) : m_rest(line) {}

    std::u16string_view next()
    {
        m_isShort = m_isShort || m_isAtEnd;
        const std::size_t end = m_rest.find(u'\t');
        const std::u16string_view field = m_rest.substr(0, end);
        m_isAtEnd = end == std::u16string_view::npos;
        m_rest.remove_prefix(m_isAtEnd ? m_rest.size() : end + 1);
        return field;
    }
    CString nextText() { return unescaped(next()); }
    CString nextText(qo::TextPool& texts)
    {
        const std::u16string_view field = next();
        return field.find(u'\\') == field.npos ? texts.intern(field)
                                               : texts.intern(unescaped(field));
    }
    int nextInt() { return qo::textToInt(next()); }
    std::int64_t nextInt64() { return qo::textToInt64(next()); }
    /// Whether more fields were asked for than there are.
    bool isShort() const { return m_isShort; }

private:
    std::u16string_view m_rest;
    bool m_isAtEnd = false;
    bool m_isShort = false;
};

/// Whether a part between slashes of either kind is "." or "..". A name from a path with a doubled
/// backslash has backslashes in it, and a file system may take either kind to part names.
bool leadsElsewhere(std::u16string_view name)
{
    while (true)
    {
        const std::size_t end = name.find_first_of(u"\\/");
        const std::u16string_view part = name.substr(0, end);
        if (part == u"." || part == u"..")
            return true;
        if (end == std::u16string_view::npos)
            return false;
        name.remove_prefix(end + 1);
    }
}

/// Whether the path names a place below a drive or a network folder, and nothing beside it.
bool isPeerPath(const CQoCollPath& path)
{
    if (path.getType() != CQoCollPath::drive && path.getType() != CQoCollPath::network)
        return false;
    return !leadsElsewhere(path.getDevice().view()) &&
           std::ranges::none_of(path.getComponents(),
                                [](const CString& name) { return leadsElsewhere(name.view()); });
}

/// Gives the paths of a peer as paths in his share. Files of one folder mostly stand together, and
/// the folder is then looked at once.
class PeerPaths
{
public:
    explicit PeerPaths(const CString& shareId) : m_shareId(shareId) {}

    /// The path in the share, for the field of a record; "" if it is none.
    CString inShare(std::u16string_view field)
    {
        const std::size_t end = field.rfind(u"\\\\");
        const bool isSplit = end != std::u16string_view::npos && end > 0 && field[end - 1] != u'\\';
        const std::u16string_view name = isSplit ? field.substr(end + 2) : std::u16string_view();
        if (name.empty() || leadsElsewhere(name) || name.find(u'\\') != name.npos)
            return parsed(field);
        CString last(name);
        last.Replace(u"%", u"%%");
        last.Insert(0, u"\\");
        const std::u16string_view folder = field.substr(0, end);
        if (m_start.IsEmpty() || folder != m_folder)
        {
            CString whole = parsed(field);
            if (!whole.view().ends_with(last.view()))
                return whole;
            m_folder = folder;
            m_start = whole.Left(whole.GetLength() - last.GetLength());
        }
        return m_start + last;
    }

private:
    CString parsed(std::u16string_view field) const
    {
        const CQoCollPath path(unescaped(field));
        return isPeerPath(path) ? CQoCollPath::makeShare(m_shareId, path).toString() : CString();
    }

    CString m_shareId;
    std::u16string m_folder; ///< of the last path, as it stands in the field
    CString m_start;         ///< the same in the share
};

/// A record of a line; null if it is none.
QoFileDbItemPtr parseRecord(const CString& line, PeerPaths& paths, qo::TextPool& texts)
{
    if (!line.view().starts_with(recordMark) || line.GetLength() > longestExtractLine ||
        line.view().find(u'\0') != std::u16string_view::npos)
        return {};
    ExtractFields fields(line.view().substr(recordMark.size()));
    auto item = qo::makeCounted<QoFileDbItem>();
    item->clipUid = CString(fields.next());
    item->path = paths.inShare(fields.next());
    item->artist = fields.nextText(texts);
    item->title = fields.nextText();
    item->album = fields.nextText(texts);
    item->genre = fields.nextText(texts);
    item->trackNumber = fields.nextText(texts);
    item->year = fields.nextText(texts);
    item->size = fields.nextInt64();
    item->duration = fields.nextInt();
    item->flags = static_cast<unsigned>(fields.nextInt());
    item->bitrate = fields.nextInt();
    item->createTime = qo::fromTicks(fields.nextInt64());
    if (fields.isShort() || item->path.IsEmpty())
        return {};
    return item;
}

/// As addQoDbFileItem(row, files, true) for one row after the other, but with one sort.
void addRecords(std::vector<QoFileDbItemPtr>& rows, QoFileDbItemArray& files)
{
    const auto isBefore = [](const QoFileDbItemPtr& a, const QoFileDbItemPtr& b)
    { return a->path.CompareNoCase(b->path) < 0; };
    if (!std::ranges::is_sorted(rows, isBefore))
        std::ranges::stable_sort(rows, isBefore);
    const auto isSame = [](const QoFileDbItemPtr& a, const QoFileDbItemPtr& b)
    { return a->path.CompareNoCase(b->path) == 0; };
    rows.erase(std::unique(rows.begin(), rows.end(), isSame), rows.end());
    if (files.IsEmpty())
        return CQoCollDbUtils::takeRows(rows, files);
    for (QoFileDbItemPtr& row : rows)
        CQoCollDbUtils::addQoDbFileItem(row, files, true);
}

/// Reads the first line of an open extract, and whether there is one more.
bool hasSecondLine(CStdioFileEx& file)
{
    CString line;
    return file.ReadString(line) && file.ReadString(line);
}
} // namespace

CString CQoDbExtract::GetUCQoDbExtractFileName(const CString& folder, const CString& name)
{
    CString path;
    path.Format(u"%s\\uc_extract_%s.txt", folder, name);
    return path;
}

CString CQoDbExtract::GetSCQoDbExtractFileName(const CString& folder, const CString& name)
{
    CString path;
    path.Format(u"%s\\sc_extract_%s.txt", folder, name);
    return path;
}

int CQoDbExtract::IsEmptyQodbExtract(const CString& path)
{
    CStdioFileEx file;
    if (file.Open(path, CStdioFileEx::modeRead) && hasSecondLine(file))
        return 0;
    if (file.error() != 0)
        qo::log(qo::level::error,
                u"CQoDbExtract::IsEmptyQodbExtract error readingfile %s : %s",
                path,
                qo::errorText(file.error()));
    return 1;
}

int CQoDbExtract::CreateEmptyQoDbExtract(const CString& path)
{
    return CreateQoDbExtract({}, path, FILETIME());
}

int CQoDbExtract::CreateQoDbExtractForAll(const CString& dbPath, const CString& path)
{
    CQoCollDb db(dbPath);
    QoFileDbItemArray files;
    db.getAllFiles(files, false, CString(), true);
    CollInfoDbItem info;
    db.getCollInfo(CString(), info);
    return CreateQoDbExtract(files, path, info.modifiedTime);
}

CString CQoDbExtract::FormatTimeInfo(const FILETIME& time)
{
    const qo::CalendarTime utc = qo::utcTime(time);
    CString text;
    text.Format(u"%04d-%02d-%02d %02d:%02d:%02d",
                utc.year,
                utc.month,
                utc.day,
                utc.hour,
                utc.minute,
                utc.second);
    return text;
}

void CQoDbExtract::WriteRelevantInformationForQoDbExtract(std::string& text,
                                                          const QoFileDbItemPtr& item)
{
    std::u16string line(recordMark);
    appendNumber(line, item->id, u'\t');
    appendEscaped(line, item->path);
    for (const CString* const field :
         {&item->artist, &item->title, &item->album, &item->genre, &item->trackNumber, &item->year})
        appendEscaped(line, *field);
    appendNumber(line, item->size, u'\t');
    appendNumber(line, item->duration, u'\t');
    appendNumber(line, static_cast<int>(item->flags), u'\t');
    appendNumber(line, item->bitrate, u'\t');
    appendNumber(line, qo::toTicks(item->createTime), u'\r');
    line += u'\n';
    text += qo::toUtf8(line);
}

int CQoDbExtract::CreateQoDbExtract(const QoFileDbItemArray& files,
                                    const CString& path,
                                    const FILETIME& time)
{
    qo::log(qo::level::step, u"-> CQoDbExtract::CreateQoDbExtract");
    CString header;
    header.Format(u"QODB_EXTRACT_VERSION:%u;QODB_EXTRACT_REVISION:%u;TIME_INFO:%s;\r\n",
                  extractVersion,
                  extractRevision,
                  FormatTimeInfo(time));
    std::string text = "\xEF\xBB\xBF" + qo::toUtf8(header);
    for (const QoFileDbItemPtr& item : files)
    {
        if (item->flags & qo::fileFlag::mediaMask)
            WriteRelevantInformationForQoDbExtract(text, item);
    }
    if (const int error = qo::fileSystem().replaceFile(path, text.data(), text.size()))
    {
        qo::log(qo::level::error,
                u"CQoDbExtract::CreateQoDbExtract error creating file %s : %s",
                path,
                qo::errorText(error));
        return 0;
    }
    qo::log(qo::level::step, u"CQoDbExtract::CreateQoDbExtract ->");
    return 1;
}

/// The parts may stand in any order; one that is missing is 0.
void CQoDbExtract::ParseVERLine(const CString& line, unsigned int& version, unsigned int& revision)
{
    version = revision = 0;
    for (const CString& piece : CStringArray::split(line, u';'))
    {
        if (!readHeaderNumber(piece.view(), u"QODB_EXTRACT_VERSION:", version))
            readHeaderNumber(piece.view(), u"QODB_EXTRACT_REVISION:", revision);
    }
}

CQoDbExtract::ERetCode
CQoDbExtract::LoadQoDbExtract(const CString& name, const CString& path, QoFileDbItemArray& files)
{
    CStdioFileEx file;
    CString line;
    if (file.Open(path, CStdioFileEx::modeRead))
        file.ReadString(line);
    unsigned version = 0;
    unsigned revision = 0;
    ParseVERLine(line, version, revision);
    if (version > extractVersion)
    {
        qo::log(qo::level::error,
                u"CQoDbExtract::LoadQoDbExtract unsupported version receive from device [%s] [%d] "
                u"[%d] ; our version [%d]",
                name,
                version,
                revision,
                extractVersion);
        return extractUnsupported;
    }
    std::vector<QoFileDbItemPtr> rows;
    qo::TextPool texts;
    PeerPaths paths(name);
    bool isTooLarge = file.GetLength() > largestExtract;
    while (version == extractVersion && !isTooLarge && file.ReadString(line))
    {
        if (auto item = parseRecord(line, paths, texts))
            rows.push_back(std::move(item));
        isTooLarge = rows.size() > mostExtractRecords;
    }
    addRecords(rows, files);
    if (file.error() == 0 && !isTooLarge)
        return extractLoaded;
    if (isTooLarge)
        qo::log(qo::level::error,
                u"CQoDbExtract::CreateQoDbExtract error reading file %s : %s",
                path,
                qo::errorText(EFBIG));
    else
        qo::log(qo::level::error,
                u"CQoDbExtract::LoadQoDbExtract error readingfile %s : %s",
                path,
                qo::errorText(file.error()));
    return extractUnreadable;
}

void CQoDbExtract::CopyShareTags(QoFileDbItemPtr source, QoFileDbItemPtr target)
{
    target->clipUid = source->clipUid;
    target->artist = source->artist;
    target->title = source->title;
    target->album = source->album;
    target->genre = source->genre;
    target->trackNumber = source->trackNumber;
    target->year = source->year;
    target->size = source->size;
    target->duration = source->duration;
    target->flags = source->flags;
    target->bitrate = source->bitrate;
    target->createTime = source->createTime;
}
