#include "cli/help/CommandTexts.h"

namespace qo::cli
{
namespace
{
constexpr const char* rulesText =
    R"(A rule says which folder a file belongs in and what it is
called there. Two rules are built in, artist-track and velmora-artist-track; "qo rule new" makes
others, and each of those is an XML file in the data folder.

A rule is a tree, and a file goes from its top down. On the way it may be sent one way or another,
by the number of tracks that the collection has of its artist or album. At the end stand a folder
and a name for each kind of file: music, pictures, lyrics.

# Patterns

Folders and names are patterns. Attributes stand in braces, and everything else is plain text:

    qo rule new "By artist" --folder "{artist.name}/{album.name}" \
       --music "{track.number} {track.name}" --artist-limit 3 --less-folder Mixed

{artist.name} :: the artist; likewise {album.name}, {track.name}, {track.number}, {track.year} and
{track.genre}

{source.name} :: where a recording comes from, as the name of the station

{date.int} :: the day, as 2026-12-31; {date.eu} and {date.us} write it in other ways

{time.eu} :: hour and minute; {time.us}, {time.sec-eu} and {time.sec-us} likewise

# Using a rule

- "qo rule test RULE FILE" says where single files would go.

- "qo reorg plan --rule RULE" says it for the collection, and shows what cannot move and why.

- "qo reorg apply --last" carries that plan out, and "qo undo" takes it back.

Nothing is ever overwritten. What lies beside a track and has its name goes with it: covers,
lyrics, cue sheets.
)";

constexpr const char* rulesMore = R"(# Names that are made

A name that is made from a pattern

- loses the blanks at its ends,

- gets "_" for what no file name can hold, for a slash in a value, and for a point at its start or
end,

- is refused where none of its attributes has a value and the rest is mere punctuation. "--default
'{album.name}=Singles'" of "qo rule new" gives a text for an attribute that a file lacks; with
"--keep-if-empty" such a file keeps its name.

A name that is kept stays as it is.

# Files that belong together

Files that lie in one folder and have one name but for the extension belong together: 1.jpg,
1.txt, 1.lrc and 1.cue go by the track 1.mp3. A picture or text without a track of its name asks
the music of its folder for what it does not know itself. Other files stay where they are.

# Rule files

The file of a rule lies in the sub-folder Qorganizer of the data folder, and its name without
".xml" is the id of the rule. It is XML in UTF-8:

    <ReorganizeRule name="Artists with 3 tracks" prio="10">
      <UnknownAttrib name="{artist.name}" defValue="Unknown artist" />
      <Rule type="ArtistTracksSeperateRule" trackLimit="3">
        <RuleOutput type="MoreEqualTracks">
          <Rule type="SubdirRule" keepOriginal="0" ruleDefinition="{artist.name}\">
            <Rule type="RenameRule" renameRuleType="Music" keepOriginal="0"
                  ruleDefinition="{track.number} {track.name}" />
          </Rule>
        </RuleOutput>
        <RuleOutput type="LessTracks">
          <Rule type="SubdirRule" keepOriginal="0" ruleDefinition="Mixed\">
            <Rule type="RenameRule" renameRuleType="Music" keepOriginal="1" />
          </Rule>
        </RuleOutput>
      </Rule>
    </ReorganizeRule>

ArtistTracksSeperateRule :: sends a file to MoreEqualTracks or LessTracks, by whether the
collection has at least trackLimit tracks of its artist, or to NoArtist

AlbumTracksSeperateRule :: the same for albums, with NoAlbum

JingleSeperateRule :: sends a file to Jingle or NotJingle

SubdirRule :: the folder, with a closing backslash and backslashes between its parts;
keepOriginal="1" keeps the folder

RenameRule :: the name for one renameRuleType, which is Music, Picture or Lyrics; keepOriginal="1"
keeps the name, and keepOriginalIfAttribEmpty="1" does where a value is missing

"qo rule check FILE" says whether a file is a rule, and if not, why. A file that is none is
ignored.
)";

constexpr const char* namesText =
    R"(Artists, albums, genres and tracks are made from the tags of
the files. Two questions decide what is one: when are two names the same, and which music do
covers and texts belong to?

# When names are the same

Names are the same but for upper and lower case: "ABBA" is "Abba". Nothing else is evened out:
"The Larks", "Larks, The" and "Larks" are three artists, and "Hip-Hop" and "Hip Hop" two genres.

- An album is one where its name and its artist are. Two albums "Gold" by two artists are two.

- A track is one with another where artist, album, title, number and year are. A missing number or
year fits any other; of "3/12" the 3 counts; 98 is 1998. "qo dup" lists such tracks.

