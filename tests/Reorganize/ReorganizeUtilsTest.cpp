#include "Reorganize/ReorganizeUtils.h"

#include "Reorganize/RuleTrees.h"
#include "common/Paths.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <tuple>
#include <utility>

namespace
{
using Utils = CReorganizeUtils;

/// The store over a data folder of its own.
class ReorganizeUtils : public testing::Test
{
protected:
    ReorganizeUtils()
    {
        qo::specialFolders().setBase(dir.collPath());
        Utils::init();
        folder = qo::toSystemPath(CQoPaths::getQoDataDir());
    }
    ~ReorganizeUtils() override
    {
        Utils::destroy();
        EXPECT_FALSE(Utils::getFirstRulePos());
        qo::specialFolders().setBase(CString());
    }

    /// A valid rule of that display name.
    static void fill(CReorganizeRule& rule, const char16_t* name, int prio = 7)
    {
        rule.m_name = name;
        rule.m_prio = prio;
        auto* const subdir = rule.addSubdirRule(new CSubdirRule, nullptr);
        rule.addRenameRule(new CRenameRule(CRenameRule::Music), subdir);
    }
    /// Saves such a rule and returns its new id.
    static CString save(const char16_t* id, const char16_t* name, const char16_t* display)
    {
        CReorganizeRule rule;
        fill(rule, display);
        CString newId;
        EXPECT_TRUE(Utils::saveReorganizeRule(id, &rule, name, newId));
        return newId;
    }
    std::string file(const std::string& name) const { return folder + "/" + name; }
    /// The names of all files, and the ids of all rules but the built-in ones.
    std::set<std::string> files() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.insert(entry.path().filename());
        return names;
    }
    static std::set<std::string> ids()
    {
        std::set<std::string> all;
        for (POSITION position = Utils::getFirstRulePos(); position;)
        {
            CString id;
            const CReorganizeRule* const rule = Utils::getNextRule(position, id);
            EXPECT_EQ(rule, Utils::getRule(id));
            if (!Utils::isReadOnlyRule(id))
                all.insert(qo::toUtf8(id));
        }
        return all;
    }

    using Names = std::set<std::string>;
    TempDir dir;
    std::string folder;
};

/// Names that overlap, are equal, or are missing.
CString trickyName(const CNSAtom* atom)
{
    static constexpr const char16_t* names[] = {
        u"ab", u"bc", u"CAB", u"aa", u"", u"ab", u"b", u"ccc", u"12", u"2"};
    return atom->m_type < 12 ? names[atom->m_type - 2] : u"";
}
} // namespace

TEST_F(ReorganizeUtils, AttributesHaveNames)
{
    EXPECT_EQ(Utils::getAttributeName(static_cast<CNSAtom::EType>(99)), u"{INVALID ATTRIB}");
    EXPECT_EQ(Utils::getAttributeName(CNSAtom::FixedString), u"{INVALID ATTRIB}");
    EXPECT_EQ(Utils::getAttributeType(u"{ARTIST.NAME}"), CNSAtom::FixedString);
    for (int i = 1; i < CNSAtom::getAtomTypesCount(); ++i)
    {
        const CNSAtom::EType type = CNSAtom::getAtomType(i);
        EXPECT_EQ(Utils::getAttributeType(Utils::getAttributeName(type)), type);
        CNSNamePattern pattern;
        pattern.setAtom(type, u"x");
        EXPECT_EQ(Utils::patternHasVelmoraAtoms(pattern), type >= CNSAtom::Source);
    }
}

TEST_F(ReorganizeUtils, DefinitionsAreSplitAtAttributes)
{
    const std::tuple<const char16_t*, const char16_t*, const char16_t*> cases[] = {
        {u"", u"", u""},
        {u"{artist.name} - {track.name}", u"[Artist] - [Track]", u"{artist.name} - {track.name}"},
        {u"{ARTIST.Name}{year}", u"[Artist]{year}", u"{artist.name}{year}"},
        {u"{{artist.name}}{YEAR.NAME", u"{[Artist]}{YEAR.NAME", u"{{artist.name}}{YEAR.NAME"},
        {u"{time-end.us}{time.us}", u"TimeEndHMUSTimeStartHMUS", u"{time-end.us}{time.us}"},
    };
    for (const auto& [text, split, written] : cases)
    {
        CNSNamePattern pattern;
        pattern.setAtom(CNSAtom::Genre, u"is replaced");
        EXPECT_TRUE(Utils::parseAttributesString(text, &pattern));
        EXPECT_EQ(pattern.toString(false), split);
        EXPECT_EQ(Utils::getAttributesString(&pattern), written);
    }
}

TEST_F(ReorganizeUtils, NamesAreTakenTypeByTypeEachAtItsFirstPlace)
{
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"abc", u"[Artist]c"},
        {u"aBbc ab", u"[Artist][Album] [Genre]"},
        {u"cabc", u"c[Artist]c"},
        {u"bcab", u"[Album][Artist]"},
        {u"aaab1212", u"[TrackNumber][Artist]TimeStartHMSEU1TimeStartHMUS"},
        {u"bbcccc2", u"[Source][Album]TimeStartHMEUTimeStartHMUS"}};
    for (const auto& [text, split] : cases)
    {
        CNSNamePattern pattern;
        Utils::parseAttributesString(text, &pattern, trickyName);
        EXPECT_EQ(pattern.toString(false), split) << qo::toUtf8(CString(text));
    }
}

