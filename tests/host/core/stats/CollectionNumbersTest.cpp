#include "core/stats/CollectionNumbers.h"

#include "host/core/LoadedCollection.h"

#include <gtest/gtest.h>

using namespace qo::host;

TEST(CollectionNumbers, CountFilesByWhatTheyAre)
{
    const LoadedCollection files;
    files.addSound("music/1.mp3");
    files.addSound("music/2.mp3");
    files.addSound("music/3.flac", "sound.flac");
    files.dir.write("music/4.txt", "x");
    files.load();
    files.run(
        [&]
        {
            QoFileDbItemArray items;
            CQoCollection::m_ownCollection.copyFiles(items);
            const CString artists[] = {u"ABBA", u"abba", u"<Zoo> & \x1b"};
            const CString years[] = {u"1969", u"1960-05", u"98"};
            for (int i = 0; i < 3; ++i)
            {
                items[i]->artist = artists[i];
                items[i]->year = years[i];
                items[i]->bitrate = 127 + i;
                items[i]->duration = 60000;
            }
            items[0]->title = u"x";
            const CollectionNumbers numbers(items);
            std::string text;
            for (const CollectionNumbers::Table& table : numbers.tables())
            {
                if (std::string(table.key) == "months")
                    continue;
                text += std::string(table.key) + ":";
                for (const CollectionNumbers::Row& row : table.rows)
                    text += " " + (row.name.empty() ? "-" : row.name) + "=" +
                            std::to_string(row.sum.files);
                text += "\n";
            }
            EXPECT_EQ(text,
                      "kinds: music=3 text=1\n"
                      "formats: mp3=2 flac=1 txt=1\n"
                      "decades: 1960s=2 -=1\n"
                      "genres: -=3\n"
                      "bitrates: 64-127=1 128-191=2\n"
                      "artists: ABBA=2 <Zoo> & \x1b=1\n");
            EXPECT_EQ(numbers.all().files, 4);
            EXPECT_EQ(numbers.all().duration, 180000);
            EXPECT_EQ(numbers.music(), 3);
            EXPECT_EQ(numbers.untagged(), 2);
            EXPECT_EQ(numbers.companions(), 1);
            EXPECT_EQ(numbers.unplaced(), 1);
            const std::string svg = svgOf(numbers, 10);
            EXPECT_NE(svg.find("&lt;Zoo&gt; &amp;  "), std::string::npos);
            EXPECT_EQ(svg.find('\x1b'), std::string::npos);
        });
}
