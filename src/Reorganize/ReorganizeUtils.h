#pragma once

#include "Analyze/NSNamePattern.h"
#include "Reorganize/ReorganizeRule.h"
#include "types/CriticalSection.h"
#include "types/Map.h"

/// The attributes of rules, the naming of rule files, and the rules of the process: two built-in
/// ones and those whose files lie in the kernel's data folder. A rule's id is the name of its file
/// without folder and extension.
///
/// What changes the rules takes a lock; what only reads them takes none, so the host keeps the two
/// apart. Rules stay valid until loadRules() or destroy().
class QO_API CReorganizeUtils
{
public:
    CReorganizeUtils() = delete;

    struct AttribInfo
    {
        CNSAtom::EType type;
        const char16_t* name;
        bool isVelmora; ///< of what the application itself gathers: source, times, dates
    };
    static constexpr int attribsCount = 21;
    static const AttribInfo m_attribsInfo[attribsCount];

    struct RuleTypeInfo
    {
        bool keepsOriginalDir = false;
        bool renamesWithVelmoraAtoms = false;
        bool hasTrackCountSeparator = false;
    };
    /// What a rule is good for, one bit each.
    enum EReorganizeRuleSorterType : int
    {
        musicImporter = 1,
        importer = 2,
        sorter = 4
    };

    /// The colons keep these out of the space of file names.
    static constexpr const char16_t* ArtistTrackRuleID = u":ArtistTrackRule:";
    static constexpr const char16_t* VelmoraArtistTrackRuleID = u":VelmoraArtistTrackRule:";

    /// Builds the default pattern and the built-in rules and loads the others. Stops without a
    /// report where an allocation fails.
    static void init();
    /// Deletes all rules; init() may follow.
    static void destroy();

    /// FixedString for a name that is no attribute; case counts.
    static CNSAtom::EType getAttributeType(const CString& name);
    /// "{INVALID ATTRIB}" for a type that is no attribute.
    static CString getAttributeName(CNSAtom::EType type);
    /// A fixed text gives its own text.
    static CString getAttributeName(const CNSAtom* atom);
    /// The pattern as a text, with the attributes by name.
    static CString getAttributesString(const CNSNamePattern* pattern);

    using AtomNameFunc = CString (*)(const CNSAtom*);
    /// The way back: the pattern becomes the text with each attribute's name, found without regard
    /// to case, as an atom. Always true: a text in braces that is no name stays as it is. The
    /// second form asks nameOf for the names; where they overlap, the lower type wins.
    static bool parseAttributesString(const CString& text, CNSNamePattern* pattern);
    static bool
    parseAttributesString(const CString& text, CNSNamePattern* pattern, AtomNameFunc nameOf);

    /// A typed definition without what a name cannot hold. For a folder it ends in one backslash,
    /// which alone stands for no folder.
    static CString makeProperRuleAttribString(const CString& text, bool isSubdir);
    static CString makeProperSubdirRuleAttribString(const CString& text);
    static CString makeProperRenameRuleAttribString(const CString& text);

    static bool patternHasVelmoraAtoms(const CNSNamePattern& pattern);
    static void getRuleTypeInfo(const CReorganizeRule* rule, RuleTypeInfo& info);
    static int getReorganizeRuleSorterType(const CReorganizeRule* rule);
    /// Whether it has all the bits.
    static bool isReorganizeRuleOfType(const CReorganizeRule* rule, EReorganizeRuleSorterType type);
    static bool isSorterReorganizeRule(const CReorganizeRule* rule);
    static bool isImporterReorganizeRule(const CReorganizeRule* rule);
    static bool isMusicImporterReorganizeRule(const CReorganizeRule* rule);

    /// "" for what can be no rule file's id: nothing, a text with a separator or of points alone,
    /// and all that begin with ":".
    static CString makeReorgRulePath(const CString& id);
    static CString getReorgRuleID(const CString& path);
    static CString getReorgRulePattern();
    /// The path for a rule of that name, in which illegal characters become "_"; with unique, a
    /// number behind the name makes it one that no file has yet. "" where nothing of the name is
    /// left.
    static CString getNewReorgRulePath(CString name, bool unique);
    /// Whether it is the id of a built-in rule. Nothing here refuses to change those.
    static bool isReadOnlyRule(const CString& id);

    /// Rules whose files are gone or bad are dropped; a bad file stays on disk.
    static void loadRules();
    /// Writes the rule to the file of that name and takes a copy of it into the store. With an
    /// empty id it is a new rule and gets a free name; otherwise it takes the place of the rule of
    /// that id, whose file goes, and of a file that has the name. newId is the id from now on. The
    /// stored rule keeps its m_prio until the next loadRules(), the file has that of the rule.
    /// False, with all as it was, if the file cannot be written.
    static bool saveReorganizeRule(const CString& id,
                                   const CReorganizeRule* rule,
                                   const CString& name,
                                   CString& newId);
    /// Deletes the file and takes the rule out of the store; the object lives until destroy().
    /// False if the file cannot be deleted.
    static bool deleteRule(const CString& id);

    /// The walk over all rules, in no order; null behind the last.
    static POSITION getFirstRulePos();
    static CReorganizeRule* getNextRule(POSITION& position, CString& id);
    /// Null for an unknown id.
    static CReorganizeRule* getRule(const CString& id);
    /// "" for an unknown id, and for the built-in rules.
    static CString getRuleDisplayName(const CString& id);
    /// -1, 0 or 1, by falling m_prio; 0 if one is unknown.
    static int compareRules(const CString& a, const CString& b);

private:
    static void clearRules();
    static void buildBuiltInRule(CReorganizeRule& rule, const CString& folder);
    /// Give a built-in rule its one folder, and that folder its names.
    static CSubdirRule* addSubDirRule(CReorganizeRule& rule, const CString& text);
    static void addDefaultRenameRules(CReorganizeRule& rule, const CSubdirRule* subdirRule);
    static void putStored(const CString& oldId, const CString& newId, const CReorganizeRule& rule);
    static bool isBuiltIn(const CReorganizeRule* rule);

    static CNSNamePattern m_defaultRenameRulePattern;
    static CReorganizeRule m_artistTrackRule;
    static CReorganizeRule m_velmoraArtistTrackRule;
    static CCriticalSection m_csRules;
    static CMapStringToPtr m_rules;                 ///< by id, CReorganizeRule*
    static CAutoListT<CReorganizeRule> m_goneRules; ///< out of m_rules, but the host may hold them
};
