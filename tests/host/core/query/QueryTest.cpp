#include "core/query/Query.h"

#include "core/query/FoldedText.h"
#include "core/query/QueryRange.h"
#include "core/query/RecordOrder.h"
#include "host/core/LoadedCollection.h"
#include "support/DocExample.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace qo::host;

namespace
{
constexpr const char* sound = "sound.mp3";

/// The cells of each line of a block of docs/queries.md.
std::vector<std::vector<std::string>> rowsOf(const std::string& block)
{
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : docExampleLines("queries.md", block))
    {
        std::vector<std::string>& cells = rows.emplace_back();
        for (std::size_t start = 0; start <= line.size();)
        {
            const std::size_t end = std::min(line.find(" | ", start), line.size());
            cells.push_back(line.substr(start, end - start));
            start = end + 3;
        }
    }
    return rows;
}

class QueryTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        setenv("TZ", "UTC", 1);
        tzset();
        collection = new LoadedCollection;
        for (const auto& row : rowsOf("library"))
        {
            const std::string file = "music/" + row.at(1);
            if (file.ends_with("txt"))
                collection->dir.write(file, "x");
            else
                collection->addSound(file, file.ends_with("flac") ? "sound.flac" : sound);
        }
        collection->load();
        collection->run(
            []
            {
                for (const auto& row : rowsOf("library"))
                {
                    for (std::size_t i = 2; i < row.size(); ++i)
                    {
                        const std::size_t equals = row[i].find('=');
                        memberOf(*recordOf(row[1]), row[i].substr(0, equals)) =
                            qo::fromUtf8(row[i].substr(equals + 1));
                    }
                }
            });
    }
    static void TearDownTestSuite()
    {
        delete collection;
        collection = nullptr;
    }

    static QoFileDbItemPtr recordOf(const std::string& name)
    {
        const auto file =
            CQoCollection::m_ownCollection.getFileByPath(collection->dir.collPath("music/" + name));
        return file->getDbItem();
    }
    static CString& memberOf(QoFileDbItem& item, const std::string& name)
    {
        return name == "artist"  ? item.artist
               : name == "album" ? item.album
               : name == "title" ? item.title
               : name == "genre" ? item.genre
               : name == "year"  ? item.year
                                 : item.trackNumber;
    }
    /// The numbers of the files that it finds: "1 2".
    static std::string found(const QueryRequest& request, const std::string& order = {})
    {
        return collection->run(
            [&]
            {
                QoFileDbItemArray files = Query(request).files();
                RecordOrder(order).sort(files);
                std::string text;
                for (const QoFileDbItemPtr& item : files)
                {
                    const std::string name =
                        qo::toUtf8(item->path).substr(qo::toUtf8(item->path).rfind('\\') + 1);
                    text += (text.empty() ? "" : " ") +
                            (name[0] == '0' ? name.substr(1, 1) : name.substr(0, 1));
                }
                return text;
            });
    }

    static LoadedCollection* collection;
};

LoadedCollection* QueryTest::collection = nullptr;

std::string foldedUtf8(const std::string& text)
{
    return qo::toUtf8(folded(qo::fromUtf8(text).view()));
}
} // namespace

TEST(FoldedText, EvensOutCaseAccentsAndFormsOfLetters)
{
    const std::pair<const char*, const char*> rows[] = {{"BJÖRK", "bjork"},
                                                        {"Bjo\u0308rk", "bjork"},
                                                        {"Straße", "strasse"},
                                                        {"Łódź Ærø", "lodz aero"},
                                                        {"Ёлка Й", "елка и"},
                                                        {"Ωμέγα ς", "ωμεγα σ"},
                                                        {"It’s “it” – …", "it's \"it\" - ..."},
                                                        {"ﬁ Ⅷ １２", "fi viii 12"},
                                                        {"Ｉİı", "iii"},
                                                        {"हिन्दी", "हिन्दी"},
                                                        {"🎵x", "🎵x"}};
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(foldedUtf8(text), expected) << text;
    // Voiced sounds are letters of their own, however they are written.
    EXPECT_NE(foldedUtf8("が"), foldedUtf8("か"));
    EXPECT_EQ(foldedUtf8("が"), foldedUtf8("か\u3099"));
}

