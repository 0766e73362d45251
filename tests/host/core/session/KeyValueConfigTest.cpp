#include "core/session/KeyValueConfig.h"

#include "core/base/HostError.h"
#include "core/session/SettingText.h"
#include "support/Contains.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace qo::host;

namespace
{
const CString hostile[] = {u"",
                           u"plain",
                           u" blanks at the ends \t",
                           u"  two  ",
                           u"a=b==c",
                           u"back\\slash \\n \\",
                           u"line\nfeed\r\nand more",
                           u"[section]",
                           u"# remark",
                           u"\x01\x1f\x7f",
                           u"\xFEFFmark\xFEFF",
                           u"\xD83C\xDFB5 \x6771\x4EAC",
                           u"half \xD83C",
                           u"\xDFB5\xD83C half twice"};
const std::string first = "# Settings. The last line of a whole file is \"# end\".\n";
const std::string last = "# end\n";
} // namespace

TEST(SettingText, ZeroSurvivesTheRoundTripAndForeignEscapesAreRefused)
{
    const CString withZero(u"a\0b", 3);
    CString back;
    ASSERT_TRUE(unescapeSetting(escapeSetting(withZero), back));
    EXPECT_EQ(back, withZero);
    for (const char* line : {"\\", "\\x", "\\u12", "\\u12g4", "\xff", "a\xc3"})
    {
        CString text;
        EXPECT_FALSE(unescapeSetting(line, text)) << line;
    }
}

TEST(KeyValueConfig, EveryNameAndValueSurvivesTheFile)
{
    const TempDir dir;
    const CString file = dir.collPath("settings");
    {
        KeyValueConfig config(file);
        for (const CString& name : hostile)
        {
            if (name.IsEmpty())
                continue;
            auto* const section = config.addSection(KVConfig::ordinarySection, name);
            for (const CString& value : hostile)
                config.setValue(config.addKey(section, value + u"x", u"default"), value);
        }
        config.save();
    }
    const KeyValueConfig config(file);
    EXPECT_EQ(config.complaint(), "");
    const auto entries = config.entries();
    ASSERT_EQ(entries.size(), (std::size(hostile) - 1) * std::size(hostile));
    for (const auto& entry : entries)
        EXPECT_EQ(entry.value + u"x", entry.key);
    EXPECT_EQ(std::filesystem::status(dir.path("settings")).permissions() &
                  std::filesystem::perms(0777),
              std::filesystem::perms(0600));
}

TEST(KeyValueConfig, StoredValueWinsOverTheDefault)
{
    const TempDir dir;
    dir.write(
        "settings",
        "[Common]\r\nLanguage = de\r\n\r\n# remark\nUnknown=1\n[QO_Settings]\nMaxFilesBurn=\n");
    KeyValueConfig config(dir.collPath("settings"));
    auto* const common = config.addSection(KVConfig::ordinarySection, u"Common");
    EXPECT_EQ(config.getValue(config.addKey(common, u"Language", u"en")), u"de");
    EXPECT_EQ(config.getValue(config.addKey(common, u"TraceLevel", u"None")), u"None");
    auto* const section = config.addSection(KVConfig::ordinarySection, u"QO_Settings");
    EXPECT_EQ(config.getValue(config.addKey(section, u"MaxFilesBurn", u"10000")), u"");
    EXPECT_EQ(config.addSection(KVConfig::ordinarySection, u"Common"), common);
}

TEST(KeyValueConfig, FileIsWrittenOnlyForAChangeAndKeepsWhatNobodyDeclared)
{
    const TempDir dir;
    const std::string text = "[Other]\nForeign=x\n[Common]\nLanguage=en\n";
    dir.write("elsewhere", "# remark\n" + text);
    std::filesystem::create_symlink("elsewhere", dir.path("settings"));
    KeyValueConfig config(dir.collPath("settings"));
    auto* const key =
        config.addKey(config.addSection(KVConfig::ordinarySection, u"Common"), u"Language", u"en");
    config.setValue(key, u"en");
    config.save();
    EXPECT_EQ(dir.read("settings"), "# remark\n" + text);
    config.setValue(key, u"de");
    config.setValue(key, u"en");
    config.save();
    const std::string saved = first + "# remark\n" + text + last;
    EXPECT_EQ(dir.read("settings"), saved);
    EXPECT_EQ(dir.read("elsewhere"), saved) << "a link stays one";
}

TEST(KeyValueConfig, RemarksStayWhereTheyWere)
{
    const TempDir dir;
    const std::string text = "\n# of the section\n[Common]\n  # of the key \xff\nLanguage=en\n\n"
                             "Other=1\n# of none\n";
    dir.write("settings", text);
    KeyValueConfig config(dir.collPath("settings"));
    EXPECT_FALSE(config.mayLackSettings());
    auto* const section = config.addSection(KVConfig::ordinarySection, u"Common");
    config.setValue(config.addKey(section, u"Language", u"en"), u"de");
    config.save();
    std::string expected = text;
    expected.replace(expected.find("=en"), 3, "=de");
    EXPECT_EQ(dir.read("settings"), first + expected + last);
}

TEST(KeyValueConfig, FileThatWasCutShortIsNoticedAndHalfALineDoesNotCount)
{
    const TempDir dir;
    const std::string text =
        first + "[QO_Settings]\nMusicCollectionDir0=C:\\\\long\nLanguage=en\n" + last;
    for (std::size_t size = 1; size <= text.size(); ++size)
    {
        dir.write("settings", text.substr(0, size));
        const KeyValueConfig config(dir.collPath("settings"), true);
        const bool isWhole = size + 1 >= text.size();
        EXPECT_EQ(config.mayLackSettings(), !isWhole) << size;
        for (const auto& entry : config.entries())
            EXPECT_TRUE(entry.value == u"C:\\long" || entry.value == u"en") << size;
    }
}

TEST(KeyValueConfig, FileThatCannotBeReadIsNotReplaced)
{
    const TempDir dir;
    dir.makeFolder("settings");
    EXPECT_THROW(KeyValueConfig(dir.collPath("settings")), HostError);
    EXPECT_TRUE(std::filesystem::is_directory(dir.path("settings")));
}

TEST(KeyValueConfig, ReadOnlyStoreNeverSaves)
{
    const TempDir dir;
    {
        KeyValueConfig config(dir.collPath("settings"), true);
        config.setValue(config.addKey(config.addSection(1, u"Common"), u"Vendor", u""), u"x");
        config.save();
    }
    EXPECT_FALSE(std::filesystem::exists(dir.path("settings")));
}
