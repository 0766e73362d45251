#pragma once

#include "Analyze/NSNamePattern.h"
#include "Reorganize/ReorganizeRule.h"
#include "types/CriticalSection.h"
#include "types/Map.h"

/// The attributes of rules, the names of rule files, and the store of rules: two built-in ones and
/// those whose files are in the kernel's data folder. The id of a rule is the name of its file
/// without folder and extension.
///
/// Functions that change the store take a lock; those that only read it take none, so the host must
/// keep the two apart. Pointers to rules are valid until loadRules() or destroy().
class QO_API CReorganizeUtils
{
public:
    CReorganizeUtils() = delete;

    struct AttribInfo
    {
        CNSAtom::EType type;
        const char16_t* name;
        bool isVelmora; ///< only for files that the application recorded or downloaded
    };
    static constexpr int attribsCount = 21;
    static const AttribInfo m_attribsInfo[attribsCount];

    /// Properties of a rule, from which its uses follow.
    struct RuleTypeInfo
    {
        bool keepsOriginalDir = false;
        bool renamesWithVelmoraAtoms = false;
        bool hasTrackCountSeparator = false;
    };
    /// The uses of a rule, one bit each.
    enum EReorganizeRuleSorterType : int
    {
        musicImporter = 1,
        importer = 2,
        sorter = 4
    };

    /// Ids of the built-in rules; with the colons they cannot be names of rule files.
    static constexpr const char16_t* ArtistTrackRuleID = u":ArtistTrackRule:";
    static constexpr const char16_t* VelmoraArtistTrackRuleID = u":VelmoraArtistTrackRule:";

    /// Builds the default pattern and the built-in rules, and loads the others. Stops silently
    /// where an allocation fails.
    static void init();
    /// Deletes all rules; init() may be called again afterwards.
    static void destroy();

    /// FixedString for a name that is not an attribute; upper and lower case differ.
    static CNSAtom::EType getAttributeType(const CString& name);
    /// "{INVALID ATTRIB}" for a type that is not an attribute.
    static CString getAttributeName(CNSAtom::EType type);
    /// For a fixed text the text itself.
    static CString getAttributeName(const CNSAtom* atom);
    /// The pattern as a text, with attributes by name: "{artist.name} - {track.name}".
    static CString getAttributesString(const CNSNamePattern* pattern);

    using AtomNameFunc = CString (*)(const CNSAtom*);
    /// The reverse: parses a text into a pattern. Each attribute's name, found without regard to
    /// case, becomes an atom; other text, unknown names in braces included, becomes fixed atoms.
    /// Always true. The second form asks nameOf for the names; where names overlap, the lower type
    /// wins.
    static bool parseAttributesString(const CString& text, CNSNamePattern* pattern);
    static bool
    parseAttributesString(const CString& text, CNSNamePattern* pattern, AtomNameFunc nameOf);

    /// The definition that a user typed, without what a name cannot contain. A folder ends with one
    /// backslash; a single backslash means no folder.
    static CString makeProperRuleAttribString(const CString& text, bool isSubdir);
    static CString makeProperSubdirRuleAttribString(const CString& text);
    static CString makeProperRenameRuleAttribString(const CString& text);

    /// Whether the pattern needs a source, time or date, which only files of the application have.
    static bool patternHasVelmoraAtoms(const CNSNamePattern& pattern);
    /// Fills info from all nodes of the rule.
    static void getRuleTypeInfo(const CReorganizeRule* rule, RuleTypeInfo& info);
    /// A mask of EReorganizeRuleSorterType.
    static int getReorganizeRuleSorterType(const CReorganizeRule* rule);
    /// Whether the rule has all bits of the type.
    static bool isReorganizeRuleOfType(const CReorganizeRule* rule, EReorganizeRuleSorterType type);
    static bool isSorterReorganizeRule(const CReorganizeRule* rule);
    static bool isImporterReorganizeRule(const CReorganizeRule* rule);
    static bool isMusicImporterReorganizeRule(const CReorganizeRule* rule);

    /// The path of the file of a rule; "" for a text that cannot be an id: "", one with a
    /// separator, one of points alone, or one that begins with ":".
    static CString makeReorgRulePath(const CString& id);
    /// The id for the path of a rule file.
    static CString getReorgRuleID(const CString& path);
    /// The path of all rule files, with "*" as the name.
    static CString getReorgRulePattern();
    /// The path for a new rule of that name, with illegal characters as "_"; with unique a number
    /// is appended if needed to get a path that no file has. "" if nothing of the name is left.
    static CString getNewReorgRulePath(CString name, bool unique);
    /// Whether it is the id of a built-in rule. This class does not prevent changes to those.
    static bool isReadOnlyRule(const CString& id);

    /// Reads all rule files again. Rules whose files are gone or invalid leave the store; an
    /// invalid file stays on the disk.
    static void loadRules();
    /// Writes the rule to the file of that name and puts a copy into the store. With an empty id it
    /// is a new rule and gets a free name. Otherwise it replaces the rule of that id, whose file is
    /// removed, and also a file that has the name already. newId becomes the id. The rule in the
    /// store keeps its m_prio until the next loadRules(); the file gets that of the given rule.
    /// False, with everything unchanged, if the file cannot be written.
    static bool saveReorganizeRule(const CString& id,
                                   const CReorganizeRule* rule,
                                   const CString& name,
                                   CString& newId);
    /// Deletes the file and removes the rule from the store; the object lives until destroy().
    /// False if the file cannot be deleted.
    static bool deleteRule(const CString& id);

    /// Walk over all rules in no particular order; null after the last.
    static POSITION getFirstRulePos();
    static CReorganizeRule* getNextRule(POSITION& position, CString& id);
    /// Null for an unknown id.
    static CReorganizeRule* getRule(const CString& id);
    /// "" for an unknown id, and for the built-in rules.
    static CString getRuleDisplayName(const CString& id);
    /// -1, 0 or 1, the higher m_prio first; 0 if one of them is unknown.
    static int compareRules(const CString& a, const CString& b);

private:
    static void clearRules();
    static void buildBuiltInRule(CReorganizeRule& rule, const CString& folder);
    /// Make the only folder of a built-in rule, and the names in it.
    static CSubdirRule* addSubDirRule(CReorganizeRule& rule, const CString& text);
    static void addDefaultRenameRules(CReorganizeRule& rule, const CSubdirRule* subdirRule);
    /// Puts a copy of the rule into the store under newId, in the place of the one under oldId.
    static void putStored(const CString& oldId, const CString& newId, const CReorganizeRule& rule);
    static bool isBuiltIn(const CReorganizeRule* rule);

    static CNSNamePattern m_defaultRenameRulePattern;
    static CReorganizeRule m_artistTrackRule;
    static CReorganizeRule m_velmoraArtistTrackRule;
    static CCriticalSection m_csRules;
    static CMapStringToPtr m_rules; ///< by id, CReorganizeRule*
    static CAutoListT<CReorganizeRule>
        m_goneRules; ///< removed from m_rules, but perhaps in use by the host
};