TEST_F(QueryTest, WordsFindWhatTheySay)
{
    const std::string b = collection->dir.path("music/b");
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{}, "1 2 3 4 5 6 n"},
        {{"BJÖRK", "second"}, "2"},
        {{"вАНДА"}, "6"},
        {{"music/b"}, "4 5 6 n"},
        {{"title:live"}, "1 3"},
        {{"^live", "kind:music"}, "2 4 5 6"},
        {{"album:\"best, of\""}, "4"},
        {{"artist:bjork", ",", "genre:acid"}, "1 2 4"},
        {{"track:1"}, "1"},
        {{"path:/b/0"}, "4 5 6"},
        {{"::^Second$"}, "2"},
        {{"::^Sec.*d$"}, "2"},
        {{"bjork", "^::^Sec.*d$"}, "1"},
        {{"bjork ::^Sec.*d$"}, "2"},
        {{"^bjork title::.*o"}, "5"},
        {{"\"b*\""}, ""},
        {{"untagged:no", "kind:music"}, "1 2 3 4 6"},
        {{"length:0:00"}, "1 2 3 4 5 6"},
        {{"changed:..-1d"}, ""},
        {{b}, "4 5 6 n"},
        {{b, "artist:vanda", ",", "format:txt"}, "n"},
        {{b + "/0*"}, "4 5 6"},
        {{collection->dir.path("music/*/0[12]*")}, "1 2"},
        {{"^" + b}, "1 2 3"},
        {{b + "/04.mp3", b + "/05.mp3"}, "4 5"}};
    for (const auto& [words, expected] : rows)
        EXPECT_EQ(found({words}), expected) << testing::PrintToString(words);
    // Signs of the current folder's name are no pattern.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directory(collection->dir.path("music/[ab]"));
    std::filesystem::current_path(collection->dir.path("music/[ab]"));
    EXPECT_EQ(found({{"*"}}), "");
    EXPECT_EQ(found({{"../a/*"}}), "1 2 3");
    std::filesystem::current_path(before);
    const auto examples = rowsOf("queries");
    EXPECT_EQ(examples.size(), 20U);
    for (const auto& row : examples)
        EXPECT_EQ(found({{row.at(0)}}), row.at(1)) << row[0];
    EXPECT_EQ(found({{}, false, "bjÖrk"}), "1") << "names of options are exact but for case";
    EXPECT_EQ(found({{}, false, ""}), "5") << "only music";
    EXPECT_EQ(found({{"1970"}, false, {}, {}, ""}), "2");
}

TEST_F(QueryTest, OrdersKeepWhatIsEqualAndPutWhatIsMissingLast)
{
    const QueryRequest music{{"kind:music"}};
    const std::pair<const char*, const char*> rows[] = {{"", "1 2 3 4 5 6"},
                                                        {"year", "1 5 2 3 4 6"},
                                                        {"year-", "2 1 5 3 4 6"},
                                                        {"track", "1 2 5 3 4 6"},
                                                        {"artist,year-", "2 1 4 3 6 5"},
                                                        {"year,track-", "5 1 2 3 4 6"},
                                                        {"name-", "6 5 4 3 2 1"}};
    for (const auto& [order, expected] : rows)
        EXPECT_EQ(found(music, order), expected) << order;
}

