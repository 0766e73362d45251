#include "Reorganize/ReorganizeRuleXmlParser.h"

#include "Reorganize/RuleFileCheck.h"
#include "Reorganize/RuleTrees.h"
#include "support/Contains.h"
#include "support/DocExample.h"
#include "support/TempDir.h"
#include "types/StringArray.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace
{
using Parser = CReorganizeRuleXmlParser;
using RulePtr = std::unique_ptr<CReorganizeRule>;

/// A whole file.
std::string root(const std::string& inside)
{
    return "<ReorganizeRule name='n'>" + inside + "</ReorganizeRule>";
}

class ReorganizeRuleXmlParser : public testing::Test
{
protected:
    RulePtr load(const std::string& content) const
    {
        dir.write("rule.xml", content);
        return RulePtr(Parser::loadReorganizeRule(dir.collPath("rule.xml")));
    }
    /// What a rule with these elements at its top is written as, which holds one text and not the
    /// other.
    void expectWritten(const std::string& elements,
                       const std::string& part,
                       const std::string& absent = "no such text") const
    {
        const RulePtr rule = load(root(elements));
        ASSERT_TRUE(rule) << elements;
        ASSERT_TRUE(Parser::saveReorganizeRule(rule.get(), dir.collPath("again.xml")));
        const std::string written = dir.read("again.xml");
        EXPECT_TRUE(contains(written, part)) << elements << "\n" << written;
        EXPECT_EQ(written.find(absent), std::string::npos) << elements << "\n" << written;
    }
    void expectBad(const std::string& elements) const
    {
        EXPECT_FALSE(load(root(elements))) << elements;
    }

    TempDir dir;
};

const std::string folder = "<Rule type='SubdirRule' keepOriginal='1' ruleDefinition=''>";
const std::string named = "<Rule type='RenameRule' renameRuleType='Music'/>";
const std::string whole = folder + named + "</Rule>";

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}
} // namespace

TEST_F(ReorganizeRuleXmlParser, AnyRuleComesBackAsItWasSaved)
{
    // All that XML, UTF-8 and the library's writer may stumble over, one by one and in a row.
    const CString all =
        u"a| |\"|'|<b>|&|#x41;|&#x|&#x41;|;|\n|\x1|é|\U0001F3B5|]]>|{|\\|--|\xFEFF|\xFFFE";
    CStringArray texts = CStringArray::split(all, u'|');
    texts.Add(texts.join(u""));
    texts.Add(CString());
    for (const CString& text : texts)
    {
        SCOPED_TRACE(qo::toUtf8(text));
        CReorganizeRule rule;
        fillWholly(rule, text);
        ASSERT_TRUE(rule.isValid());
        const CString path = dir.collPath("rule.xml");
        ASSERT_TRUE(Parser::saveReorganizeRule(&rule, path));
        const RulePtr again(Parser::loadReorganizeRule(path));
        ASSERT_TRUE(again) << dir.read("rule.xml");
        EXPECT_EQ(again->m_name, rule.m_name);
        EXPECT_EQ(again->m_prio, rule.m_prio);
        ASSERT_EQ(outline(*again), outline(rule));
    }
}

TEST_F(ReorganizeRuleXmlParser, TheDocumentShowsWhatIsWritten)
{
    const std::string example = docExample("rule-files.md", "rule");
    const RulePtr rule = load(example);
    ASSERT_TRUE(rule);
    EXPECT_EQ(rule->m_name, u"Artists with 3 tracks & more");
    EXPECT_EQ(rule->m_prio, 10);
    ASSERT_TRUE(Parser::saveReorganizeRule(rule.get(), dir.collPath("again.xml")));
    EXPECT_EQ(dir.read("again.xml"), example);
}

TEST_F(ReorganizeRuleXmlParser, SeparatorsThatAreIncompleteAreLeftOut)
{
    const auto separator = [](const std::string& attributes, const std::string& outputs)
    { return "<Rule type='AlbumTracksSeperateRule' " + attributes + ">" + outputs + "</Rule>"; };
    const auto output = [](const std::string& type, const std::string& inside)
    { return "<RuleOutput type='" + type + "'>" + inside + "</RuleOutput>"; };
    const std::string outputs =
        output("LessTracks", whole) + output("NoAlbum", whole) + output("MoreEqualTracks", whole);
    const std::string three = "trackLimit='3'";
    expectWritten(separator(three, outputs), "trackLimit=\"3\"", "Artist");
    expectWritten(separator(three, outputs + "<RuleOutput/>"), "NoAlbum", "type=\"\"");
    expectWritten(
        separator(three, outputs + output("NoArtist", whole)), "</Rule>\n    <Rule", "NoArt");
    expectWritten(separator(three, outputs + output("NoAlbum", separator(three, outputs))),
                  "NoAlbum");
    expectWritten(separator("trackLimit='many'", outputs) + whole, "SubdirRule", "AlbumTracks");
    expectBad(separator("", outputs));
    expectBad(separator(three, output("LessTracks", whole)));
    expectBad(separator(three, outputs + output("NoAlbum", separator(three, ""))));
}

