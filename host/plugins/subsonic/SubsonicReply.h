#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qo::host
{
/// An artist, album or track as the server describes it. Names are without control characters and
/// at most 500 units long; one that is missing is "[unknown]". An id is any text of 1 to 1,000
/// bytes.
struct SubsonicItem
{
    std::string id;
    CString artist;
    CString album = {}; ///< of an album or a track
    CString title = {}; ///< of a track, like what follows
    CString suffix = {};
    std::int64_t size = 0; ///< bytes; 0: unknown
    int duration = 0;      ///< milliseconds; 0: unknown
};

/// An answer of a music server.
struct SubsonicReply
{
    enum class Form
    {
        reply,
        foreign, ///< not the answer of such a server
        damaged  ///< cut, damaged or too large
    };

    Form form = Form::foreign;
    int code = -1;       ///< -1: success; else the server's number of the error
    std::string message; ///< the server's own words
    int version = 0;     ///< of the interface, 1010 for "1.10.2"; 0: unknown
    std::vector<SubsonicItem> artists;
    std::vector<SubsonicItem> albums;
    std::vector<SubsonicItem> tracks;
};

/// Reads an answer, whose text the caller has limited in size. The server is not trusted: values
/// may stand in one another 32 deep, an object may have 200 members, and there may be a million
/// values and 100,000 entries. Entries without an id are left out.
SubsonicReply readSubsonicReply(std::string_view text);

/// The text with blanks in place of control characters, and none at its ends.
CString singleLine(CString text);

/// All of a track in one line, and the reverse; an item without an id for any other text.
CString subsonicTrackText(const SubsonicItem& track);
SubsonicItem subsonicTrackOf(const CString& text);
} // namespace qo::host