- A file without an artist has an unknown artist of its own. "qo untagged" lists such files.

In lists each name has the spelling that came first.

# Whose cover, whose text

A picture or text has no tag. A scan looks at what lies beside it:

- All files of the folder vote, and those of its sub-folders. Where they agree on an artist or an
album, it is that of the picture too. Up to 20 percent may have no value; the setting
UnrelMaxPercent says how many.

- Else its name decides: "song.jpg" belongs to "song.mp3", and "Gold front.jpg" to the album
"Gold" in its folder.

"qo placed" says of each picture and text what it found, and why.

# Names that are typed

A name that does not exist is answered with the one that is closest. A file can be named by any
path that leads to it, also through links.
)";

constexpr const char* queriesText =
    R"(Every command that takes files takes a query: words, of which
all must fit.

live :: "live" in the title, artist, album, genre, year or path

artist:bea :: "bea" in that field; likewise album, title, genre, path, name, kind and format

year:1960..1969 :: a range; likewise track, length (3:00..), bitrate (..128) and size (10M..)

added:-7d.. :: since seven days ago (h, d, w, m, y); changed:2024-05 is a month

title::^the :: a regular expression

artist: :: without an artist

^genre:jazz :: not so

genre:jazz, genre:blues :: one or the other

"a b" :: with the blank; in a shell in quotes of its own: '"a b"'

Music/Live, 'Music/*/01*' :: files at or below a path, or by a pattern as in a shell

marked: edited: untagged: unplaced: missing: :: files with a check mark, with edits that wait,
music without artist or title, pictures and texts without music, files that are gone

Case and accents do not matter: "bjork" finds "Björk". A word that is the name of a file or folder
here is that path, unless it stands in quotes.

# Examples

    qo tracks "artist:bea year:1960..1969 ^genre:live" --sort year,album,track
    qo tag set genre=Jazz path:Jazz added:-7d
    qo ls untagged: size:1M..
    qo mark 'format:flac, bitrate:320..'
)";
} // namespace

const char* const environmentText =
    R"(HOME :: where the music folder and the folders below are looked for

XDG_DATA_HOME, XDG_STATE_HOME, XDG_CACHE_HOME :: where the collection, the logs, and covers
and other files that can be made again are kept; "--data" puts all of them below one folder)";

const char* const filesText =
    R"(~/.local/share/Velmora/settings :: the settings

~/.local/share/Velmora/Qorganizer/qodb :: the database of the collection; its copies lie
beside it in the folder snapshots

~/.local/share/Velmora/Qorganizer/*.xml :: the rules)";

const char* const settingsFileText =
    R"("qo config" lists the settings, "qo config set" changes one and checks its value, and "qo
config unset" lets it have its default again. They stand in the text file "settings" of the
data folder, which is UTF-8:

    [Scan]
    IgnoredNames=.*;*.part

In names and values \n, \r, \t, \=, \\, \s (a blank at an end) and \uXXXX stand for what a
line cannot hold. Lines that begin with "#" and unknown settings stay as they are.)";

const std::vector<SettingText>& settingTexts()
{
    static const std::vector<SettingText> texts = {
        {"IgnoredNames",
         "names and patterns that no scan takes in, separated by \";\". A file .qoignore in a "
         "folder "
         "has more of them for that folder and all below it, in the form of .gitignore"},
        {"FileKinds",
         "further extensions that are audio, video and pictures, as \"audio: opus ape; picture: "
         "webp\". The next scan reads files of extensions that came"},
        {"LongestJingle",
         "how long a recording from the radio may be, in seconds, that a database of an older "
         "version has and that counts as a jingle from now on"},
        {"UnrelMaxPercent",
         "how many of the files and folders of a folder, in percent, may go without a value on "
         "which "
         "the others agree, so that it becomes that of all. 0 to 100"},
        {"MusicCollectionDirsCount",
         "the number of root folders. It and the settings MusicCollectionDir0, "
         "MusicCollectionDirType0 and so on are kept by \"qo roots\""},
        {"TraceLevel",
         "what is logged: None, Error, Warning, Info, Debug, Detail or Verbose. \"qo log\" shows "
         "it"},
        {"TempFolder", "where files are kept for a while that are made anew when they are missing"},
        {"SendUsageStatistics",
         "whether usage is counted, in usage.json in the data folder; qo sends nothing"}};
    return texts;
}

const std::vector<Topic>& topics()
{
    static const std::vector<Topic> list = {
        {"rules", "how files are sorted and named", rulesText, rulesMore},
        {"queries", "how files are found", queriesText},
        {"names", "when names are the same, and whose a cover is", namesText}};
    return list;
}
} // namespace qo::cli