TEST_F(ReorganizeRuleXmlParser, FoldersAndNamesAreReadAsFarAsTheyGo)
{
    const auto name = [](const std::string& attributes)
    { return folder + "<Rule type='RenameRule' " + attributes + "/></Rule>"; };
    expectWritten(whole, "prio=\"65535\"", "UnknownAttrib");
    expectWritten(whole, "Music\" keepOriginal=\"1\" keepOriginalIfAttribEmpty=\"0\"");
    expectWritten("<Rule/><Rule type='rule'/><Other/>text" + whole, "SubdirRule", "Other");
    expectWritten(folder + whole + named + "</Rule>", "</Rule>\n    <Rule type=\"SubdirRule\"");
    expectWritten(folder + named + "<Rule type='RenameRule' renameRuleType='music'/></Rule>",
                  "Music",
                  "music");
    expectWritten(name("renameRuleType='Music' keepOriginal='2' keepOriginalIfAttribEmpty='-1' "
                       "ruleDefinition='{ARTIST.Name}'"),
                  "keepOriginal=\"1\" keepOriginalIfAttribEmpty=\"1\" "
                  "ruleDefinition=\"{artist.name}\"");
    expectWritten("<UnknownAttrib name='{ARTIST.NAME}' defValue='a'/>"
                  "<UnknownAttrib name='{time.eu}'/>" +
                      whole,
                  "SubdirRule",
                  "UnknownAttrib");
    expectBad("");
    expectBad(folder + "</Rule>");
    expectBad(whole + "<Rule type='SubdirRule' ruleDefinition=''>" + named + "</Rule>");
    expectBad(whole + "<Rule type='SubdirRule' keepOriginal='1'>" + named + "</Rule>");
    expectBad(name("renameRuleType='Music' keepOriginal='0'"));
}

TEST_F(ReorganizeRuleXmlParser, HostileFilesAreBadFilesAtOnce)
{
    std::string manyAttributes = "<ReorganizeRule name='n' ";
    for (int i = 0; i < 100000; ++i)
        manyAttributes += "a" + std::to_string(i) + "='' ";
    const std::string cases[] = {
        "",
        "<reorganizeRule name='n'>" + whole + "</reorganizeRule>",
        "<ReorganizeRule>" + whole + "</ReorganizeRule>",
        root(whole).substr(0, root(whole).size() - 1),
        root(whole + std::string(1, '\0')),
        root(whole + "\x01"),
        root(whole + "\xED\xA0\x80"),
        root(whole) + "\xEF",
        root(whole) + "<?xml ",
        "<?xml version=\"?><!-- \"?>" + root(whole) + "-->",
        root(whole + "<a b=c>d</a>"),
        root(whole + "<a b='&#x41<c>41;'/>"),
        root(whole + "&#" + std::string(100, '1') + ";"),
        root(whole + "<![CDATA[ "),
        root(whole + "<!-- "),
        root(whole) + std::string(50 << 20, ' '),
        root(whole + repeated("<a>", 100000) + repeated("</a>", 100000)),
        repeated("<a>", 100000),
        repeated("<", 1000000),
        repeated("<!--", 250000),
        repeated("<a ", 330000),
        repeated("&#x", 330000),
        root(repeated("<a/>", qo::mostRuleFileElements)),
        manyAttributes + ">" + whole + "</ReorganizeRule>",
    };
    for (const std::string& content : cases)
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(load(content)) << content.substr(0, 200);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5))
            << content.substr(0, 200);
    }
    EXPECT_FALSE(Parser::loadReorganizeRule(dir.collPath("none.xml")));
    EXPECT_FALSE(Parser::loadReorganizeRule(dir.collPath()));
}

TEST_F(ReorganizeRuleXmlParser, UnusualFilesAreReadAndTheBiggestTakeNoTime)
{
    const std::string cases[] = {
        "\xEF\xBB\xBF<?xml version='1.0' encoding=\"ISO-8859-1\"?>\r\n" + root(whole),
        "<!DOCTYPE ReorganizeRule><?note a='?><!-- <a> -->" + root(whole) + "<!-- <b> -->",
        root("<![CDATA[<a>]]>" + whole + "<a b='<c d=\">'/>"),
        root(whole + repeated("<a>", qo::deepestRuleFile - 1) +
             repeated("</a>", qo::deepestRuleFile - 1)),
        // Lookups walk over the tree, and definitions are split at every attribute.
        root(folder + repeated(named, 5000) + "</Rule>" +
             repeated(folder + named + "</Rule>", 2400)),
        root("<Rule type='SubdirRule' keepOriginal='0' ruleDefinition='" +
             repeated("{ALBUM.name}{artist.name}{date-end.int", 25000) + "'>" + named + "</Rule>"),
    };
    for (const std::string& content : cases)
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(load(content)) << content.substr(0, 200);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    }
    const RulePtr named =
        load("<ReorganizeRule name='&#xe9;&amp;\xC3\xA9' prio='x'>" + whole + "</ReorganizeRule>");
    ASSERT_TRUE(named);
    EXPECT_EQ(named->m_name, u"é&é");
    EXPECT_EQ(named->m_prio, CReorganizeRule::defaultPrio);
}

TEST_F(ReorganizeRuleXmlParser, WhatCannotBeWrittenLeavesTheFile)
{
    const RulePtr rule = load(root(whole));
    ASSERT_TRUE(rule);
    EXPECT_FALSE(Parser::saveReorganizeRule(rule.get(), dir.collPath("none/rule.xml")));
    for (int i = 0; i < qo::mostRuleFileElements; ++i)
        rule->addSubdirRule(new CSubdirRule, nullptr);
    EXPECT_FALSE(Parser::saveReorganizeRule(rule.get(), dir.collPath("rule.xml")))
        << "it could not be read again";
    EXPECT_EQ(dir.read("rule.xml"), root(whole));
}