TEST_F(QueryTest, WhatCannotBeReadSaysWhereItWentWrong)
{
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"xyzzyq:x"}, "\"xyzzyq\" is no field of a query; there are artist, albumartist, album"},
        {{"artst:x"}, "did you mean \"artist\"?"},
        {{"re:mix"}, "goes in quotes"},
        {{"year:19x0"}, "in \"year:19x0\", \"19x0\" cannot be read"},
        {{"bjork year:..x"}, "\"x\" cannot be read"},
        {{"length:3:99"}, "\"3:99\" cannot be read; write 3:51"},
        {{"size:10X.."}, "write 10M.."},
        {{"added:2024-02-30"}, "cannot be read"},
        {{"added:-7q.."}, "cannot be read"},
        {{"year:1970..1960"}, "the range ends before it begins"},
        {{"artist:\"x"}, "the quote before \"x\" is not closed"},
        {{"title::(["}, "the regular expression cannot be read at character"},
        {{"year::19", "size::1"}, "has no text for a regular expression"},
        {{"marked:1"}, "there is nothing to compare"},
        {{"kind:song"}, "there is no such kind"},
        {{",", "x"}, "nothing before a comma"},
        {{"x", ","}, "nothing after the last comma"},
        {{""}, "an empty text names nothing"},
        {{"   "}, "an empty text names nothing"},
        {{"\"\""}, "there is no text to look for"},
        {{"^"}, "there is no text to look for"},
        {{"artist:\u0301"}, "there is no text to look for"},
        {{"^::"}, "the regular expression is empty"},
        {{"size:nan"}, "cannot be read"},
        {{"\xff"}, "is not UTF-8"}};
    for (const auto& [words, part] : rows)
    {
        const std::string message =
            collection->messageOf([&, &words = words] { Query query({words}); }, ExitCode::usage);
        EXPECT_NE(message.find(part), std::string::npos) << message;
    }
    EXPECT_NE(collection->messageOf([] { Query query({{"/nowhere/x"}}); }, ExitCode::notFound)
                  .find("/nowhere/x is not there"),
              std::string::npos);
    // A hostile expression ends instead of running for hours.
    collection->run([] { recordOf("b/05.mp3")->title = CString(u'a', 5000); });
    EXPECT_NE(collection
                  ->messageOf([] { (void)Query({{"title::(a|a)*(a|a)*(a|a)*(a|a)*b"}}).files(); },
                              ExitCode::failed)
                  .find("takes too long on"),
              std::string::npos);
    collection->run([] { recordOf("b/05.mp3")->title = u"Alone"; });
}

TEST(QueryRange, SingleValuesStandForAllThatIsWrittenSo)
{
    setenv("TZ", "UTC", 1);
    tzset();
    constexpr std::int64_t second = 10'000'000;
    const auto at = [](std::int64_t unixSeconds)
    { return qo::toTicks(qo::fromUnixTime(unixSeconds, 0)); };
    constexpr std::int64_t may2024 = 1714521600;
    constexpr std::int64_t june2024 = 1717200000;
    const std::int64_t now = at(june2024);
    struct Row
    {
        QueryKind kind;
        const char* text;
        std::int64_t first;
        std::int64_t last;
    };
    const std::int64_t none = QueryRange().first;
    const std::int64_t all = QueryRange().last;
    const Row rows[] = {{QueryKind::length, "3:51", 231000, 231999},
                        {QueryKind::length, "..1:00:00", none, 3600999},
                        {QueryKind::length, "90..", 90000, all},
                        {QueryKind::size, "10M", 10 << 20, (11 << 20) - 1},
                        {QueryKind::size, "..1.5K", none, 1536},
                        {QueryKind::size, "2KiB..3kb", 2048, 3072},
                        {QueryKind::number, "1960..1969", 1960, 1969},
                        {QueryKind::time, "2024-05", at(may2024), at(june2024) - 1},
                        {QueryKind::time, "..2024-05-31", none, at(june2024) - 1},
                        {QueryKind::time, "2024-05-31T23:59", at(june2024 - 60), at(june2024) - 1},
                        {QueryKind::time, "-1d", now - 86400 * second, now},
                        {QueryKind::time, "-1m..-1d", at(may2024), now - 86400 * second},
                        {QueryKind::time, "-99999y..", 0, all},
                        {QueryKind::time, "..-2w", none, now - 14 * 86400 * second}};
    for (const Row& row : rows)
    {
        const QueryRange range = parseRange(row.kind, row.text, row.text, now);
        EXPECT_EQ(range.first, row.first) << row.text;
        EXPECT_EQ(range.last, row.last) << row.text;
    }
}
