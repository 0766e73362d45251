#pragma once

/// The names of elements, attributes and types in rule files.
namespace qo::ruleFile
{
// Elements.
constexpr const char* root = "ReorganizeRule";
constexpr const char* unknownAttrib = "UnknownAttrib";
constexpr const char* rule = "Rule";
constexpr const char* output = "RuleOutput";

// Attributes.
constexpr const char* name = "name";
constexpr const char* prio = "prio";
constexpr const char* defValue = "defValue";
constexpr const char* type = "type";
constexpr const char* trackLimit = "trackLimit";
constexpr const char* keepOriginal = "keepOriginal";
constexpr const char* keepOriginalIfAttribEmpty = "keepOriginalIfAttribEmpty";
constexpr const char* renameRuleType = "renameRuleType";
constexpr const char* definition = "ruleDefinition";

// Types of rules.
constexpr const char16_t* artistTracks = u"ArtistTracksSeperateRule";
constexpr const char16_t* albumTracks = u"AlbumTracksSeperateRule";
constexpr const char16_t* jingle = u"JingleSeperateRule";
constexpr const char16_t* subdir = u"SubdirRule";
constexpr const char16_t* rename = u"RenameRule";
} // namespace qo::ruleFile