TEST_F(ReorganizeUtils, TypedDefinitionsAreCleaned)
{
    EXPECT_EQ(Utils::makeProperSubdirRuleAttribString(u"  music\\\\a?b  "), u"music\\ab\\");
    for (const char16_t* const none : {u"", u"\\", u"\\\\", u"\\\\\\\\\\", u" . "})
        EXPECT_EQ(Utils::makeProperSubdirRuleAttribString(none), u"\\");
    EXPECT_EQ(Utils::makeProperSubdirRuleAttribString(u"{album.name}\\"), u"{album.name}\\");
    EXPECT_EQ(Utils::makeProperRenameRuleAttribString(u"a/b."), u"ab");
}

TEST_F(ReorganizeUtils, WhatARuleIsGoodForGoesByItsNodes)
{
    const auto separator = [](int type) -> CSeperateRule*
    {
        if (type == CSeperateRule::Jingle)
            return new CJingleSeperateRule;
        if (type == CSeperateRule::ArtistTracks)
            return new CArtistTracksSeperateRule(1);
        return new CAlbumTracksSeperateRule(1);
    };
    constexpr int none = 0;
    const std::tuple<const char16_t*, bool, int, int> cases[] = {
        {u"{artist.name}", false, none, 7},
        {u"{artist.name}", false, CSeperateRule::Jingle, 7},
        {u"{artist.name}", false, CSeperateRule::ArtistTracks, 6},
        {u"{artist.name}", true, CSeperateRule::AlbumTracks, 4},
        {u"{date.eu}", false, none, 1},
        {u"{date.eu}", false, CSeperateRule::AlbumTracks, 0},
        {u"{date.eu}", true, none, 0},
        {u"{source.name}", false, none, 1},
    };
    for (const auto& [musicName, keepsFolder, separatorType, type] : cases)
    {
        SCOPED_TRACE(qo::toUtf8(CString(musicName)) + std::to_string(separatorType));
        CReorganizeRule rule;
        auto* const subdir = rule.addSubdirRule(new CSubdirRule, nullptr);
        subdir->m_rule->keepOriginal = keepsFolder;
        auto* const music = rule.addRenameRule(new CRenameRule(CRenameRule::Music), subdir);
        Utils::parseAttributesString(musicName, &music->m_rule->m_pattern);
        auto* const picture = rule.addRenameRule(new CRenameRule(CRenameRule::Picture), subdir);
        picture->m_rule->m_pattern.setAtom(CNSAtom::DateEndEU, u"");
        if (separatorType != none)
            rule.addSeperateRule(separator(separatorType), nullptr);
        EXPECT_EQ(Utils::getReorganizeRuleSorterType(&rule), type) << keepsFolder;
        EXPECT_EQ(Utils::isSorterReorganizeRule(&rule), (type & 4) != 0);
        EXPECT_EQ(Utils::isImporterReorganizeRule(&rule), (type & 2) != 0);
        EXPECT_EQ(Utils::isMusicImporterReorganizeRule(&rule), (type & 1) != 0);
    }
}

TEST_F(ReorganizeUtils, TwoRulesAreBuiltIn)
{
    EXPECT_TRUE(ids().empty());
    EXPECT_EQ(outline(*Utils::getRule(Utils::VelmoraArtistTrackRuleID)),
              u"\n0: keepOriginal=0, pattern=[FixedString]:velmora\\ "
              u"\n1: type = Music, keepOriginal=0, keepOriginalIfAttribEmpty=1, "
              u"pattern=[Artist]: [FixedString]: -  [Track]: "
              u"\n1: type = Lyrics, keepOriginal=1, keepOriginalIfAttribEmpty=0, pattern="
              u"\n1: type = Picture, keepOriginal=1, keepOriginalIfAttribEmpty=0, pattern=");
    const CReorganizeRule& rule = *Utils::getRule(Utils::ArtistTrackRuleID);
    EXPECT_TRUE(rule.isValid());
    EXPECT_EQ(rule.m_prio, 0);
    EXPECT_EQ(Utils::getRuleDisplayName(Utils::ArtistTrackRuleID), u"");
    EXPECT_NE(outline(rule).Find(u"[FixedString]:\\ "), -1);
    EXPECT_FALSE(Utils::deleteRule(Utils::ArtistTrackRuleID));
    EXPECT_TRUE(Utils::getRule(Utils::ArtistTrackRuleID));
}

