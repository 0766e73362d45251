#include "host/cli/QoCommand.h"

namespace
{
/// A frame of ID3v2.3 that says of its text that it is Latin-1.
std::string latin1Frame(const std::string& id, const std::string& bytes)
{
    return id + std::string(3, '\0') + static_cast<char>(bytes.size() + 1) + std::string(3, '\0') +
           bytes;
}

/// Puts a tag of such frames ahead of a sound.
std::string addLatin1(const QoCommand& qo,
                      const std::string& relative,
                      const std::string& artist,
                      const std::string& album,
                      const std::string& title)
{
    const std::string path = qo.addSound(relative);
    const std::string frames =
        latin1Frame("TPE1", artist) + latin1Frame("TALB", album) + latin1Frame("TIT2", title);
    qo.dir.write("music/" + relative,
                 std::string("ID3\3\0\0\0\0\0", 9) + static_cast<char>(frames.size()) + frames +
                     qo.dir.read("music/" + relative));
    return path;
}

std::string edited(const QoCommand& qo, const std::string& file, const std::string& field)
{
    return qo.run({"tag", "show", "--json", file})
        .json()
        .at(0)["fields"][field]
        .value("edited", "");
}

constexpr const char* kino = "\xca\xe8\xed\xee";
constexpr const char* blood = "\xc3\xf0\xf3\xef\xef\xe0\x20\xea\xf0\xee\xe2\xe8";
constexpr const char* war = "\xc2\xee\xe9\xed\xe0";
constexpr const char* utada = "\x89\x46\x91\xbd\x93\x63\x83\x71\x83\x4a\x83\x8b";
constexpr const char* remember = "\x82\xa0\x82\xc8\x82\xbd\x82\xf0\x96\x59\x82\xea\x82\xc8\x82\xa2";
} // namespace

TEST(EncodingCommand, MisreadTextsOfAnAlbumBecomeEditsAndLatinWordsStay)
{
    const QoCommand qo;
    const std::string one = addLatin1(qo, "ru/1.mp3", kino, blood, blood);
    // Too little to go by, were it not for its neighbour.
    const std::string two = addLatin1(qo, "ru/2.mp3", "Mot\xf6rhead", blood, war);
    const std::string three = addLatin1(qo, "jp/1.mp3", utada, remember, "First Love");
    addLatin1(qo, "is/1.mp3", "Bj\xf6rk Gu\xf0mundsd\xf3ttir", "D\xe9\xe0 vu", "\xc6\xd8\xc5");
    ASSERT_EQ(qo.scan().code, 0);
    const std::string before = qo.dir.read("music/ru/1.mp3");
    ASSERT_EQ(qo.run({"tag", "set", one, "artist=mine"}).code, 0);

    EXPECT_EQ(qo.run({"tag", "encoding", "--dry-run", "--json", qo.music()}).json().size(), 6U);
    EXPECT_EQ(edited(qo, one, "title"), "");
    qo.expect({"tag", "encoding", qo.music()}, 0, "6 values of 3 files edited");
    EXPECT_EQ(edited(qo, one, "title"), "Группа крови");
    EXPECT_EQ(edited(qo, one, "artist"), "mine");
    EXPECT_EQ(edited(qo, two, "title"), "Война");
    EXPECT_EQ(edited(qo, two, "artist"), "");
    EXPECT_EQ(edited(qo, three, "artist"), "宇多田ヒカル");
    EXPECT_EQ(qo.dir.read("music/ru/1.mp3"), before);
    ASSERT_EQ(qo.run({"tag", "write", "--all", "--yes"}).code, 0);
    qo.expect({"tag", "encoding", qo.music()}, 0, "no text seems to be misread");
    EXPECT_EQ(qo.run({"tag", "show", "--json", two}).json().at(0)["fields"]["album"]["file"],
              "Группа крови");
}

TEST(EncodingCommand, AnEncodingThatIsNamedDecidesWhatIsInDoubt)
{
    const QoCommand qo;
    const std::string file = addLatin1(qo, "1.mp3", "\xd6\xdc\xbd\xdc\xc2\xd7", "Album", "Title");
    qo.expect({"tag", "encoding", file}, 0, "may be misread, --from names its encoding: " + file);
    qo.expect({"tag", "encoding", file, "--from", "none"}, 2, "there is no encoding \"none\"");
    qo.expect({"tag", "encoding", file, "--from", "GB18030"}, 0, "1 value of 1 file edited");
    EXPECT_EQ(edited(qo, file, "artist"), "周杰伦");
}
