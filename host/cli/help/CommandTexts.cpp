#include "cli/help/CommandTexts.h"

#include <algorithm>

namespace qo::cli
{
namespace
{
// A row for every command and sub-command, in the order of the help.
// clang-format off
const std::vector<CommandText> texts = {
{"scan", {
    {"qo scan ~/Music", "Take in a folder; it is a root folder of the collection from now on"},
    {"qo scan", "Take in what changed in all root folders"},
    {"qo scan --find-moved", "Let files that other programs moved keep their records"}},
    "A scan reads the tags of new and changed files alone. One that is interrupted keeps what it has "
    "read, and the next one goes on from there.\n\n"
    "When a root folder is away, as a disk that is not plugged in, nothing is changed."},
{"load", {
    {"qo load", "Read the collection from its database"},
    {"qo load --memory --json", "The time and the memory that this takes, for a program"}}},
{"watch", {
    {"qo watch", "Take in changes until Ctrl-C"},
    {"qo watch --settle 30 --every 60", "Wait half a minute after the last change of a file"}}},
{"roots", {
    {"qo roots", "List the root folders"},
    {"qo roots add ~/Downloads", "Make a folder a root folder; \"qo scan\" then reads it"}}},
{"roots ls", {
    {"qo roots ls", "List the root folders and what counts as music in them"},
    {"qo roots ls --json", "The same for a program"}}},
{"roots add", {
    {"qo roots add ~/Downloads", "Make a folder a root folder; \"qo scan\" then reads it"},
    {"qo roots add --type all ~/Music", "Let videos of this root folder count as music, too"}}},
{"roots rm", {
    {"qo roots rm ~/Music --yes", "Take a root folder out; its files stay on the disk"},
    {"qo roots rm ~/Music --dry-run", "Show what that would do"}}},
{"status", {
    {"qo status", "Where the collection is, how large it is, and what waits"},
    {"qo status --json", "The same for a program"}}},
{"ls", {
    {"qo ls", "Every file of the collection"},
    {"qo ls hidden year:1980.. --sort year-", "Those with a word, of certain years"},
    {"qo ls --json", "Everything that is known of each, an object a line"}}},
{"tree", {
    {"qo tree", "Folders and files, drawn"},
    {"qo tree --folders --depth 2", "Two levels of folders"}}},
{"info", {
    {"qo info \"Music/Hidden Machine/Stranger/01 - Letter.mp3\"", "Everything about one file"},
    {"qo info --json Music/Kino/Album/01.mp3", "The same for a program"}}},
{"tag", {
    {"qo tag show Music/Kino/Album/01.mp3", "Look at the tag of a file"},
    {"qo tag set Music/Kino/Album/01.mp3 year=1988", "Edit it; nothing is written yet"},
    {"qo tag write --all --yes", "Write all edits into the files"}},
    "An edit waits beside the file until it is written, and follows the file wherever it moves."},
{"tag show", {
    {"qo tag show Music/Kino/Album/01.mp3", "The values in the file and the edited ones"},
    {"qo tag show --all Music/Kino/Album/01.mp3", "Each frame, item, atom or chunk with its size"}}},
{"stats", {
    {"qo stats", "Files, playing time and size, by kind, format, decade, genre, artist"},
    {"qo stats genre:rock --limit 3 --svg rock.svg", "Of what a query finds, with a picture"}}},
{"playlist", {
    {"qo playlist", "List the playlists"},
    {"qo playlist new Evening genre:rock year:1989", "Make one of the songs that a query finds"},
    {"qo playlist export Party party.m3u8", "Write it for another player"}},
    "A playlist keeps its songs when they are moved and tagged. A living list is looked up whenever it is shown."},
{"playlist ls", {
    {"qo playlist ls", "The playlists and how many songs they have"},
    {"qo playlist ls --json", "The same for a program"}}},
{"playlist show", {
    {"qo playlist show Party", "The songs of a playlist with their positions"},
    {"qo playlist show Party --json", "The same for a program"}}},
{"playlist new", {
    {"qo playlist new Evening genre:rock --sort year", "Of the songs that a query finds"},
    {"qo playlist new Nineties --query \"year:1990..1999\"", "A living list, looked up whenever it is shown"}}},
{"playlist rename", {
    {"qo playlist rename Party \"Old party\"", "Give it another name"},
    {"qo playlist rename \"#1\" Feast --dry-run", "The one with this id; show what that would do"}}},
{"playlist add", {
    {"qo playlist add Party artist:kino", "Put songs at the end"},
    {"qo playlist add Party Music/Kino --at 1", "Put them first"}}},
{"playlist remove", {
    {"qo playlist remove Party title:rain", "Take songs out; the files stay"},
    {"qo playlist remove Party --at 1,3-4", "Those at these positions"}}},
{"playlist move", {
    {"qo playlist move Party 3 1", "The third song becomes the first"},
    {"qo playlist move Party 1-2 9", "The first two go to the end"}}},
{"playlist rm", {
    {"qo playlist rm Party --yes", "Remove a playlist; its files stay"},
    {"qo playlist rm Party --dry-run", "Show what that would do"}}},
{"playlist import", {
    {"qo playlist import Downloads/old.m3u", "Take in a list of another player"},
    {"qo playlist import Downloads/old.m3u --name Summer --match", "Look by the tags for what is elsewhere now"}}},
{"playlist export", {
    {"qo playlist export Party party.xspf", "Write a list; the ending chooses the format"},
    {"qo playlist export Party --copy-to stick", "Copy the songs too, with names for any disk"},
    {"qo playlist export Party -", "The list to the output"}}},
{"playlist check", {
    {"qo playlist check", "Name the entries that do not mean their songs"},
    {"qo playlist check Party --json", "Those of one playlist, for a program"}}},
{"playlist repair", {
    {"qo playlist repair", "Look for the songs of such entries"},
    {"qo playlist repair --dry-run", "Only show what would be found"}}},
{"session", {
    {"qo session", "List the sessions in which files were recorded"},
    {"qo session ls --json", "The same for a program"}}},
{"session ls", {
    {"qo session ls", "The sessions with their times and files"},
    {"qo session ls --long", "With all that is known of each"}}},
{"session show", {
    {"qo session show 1", "The files of a session; there must be one of that id", 4},
    {"qo session show 1 --json", "The same for a program", 4}}},
{"view", {
    {"qo view --left genres --select Rock", "The artists and albums of a genre"},
    {"qo view --select \"Hidden Machine\" --middle Stranger", "The files of an album"},
    {"qo view --on Ben --hide own", "What a friend has, in the same panes", 4}},
    "The left pane decides what the middle one shows, and both what the right one shows. Numbers are "
    "files, and marks are [x] for all of them and [-] for some. With --on the files of one place stand "
    "beside your own, as foreign ones."},
{"mark", {
    {"qo mark artist:hidden year:..1990", "Mark what a query finds"},
    {"qo mark --all", "Mark everything"}},
    "Marks last until they are taken off, and follow files that move. With --marked every command "
    "that takes files works on them: mark, look, plan, apply."},
{"unmark", {
    {"qo unmark --all", "Take all marks off"},
    {"qo unmark kind:picture", "Those of pictures"}}},
{"marked", {
    {"qo marked", "How many files are marked, and their size"},
    {"qo ls --marked", "Which ones", 4}}},
{"rate", {
    {"qo rate artist:hidden title:rain 4.5", "Give what a query finds four and a half stars"},
    {"qo rate artist:hidden 0", "Take the rating away"},
    {"qo rate Music/Kino 5 --write --yes", "And write it into the files, for other players"}},
    "The last word is the number of stars, from 0 to 5 in halves, or \"tag\" for what the file itself says. "
    "Ratings belong to the record of a file and follow it wherever it moves."},
{"played", {
    {"qo played artist:hidden title:rain", "Count that it was played just now"},
    {"qo played artist:hidden --at 2024-05-31T18:30", "Or then"}}},
{"tag set", {
    {"qo tag set Music/Kino/Album/01.mp3 year=1988 genre=Rock", "Edit two fields"},
    {"qo tag set genre=Rock artist:kino --yes", "Edit all that a query finds"},
    {"qo tag set Music/Kino/Album/01.mp3 lyrics=", "Take a field out of the tag"}}},
{"tag ls", {
    {"qo tag ls", "The files whose edits are not written"},
    {"qo tag ls --json", "The same for a program"}}},
{"tag revert", {
    {"qo tag revert \"Music/Iron Circus/Heart/01 - Heart.mp3\"", "Drop all edits of a file"},
    {"qo tag revert \"Music/Iron Circus/Heart/01 - Heart.mp3\" year", "Drop the edit of one field"}}},
{"tag encoding", {
    {"qo tag encoding Music/Kino", "Find garbled texts and edit them"},
    {"qo tag encoding --dry-run Music", "Only show what they would be"},
    {"qo tag encoding --from windows-1251 Music/Kino", "Name the encoding yourself"}},
    "Old tags often have Cyrillic, Greek, Chinese, Japanese or Korean texts that are shown as "
    "accented letters. The encoding is found album by album."},
{"tag write", {
    {"qo tag write --all --yes", "Write every edit into its file"},
    {"qo tag write \"Music/Iron Circus/Heart/01 - Heart.mp3\"", "Write those of one file"}},
    "A file is written through a checked copy that then takes its place."},
{"cover", {
    {"qo cover show Music/Kino", "The pictures in the tags of a folder"},
    {"qo cover set Music/Kino --image Pictures/front.jpg --yes", "Give them one"}},
    "Pictures are written at once; they do not wait as edits do."},
{"cover show", {
    {"qo cover show --album Stranger", "The pictures of an album"},
    {"qo cover show Music/Kino/Album/01.mp3", "Those of a file"}}},
{"cover extract", {
    {"qo cover extract --album Heart --to Pictures", "Each picture of an album, into a folder"},
    {"qo cover extract Music --to Pictures --dry-run", "Show which ones there are"}}},
{"cover set", {
    {"qo cover set --album Stranger --image Pictures/front.jpg --yes", "A front cover for an album"},
    {"qo cover set Music/Kino --image Pictures/front.jpg --dry-run", "Show which files would change"}}},
{"cover remove", {
    {"qo cover remove --album Stranger --yes", "Take the front cover out"},
    {"qo cover remove Music/Kino --all --yes", "Take every picture out"}}},
{"mv", {
    {"qo mv \"Music/Iron Circus\" Music/Circus", "Rename a folder"},
    {"qo mv Music/Kino/Album/01.mp3 Music/Circus.mp3", "Move and rename a file"},
    {"qo mv --dry-run Music/Kino \"Music/Iron Circus\"", "Show what a move would do"}},
    "Files keep their records and ids. Nothing is overwritten, and \"qo undo\" takes it back."},
{"rm", {
    {"qo rm Music/Kino/Album/01.mp3", "Put a file into the trash of the desktop"},
    {"qo rm --dry-run Music/Kino", "Show what would go"}}},
{"add", {
    {"qo add Downloads/new.mp3 --to Music", "Copy a file into the collection"},
    {"qo add Downloads/new.mp3 --to Music --move", "Move it there"}}},
{"undo", {
    {"qo undo", "Take back the last run"},
    {"qo undo --dry-run", "Show what would go back"},
    {"qo undo 20261121-211035", "Take back a certain run of \"qo runs\"", 4}}},
{"runs", {
    {"qo runs", "What was moved, added, thrown away and undone"},
    {"qo runs --long", "The same with tabs between the columns"}}},
{"artists", {
    {"qo artists", "All artists"},
    {"qo artists --genre Rock", "Those of a genre"},
    {"qo artists --json", "The same as objects, one a line"}}},
{"genres", {
    {"qo genres", "All genres"},
    {"qo genres --artist \"Hidden Machine\"", "Those of an artist"}}},
{"albums", {
    {"qo albums --artist \"Hidden Machine\"", "The albums of an artist"},
    {"qo albums --genre Rock", "Those of a genre"}}},
{"tracks", {
    {"qo tracks artist:hidden ^genre:jazz", "The tracks that a query finds"},
    {"qo tracks --long", "Every field, with tabs between them"}}},
{"lyrics", {
    {"qo lyrics \"Music/Hidden Machine/Stranger/01 - Letter.mp3\"", "The words of a track"},
    {"qo lyrics --json \"Music/Hidden Machine/Stranger/01 - Letter.mp3\"", "With where they stand"}}},
{"placed", {
    {"qo placed", "Which music the covers and texts belong to, and why"},
    {"qo placed --missing", "Those that found none"}},
    "See \"qo help names\" for how they find it."},
{"untagged", {
    {"qo untagged", "Music without an artist or a title"},
    {"qo untagged Music/Kino", "In one folder"}}},
{"dup", {
    {"qo dup", "What is there twice"},
    {"qo dup --tracks", "Tracks with the same artist, album, title, number and year"}}},
{"rule", {
    {"qo rule", "List the rules"},
    {"qo rule show \"By artist\"", "Draw one"}},
    "See \"qo help rules\" for what a rule is."},
{"rule ls", {
    {"qo rule ls", "List the rules with their priorities"},
    {"qo rule ls --json", "The same for a program"}}},
{"rule show", {
    {"qo rule show artist-track", "Draw a built-in rule"},
    {"qo rule show \"By artist\" --json", "A rule of yours, for a program"}}},
{"rule check", {
    {"qo rule check \"By artist\"", "Look at a rule that is kept"},
    {"qo rule check Downloads/broken.xml", "Say what is wrong with a rule file", 1}}},
{"rule test", {
    {"qo rule test \"By artist\" Music/Kino/Album/01.mp3", "Where this file would go"},
    {"qo rule test artist-track Music", "Where a built-in rule wants everything"}}},
{"rule new", {
    {"qo rule new Simple --folder \"{artist.name}\" --music \"{track.name}\"",
     "A folder for each artist, and files named by their titles"},
    {"qo rule new Few --folder \"{artist.name}\" --artist-limit 3 --less-folder Mixed",
     "Artists with fewer than three tracks share a folder"}}},
{"rule copy", {
    {"qo rule copy artist-track Mine", "A rule of your own, like the built-in one"},
    {"qo rule copy \"By artist\" Second --prio 10", "With a priority of its own"}}},
{"rule rm", {
    {"qo rule rm \"By artist\"", "Throw a rule away; its file goes to the trash"},
    {"qo rule rm artist-track", "Built-in rules stay", 7}}},
{"reorg", {
    {"qo reorg plan --rule artist-track", "Show what would move, and keep that as a plan"},
    {"qo reorg apply --last", "Carry it out"},
    {"qo undo", "Take it back"}},
    "A plan changes nothing. Carrying it out does what the plan shows, and nothing else."},
{"reorg plan", {
    {"qo reorg plan --rule \"By artist\"", "What a rule would do with the whole collection"},
    {"qo reorg plan --rule artist-track --artist \"Hidden Machine\"", "With the music of one artist"},
    {"qo reorg plan --rule artist-track --json", "The same for a program"}}},
{"reorg apply", {
    {"qo reorg apply --last", "Carry out the youngest plan"},
    {"qo reorg apply --last --dry-run", "Only check that it could be carried out"}}},
{"reorg undo", {
    {"qo reorg undo", "Take back the last run"},
    {"qo reorg undo 20261121-211035", "Take back a certain run of \"qo runs\"", 4}}},
{"reorg log", {
    {"qo reorg log", "The runs there were"},
    {"qo reorg log --json", "The same for a program"}}},
{"reorg forget", {
    {"qo reorg forget 20261121-211035", "Set a run aside whose disk will not come back", 4},
    {"qo reorg forget 20261121-211035 --dry-run", "Show what that would do", 4}}},
{"plugin", {
    {"qo plugin", "The storage services that you use"},
    {"qo plugin login NAS --folder ~/nas", "Use a mounted folder"}}},
{"plugin ls", {
    {"qo plugin ls --room", "The services, and how much room each has left"},
    {"qo plugin ls --json", "The same for a program"}}},
{"plugin login", {
    {"qo plugin login NAS --folder ~/nas", "Use a mounted folder under the name NAS"},
    {"qo plugin login NAS", "Log in again, with a new password"}},
    "A WebDAV server is --webdav https://nas.example/dav --user ann, and a music server "
    "--subsonic https://music.example --user ann. The password is asked for, or read from standard "
    "input, and kept in the desktop's store of passwords, else in a file that you alone may read. "
    "--keep-in file is for a store that nobody can unlock, as over ssh."},
{"plugin logout", {
    {"qo plugin logout NAS", "Forget it, with its password; its files stay"},
    {"qo plugin logout NAS --dry-run", "Show what that would do"}}},
{"plugin set", {
    {"qo plugin set NAS --music Music/Kino", "Say where its music is"},
    {"qo plugin set NAS --movies \"\"", "It has all videos in its first folder"},
    {"qo plugin set NAS --music-rule artist-track", "Sort music by a rule that is put there"}},
    "Rules sort what \"qo plugin put\" puts into the service without naming a folder in it."},
{"plugin scan", {
    {"qo plugin scan NAS", "Look through its folders for music and videos"},
    {"qo plugin scan NAS --deep", "Read all tags again"},
    {"qo ls --on NAS kino", "What is known of it since, with a query", 4}}},
{"plugin browse", {
    {"qo plugin browse NAS", "What is in its first folder"},
    {"qo plugin browse NAS Music/Kino --deep", "All files below a folder"},
    {"qo plugin browse NAS --json", "For a program"}}},
{"plugin rm", {
    {"qo plugin rm NAS Music/old.mp3 --yes", "Remove a file; there is no way back"},
    {"qo plugin rm NAS Music/Kino --dry-run", "Show what that would do"}}},
{"plugin get", {
    {"qo plugin get NAS Music/Kino --to ~/Music", "Copy a folder with all that is in it"},
    {"qo plugin get NAS Music/a.mp3 --to . --replace", "Copy a file over an older copy"}},
    "Files that are there already stay as they are without --replace. What is interrupted leaves no "
    "part of a file."},
{"plugin put", {
    {"qo plugin put Downloads/new.mp3 --to NAS/Music/Kino", "Copy a file into a folder of a service"},
    {"qo plugin put Downloads --to NAS/Music --dry-run", "Show what would become of a folder"},
    {"qo plugin put Downloads/*.mp3 --to NAS", "Sort them by the rules of the service, if it has any"}}},
{"device", {
    {"qo device", "The devices that are connected or adopted"},
    {"qo device adopt Stick --music Music", "Take the music of a stick into the collection", 4}}},
{"device ls", {
    {"qo device ls", "The devices, with the room that is left on each"},
    {"qo device ls --json", "The same for a program"}}},
{"device adopt", {
    {"qo device adopt Stick", "Take in the folders that seem to hold music and videos", 4},
    {"qo device adopt /media/ann/Stick --music Music", "Name the device by its place", 4},
    {"qo device adopt Stick --music-rule artist-track", "Sort music by a rule that is pushed", 4}},
    "\"qo scan\" then looks through these folders whenever the device is connected. While it is away "
    "its files stay in the collection: \"qo ls --on Stick\" lists them. Rules sort what \"qo device push\" "
    "pushes to the device without naming a folder on it."},
{"device forget", {
    {"qo device forget Stick", "Take its files out of the collection; they stay on the device", 4},
    {"qo device forget Stick --dry-run", "Show what that would do", 4}}},
{"device info", {
    {"qo device info Stick", "All that is known of it", 4},
    {"qo device info Stick --json", "The same for a program", 4}}},
{"device browse", {
    {"qo device browse Stick", "What is in its first folder", 4},
    {"qo device browse Stick Music --deep", "All files below a folder", 4}}},
{"device pull", {
    {"qo device pull Stick Music/Kino --to ~/Music", "Copy a folder with all that is in it", 4},
    {"qo device pull Stick Music/a.mp3 --to . --replace", "Copy a file over an older copy", 4}},
    "Each copy is read back and compared. Files that are there already stay as they are without "
    "--replace."},
{"device push", {
    {"qo device push Downloads/*.mp3 --to Stick/Music", "Copy files to a device", 4},
    {"qo device push Downloads/new.mp3 --to Stick/Music --dry-run", "Show what that would do", 4},
    {"qo device push Downloads/*.mp3 --to Stick", "Sort them by the rules of the device, if it has any", 4}}},
{"device eject", {
    {"qo device eject Stick", "Write all that is to be written, and take it out of use", 4},
    {"qo device eject Stick --dry-run", "Show what that would do", 4}}},
{"search", {
    {"qo search \"blue sky\" --on home", "Look for tracks in a music server", 4},
    {"qo search", "The tracks that were found so far, with their numbers"},
    {"qo search blue --limit 5 --dry-run", "Look only, and keep nothing", 2}},
    "What is found is kept, so that it can be fetched by its number later. A text that is the name "
    "of a sub-command stands after \"--\"."},
{"search ls", {
    {"qo search ls", "The tracks that are kept, with their numbers"},
    {"qo search ls --json", "The same for a program"}}},
{"search get", {
    {"qo search get 12 15 --to ~/Music", "Copy two of the tracks that were found", 4},
    {"qo search get 12 --to ~/Music --dry-run", "Show what that would do", 4}},
    "Files that are there already stay as they are without --replace. What is interrupted leaves no "
    "part of a file."},
{"search clear", {
    {"qo search clear", "Forget the tracks that were found; those in playlists stay"},
    {"qo search clear --dry-run", "Only say how many that would be"}}},
{"extract", {
    {"qo extract write mine.txt", "Write what one has into a text file, for a friend"},
    {"qo extract show mine.txt", "List what such a file holds", 4}},
    "An extract names the files of a collection with their artists, titles and sizes; the files "
    "themselves, lyrics and pictures are not in it."},
{"extract write", {
    {"qo extract write mine.txt", "All music and videos of the collection"},
    {"qo extract write rock.txt genre:rock --dry-run", "How many files a query would offer"}}},
{"extract show", {
    {"qo extract show mine.txt", "List the files of an extract", 4},
    {"qo extract show mine.txt --json", "The same for a program", 4}}},
{"share", {
    {"qo share invite Ann --at nas.example", "Offer all music and videos to Ann, and print the link for her"},
    {"qo share serve --listen 0.0.0.0", "Let friends fetch what is offered to them", 2},
    {"qo share get Ben /home/ben/Music/Kino --to Music", "Copy some of them", 4}},
    "Friends do the rest with \"accept\", \"scan\" and \"get\". An invitation is a link. It names where the files are served and the key by which the server is known again; whoever "
    "has the link gets the files, so it goes to the friend alone. See docs/sharing.md."},
{"share invite", {
    {"qo share invite Ann --at nas.example", "Offer all music and videos, now and later"},
    {"qo share invite Eve --query 'genre:rock year:1990..' --at 192.168.1.5:8000", "Offer what a query finds, at another port"},
    {"qo share invite Tom --text 'My records' --dry-run", "How many files that would be"}}},
{"share revoke", {
    {"qo share revoke Ann", "What Ann fetches just now ends, too", 4},
    {"qo share revoke Ann --dry-run", "Whether something is offered to her", 4}}},
{"share serve", {
    {"qo share serve", "Serve to this machine alone, at port 4747", 2},
    {"qo share serve --listen 0.0.0.0", "Serve to everyone who has a link and reaches this machine", 2},
    {"qo share serve --listen '[::]:8000' --json", "Over IPv6 at another port, with a line for each visit for a program", 2}}},
{"share accept", {
    {"qo share accept link.txt", "Take the invitation that a file begins with", 4},
    {"qo share accept link.txt --as Benny", "The same under another name for the friend", 4}}},
{"share forget", {
    {"qo share forget Ben", "His files leave the collection; copies of them stay", 4},
    {"qo share forget Ben --dry-run", "Whether there is such a share", 4}}},
{"share ls", {
    {"qo share ls", "What is offered to friends, and what friends offer"},
    {"qo share ls --json", "With the links, for a program"}}},
{"share scan", {
    {"qo share scan Ben", "Fetch the list of his files", 4},
    {"qo albums --on Ben", "What is known of them since", 4}}},
{"share browse", {
    {"qo share browse Ben", "The top of what he offers", 4},
    {"qo share browse Ben /home/ben/Music --json", "The files of a folder, for a program", 4}}},
{"share get", {
    {"qo share get Ben /home/ben/Music/Kino --to Music", "Copy a folder", 4},
    {"qo share get Ben / --to Music --dry-run", "List all that would be copied", 4}}},
{"share check", {
    {"qo share check link.txt", "Check the link that a file begins with", 4},
    {"qo share check 'https://qokernel.example/anywhere/1?t=1&u=Ben&w=&v=1&c=0'", "Or one as it was copied", 1}}},
{"config", {
    {"qo config", "All settings"},
    {"qo config set TraceLevel Info", "Change one"},
    {"qo config unset TraceLevel", "Go back to its default"}},
    "qo-settings(5) describes them."},
{"config ls", {
    {"qo config ls", "All settings, and which have their defaults"},
    {"qo config ls --json", "The same for a program"}}},
{"config get", {
    {"qo config get IgnoredNames", "The names that no scan takes in"},
    {"qo config get FileKinds", "The further extensions that are taken in"}}},
{"config set", {
    {"qo config set TraceLevel Debug", "Write a log of the next runs"},
    {"qo config set UnrelMaxPercent 30", "Let folders agree on an artist more easily"}}},
{"config unset", {
    {"qo config unset UnrelMaxPercent", "Go back to the default"},
    {"qo config unset IgnoredNames --dry-run", "Show what that would do"}}},
{"log", {
    {"qo log", "What the last run wrote"},
    {"qo log --all --level warning", "Warnings and errors of all runs that are kept"}},
    "A log is written when the setting TraceLevel is not None."},
{"doctor", {
    {"qo doctor", "Everything that is not as it should be, and what to do about it"},
    {"qo doctor --fix", "Mend what can be mended without harm", 0}},
    "The exit code is 0 when all is well, and 6 otherwise. --fix removes what killed processes left "
    "behind, and takes a snapshot where there is none; it changes no file of yours."},
{"db", {
    {"qo db check", "Look for damage"},
    {"qo db snapshots", "List the copies that were kept"}}},
{"db check", {
    {"qo db check", "Look for damage and contradictions"},
    {"qo db check --json", "The same for a program"}}},
{"db dump", {
    {"qo db dump > collection.sql", "Everything as text"},
    {"qo db dump | sqlite3 copy.db", "A copy for other programs"}}},
{"db repair", {
    {"qo db repair", "Save what can be read; a sound database stays as it is"},
    {"qo db repair --dry-run", "Say what that would do"}}},
{"db migrate", {
    {"qo db migrate --dry-run", "Say what a database of an older version would become"},
    {"qo db migrate", "Carry it over; scan, load and what shows music do that by themselves"}}},
{"db backup", {
    {"qo db backup", "Take a snapshot, as is done before every great change"},
    {"qo db backup collection.db", "A copy that stays until you remove it"}}},
{"db snapshots", {
    {"qo db snapshots", "The copies that were kept, with their times"},
    {"qo db snapshots --json", "The same for a program"}}},
{"db restore", {
    {"qo db restore --dry-run", "Show which snapshot would take the place of the database"},
    {"qo db restore", "Go back to the newest one"}}},
{"version", {
    {"qo version", "The version of the program and of its database"},
    {"qo version --json", "The same for a program"}}},
{"help", {
    {"qo help tag set", "Explain a command"},
    {"qo help rules", "Explain an idea"}}},
{"completion", {
    {"source <(qo completion bash)", "Complete in this bash"},
    {"qo completion fish > ~/.config/fish/completions/qo.fish", "Complete in every fish"}},
    "An installed package completes without this."},
{"completion bash", {
    {"source <(qo completion bash)", "Complete in this shell"},
    {"echo 'source <(qo completion bash)' >> ~/.bashrc", "Complete in every bash"}}},
{"completion zsh", {
    {"qo completion zsh > ~/.zfunc/_qo", "Complete where ~/.zfunc is in $fpath, ahead of compinit"},
    {"qo completion zsh > _qo", "The same file, to be moved to where your functions are"}}},
{"completion fish", {
    {"qo completion fish > ~/.config/fish/completions/qo.fish", "Complete in every fish"},
    {"qo completion fish | head -n 3", "Look at it first"}}},
};
// clang-format on
} // namespace

const CommandText& textOf(std::string_view command)
{
    static const CommandText none;
    const auto found = std::ranges::find(texts, command, &CommandText::command);
    return found == texts.end() ? none : *found;
}

const std::vector<Example>& firstSteps()
{
    static const std::vector<Example> steps = {
        {"qo scan ~/Music", "Take in your music, later what changed"},
        {"qo artists", "See who is there, then \"qo albums\""},
        {"qo reorg plan --rule artist-track", "How a rule would sort it; nothing moves yet"}};
    return steps;
}

const Topic* findTopic(std::string_view name)
{
    const auto found = std::ranges::find(topics(), name, &Topic::name);
    return found == topics().end() ? nullptr : &*found;
}

const char* const exitCodesText = R"(0 :: done

1 :: failed

2 :: the command line is wrong

3 :: a root folder is away, or no longer in the settings

4 :: there is no such file, rule, setting, ...

5 :: another process is changing the collection

6 :: done in part

7 :: not done without --yes, or never done

130 :: interrupted)";
} // namespace qo::cli
