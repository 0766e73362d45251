#pragma once

#include "Reorganize/ReorganizeRule.h"
#include "types/String.h"

class TiXmlElement;

/// Reads and writes rule files, each of which holds one rule as XML in UTF-8. Any bytes may stand
/// in a file that is read (see qo::isReadableRuleFile). Safe from any thread.
class QO_API CReorganizeRuleXmlParser
{
public:
    CReorganizeRuleXmlParser() = delete;

    /// A new rule that belongs to the caller; null, without a word in the log, for a file that
    /// cannot be read or holds no valid rule.
    static CReorganizeRule* loadReorganizeRule(const CString& path);
    /// Replaces the file as a whole. False, with the file as it was, if it cannot be written or the
    /// rule is too big to be read again.
    static bool saveReorganizeRule(const CReorganizeRule* rule, const CString& path);

protected:
    static CString UTF8ToUTF16(const char* text);
    static void getElemName(const TiXmlElement* element, CString& name);
    static void setElemName(TiXmlElement* element, const CString& name);
    static bool elemHasName(const TiXmlElement* element, const char* name);

    // Readers of attributes: false, with the value as it was, for an absent one.
    static bool getAttribValue(const TiXmlElement* element, const char* name, CString& value);
    /// False also for a text that does not begin with a number.
    static bool getAttribIntValue(const TiXmlElement* element, const char* name, int& value);
    /// True for any number but 0.
    static bool getAttribBoolValue(const TiXmlElement* element, const char* name, bool& value);
    static void setAttribValue(TiXmlElement* element, const char* name, const CString& value);
    static void setAttribIntValue(TiXmlElement* element, const char* name, int value);
    static void setAttribBoolValue(TiXmlElement* element, const char* name, bool value);

    /// False if the tree came out invalid, or without a name.
    static bool createReorganizeRule(const TiXmlElement* element, CReorganizeRule* rule);

    // Each adds what the element describes. A separating or subdirectory rule goes under the output
    // of parentRule, a rename rule under parentSubdirRule; where there is none of that, to the top.
    // An element that lacks what it needs is left out, or left as far as it was read.
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
    /// Appends the node's element, with all below it, to the parent's. Writes nothing for null.
    static void saveSubRule(const CReorganizeRule::CNode* node, TiXmlElement* parent);

private:
    static void saveNode(const CReorganizeRule::CSeperateRuleNode& node, TiXmlElement* parent);
    static void saveNode(const CReorganizeRule::CSeperateRuleOutputNode& node,
                         TiXmlElement* parent);
    static void saveNode(const CReorganizeRule::CSubdirRuleNode& node, TiXmlElement* parent);
    static void saveNode(const CReorganizeRule::CRenameRuleNode& node, TiXmlElement* parent);
    static TiXmlElement* addRule(TiXmlElement* parent, const CString& type);
};
