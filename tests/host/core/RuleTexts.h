#pragma once

#include <QoKernel/Rules.h>

/// What one folder of a rule says; null keeps what the file has, "" leaves the kind out.
struct RuleTexts
{
    const char16_t* folder = u"\\";
    const char16_t* music = nullptr;
    const char16_t* picture = nullptr;
    const char16_t* lyrics = nullptr;
    bool keepsIfEmpty = false;
};

/// Adds the folder to the rule, under that output or at the top.
inline void addTexts(CReorganizeRule& rule,
                     const RuleTexts& texts,
                     CReorganizeRule::CSeperateRuleOutputNode* parent = nullptr)
{
    auto* const folder = new CSubdirRule;
    folder->keepOriginal = texts.folder == nullptr;
    CReorganizeUtils::parseAttributesString(texts.folder, &folder->m_pattern);
    CReorganizeRule::CSubdirRuleNode* const node = rule.addSubdirRule(folder, parent);
    const struct
    {
        CRenameRule::EType kind;
        const char16_t* text;
    } names[] = {{CRenameRule::Music, texts.music},
                 {CRenameRule::Picture, texts.picture},
                 {CRenameRule::Lyrics, texts.lyrics}};
    for (const auto& name : names)
    {
        if (name.text && !*name.text)
            continue;
        auto* const rename = new CRenameRule(name.kind);
        rename->keepOriginal = name.text == nullptr;
        rename->keepOriginalIfAttribEmpty = texts.keepsIfEmpty;
        CReorganizeUtils::parseAttributesString(name.text, &rename->m_pattern);
        rule.addRenameRule(rename, node);
    }
}