TEST_F(ReorganizeUtils, FilesAreNamedAfterRules)
{
    dir.write("x", "");
    for (const char* const name : {"mix.xml", "mix1.xml"})
        std::ofstream(file(name)) << "";
    const auto newPath = [](const char16_t* name, bool unique)
    { return Utils::getReorgRuleID(Utils::getNewReorgRulePath(name, unique)); };
    EXPECT_EQ(newPath(u"mix", true), u"mix2");
    EXPECT_EQ(newPath(u"mix", false), u"mix");
    EXPECT_EQ(newPath(u"a:b", true), u"a_b");
    EXPECT_EQ(newPath(u"v1.2", true), u"v1.2");
    EXPECT_EQ(newPath(u"..", true), u"._");
    EXPECT_EQ(qo::toSystemPath(Utils::getReorgRulePattern()), file("*.xml"));
    for (const char16_t* const id : {u"", u".", u"..", u"../a", u"a\\b", u"/etc/a", u":a"})
        EXPECT_EQ(Utils::makeReorgRulePath(id), u"");
    EXPECT_EQ(Utils::getNewReorgRulePath(u"", true), u"");
}

TEST_F(ReorganizeUtils, SavedRulesAreThereAfterARestart)
{
    EXPECT_EQ(save(u"", u"mix", u"The Mix"), u"mix");
    EXPECT_EQ(save(u"", u"mix", u"Another"), u"mix1");
    EXPECT_EQ(Utils::getRule(u"mix")->m_prio, CReorganizeRule::defaultPrio);
    EXPECT_EQ(save(u"mix", u"mix", u"Changed"), u"mix");
    EXPECT_EQ(files(), (Names{"mix.xml", "mix1.xml"}));
    EXPECT_EQ(Utils::compareRules(u"mix", u"mix1"), 0);
    EXPECT_EQ(Utils::compareRules(u"mix", Utils::ArtistTrackRuleID), -1);
    EXPECT_EQ(Utils::compareRules(Utils::ArtistTrackRuleID, u"mix"), 1);
    EXPECT_EQ(Utils::compareRules(u"mix", u"none"), 0);

    std::ofstream(file("bad.xml")) << "<ReorganizeRule name='no rule in it'/>";
    std::filesystem::create_directory(file("folder.xml"));
    for (const char* const name : {":ArtistTrackRule:.xml", "..xml", "copy.XML", "mix.txt"})
        std::filesystem::copy(file("mix.xml"), file(name));
    Utils::destroy();
    Utils::init();
    EXPECT_EQ(ids(), (Names{"mix", "mix1"}));
    EXPECT_EQ(Utils::getRule(u"mix")->m_prio, 7);
    EXPECT_EQ(Utils::getRuleDisplayName(u"mix"), u"Changed");
    EXPECT_EQ(Utils::getRuleDisplayName(Utils::ArtistTrackRuleID), u"");

    const CReorganizeRule* const gone = Utils::getRule(u"mix");
    EXPECT_TRUE(Utils::deleteRule(u"mix"));
    EXPECT_FALSE(Utils::deleteRule(u"mix"));
    EXPECT_EQ(gone->m_name, u"Changed") << "whoever holds it may go on";
    EXPECT_EQ(ids(), (Names{"mix1"}));
}

TEST_F(ReorganizeUtils, ARuleMovesWithItsName)
{
    CString id = save(u"", u"one", u"One");
    save(u"", u"two", u"Two");
    const CReorganizeRule* const object = Utils::getRule(id);
    CReorganizeRule rule;
    fill(rule, u"Renamed");
    EXPECT_TRUE(Utils::saveReorganizeRule(id, &rule, u"ONE", id)) << "in and out may be one text";
    EXPECT_EQ(id, u"ONE");
    EXPECT_EQ(files(), (Names{"ONE.xml", "two.xml"})) << "on this disk they are two files";
    EXPECT_EQ(Utils::getRule(id), object);

    EXPECT_TRUE(Utils::saveReorganizeRule(id, Utils::getRule(u"two"), u"two", id));
    EXPECT_EQ(files(), Names{"two.xml"});
    EXPECT_EQ(ids(), Names{"two"});
    EXPECT_EQ(Utils::getRule(u"two"), object) << "it replaces the rule of that name";

    EXPECT_EQ(save(Utils::ArtistTrackRuleID, u"mine", u"Mine"), u"mine");
    Utils::loadRules();
    EXPECT_EQ(Utils::getRuleDisplayName(Utils::ArtistTrackRuleID), u"");
    EXPECT_EQ(ids(), (Names{"mine", "two"}));
}

TEST_F(ReorganizeUtils, WhatCannotBeSavedChangesNothing)
{
    save(u"", u"one", u"One");
    CReorganizeRule rule;
    fill(rule, u"Other");
    const CString tooLong(u'x', 300);
    for (const CString& name : {CString(), tooLong, CString(u"a\x7f")})
    {
        CString newId;
        EXPECT_FALSE(Utils::saveReorganizeRule(u"one", &rule, name, newId));
        EXPECT_FALSE(Utils::saveReorganizeRule(u"", &rule, name, newId));
    }
    EXPECT_EQ(files(), Names{"one.xml"});
    EXPECT_EQ(ids(), Names{"one"});
    EXPECT_EQ(Utils::getRuleDisplayName(u"one"), u"One");
}
