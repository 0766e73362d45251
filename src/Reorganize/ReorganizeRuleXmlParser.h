#pragma once

#include "Reorganize/ReorganizeRule.h"
#include "types/String.h"

class TiXmlElement;

/// Reads and writes rule files, which contain one rule as XML in UTF-8 (docs/rule-files.md). A file
/// that is read may contain any bytes (see qo::isReadableRuleFile). May be called from any thread.
class QO_API CReorganizeRuleXmlParser
{
public:
    CReorganizeRuleXmlParser() = delete;

    /// A new rule that belongs to the caller. Null, without a log line, for a file that cannot be
    /// read or contains no valid rule.
    static CReorganizeRule* loadReorganizeRule(const CString& path);
    /// Replaces the whole file. False, with the file unchanged, if it cannot be written or the rule
    /// is too large to be read again.
    static bool saveReorganizeRule(const CReorganizeRule* rule, const CString& path);

protected:
    static CString UTF8ToUTF16(const char* text);
    static void getElemName(const TiXmlElement* element, CString& name);
    static void setElemName(TiXmlElement* element, const CString& name);
    static bool elemHasName(const TiXmlElement* element, const char* name);

    // Read attributes: false, with value unchanged, for an attribute that is missing.
    static bool getAttribValue(const TiXmlElement* element, const char* name, CString& value);
    /// False also for a text that does not begin with a number.
    static bool getAttribIntValue(const TiXmlElement* element, const char* name, int& value);
    /// True for any number but 0.
    static bool getAttribBoolValue(const TiXmlElement* element, const char* name, bool& value);
    static void setAttribValue(TiXmlElement* element, const char* name, const CString& value);
    static void setAttribIntValue(TiXmlElement* element, const char* name, int value);
    static void setAttribBoolValue(TiXmlElement* element, const char* name, bool value);

    /// False if the rule is invalid or has no name.
    static bool createReorganizeRule(const TiXmlElement* element, CReorganizeRule* rule);

    // Each adds what the element describes: a separating or subdirectory rule below the output of
    // parentRule, a rename rule below parentSubdirRule, and without these to the top level. An
    // element without what it needs is skipped, or kept as far as it was read.
    static void addSubRules(const TiXmlElement* element,
                            CReorganizeRule* rule,
                            const CSeperateRule* parentRule,
                            int outputType,
                            const CSubdirRule* parentSubdirRule);
    static void addSeperateRule(CSeperateRule* newRule,
                                const TiXmlElement* element,
                                CReorganizeRule* rule,
                                const CSeperateRule* parentRule,
                                int outputType);
    static void addArtistTracksSeperateRule(const TiXmlElement* element,
                                            CReorganizeRule* rule,
                                            const CSeperateRule* parentRule,
                                            int outputType);
    static void addAlbumTracksSeperateRule(const TiXmlElement* element,
                                           CReorganizeRule* rule,
                                           const CSeperateRule* parentRule,
                                           int outputType);
    static void addJingleSeperateRule(const TiXmlElement* element,
                                      CReorganizeRule* rule,
                                      const CSeperateRule* parentRule,
                                      int outputType);
    static void addSubdirRule(const TiXmlElement* element,
                              CReorganizeRule* rule,
                              const CSeperateRule* parentRule,
                              int outputType);
    static void addRenameRule(const TiXmlElement* element,
                              CReorganizeRule* rule,
                              const CSubdirRule* parentSubdirRule);

    static void saveReorganizeRule(const CReorganizeRule* rule, TiXmlElement* element);
    /// Appends the element of a node, with everything below it, to the parent's. Does nothing for
    /// null.
    static void saveSubRule(const CReorganizeRule::CNode* node, TiXmlElement* parent);

private:
    static void saveNode(const CReorganizeRule::CSeperateRuleNode& node, TiXmlElement* parent);
    static void saveNode(const CReorganizeRule::CSeperateRuleOutputNode& node,
                         TiXmlElement* parent);
    static void saveNode(const CReorganizeRule::CSubdirRuleNode& node, TiXmlElement* parent);
    static void saveNode(const CReorganizeRule::CRenameRuleNode& node, TiXmlElement* parent);
    static TiXmlElement* addRule(TiXmlElement* parent, const CString& type);
};
