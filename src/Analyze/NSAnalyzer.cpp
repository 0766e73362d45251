#include "Analyze/NSAnalyzer.h"

#include "Analyze/AtomTables.h"
#include "Analyze/BestMusicFile.h"
#include "Analyze/BottomUp.h"
#include "Analyze/MakeOwned.h"
#include "Analyze/NSDirMusicFilesInfo.h"
#include "Analyze/NSNamePattern.h"
#include "Analyze/NSUtils.h"
#include "Physical/HDMusicFile.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/ProfileTimer.h"

// The second question of the analysis: which music file does the name of another file point to? The
// first one, what the children of a folder agree on, is in NSAnalyzerAssocs.cpp. The pieces:
// findSubAtom splits one text, refinePatternWithAtom one pattern, refineFilePatternWithMusicFile by
// all values of a music file, and createOtherNamePatternsAndLTObjects copies artist and album.

namespace
{
/// Null for an empty text: a pattern holds no empty fixed atoms.
std::unique_ptr<CNSAtom> makeFixedAtom(const CString& text)
{
    if (text.IsEmpty())
        return nullptr;
    return qo::makeOwned<CNSAtom>(QO_HERE(u".\\Analyze\\NSAnalyzer"), CNSAtom::FixedString, text);
}

/// Copies a value unless it is empty. True if the text changed, even in case alone.
bool takeOver(const CString& from, CString& to)
{
    if (from.IsEmpty())
        return false;
    const bool changes = to != from;
    to = from;
    return changes;
}

bool hasFileWithoutTag(const CHDDirectory& directory)
{
    for (const auto& file : directory.getFiles())
    {
        if (file->getFileType() != CHDFile::FT_Music)
            return true;
    }
    return false;
}

/// Places the files directly in the directory that are not music; false after a cancel. The music
/// is collected only when there is a file to place.
bool placeFilesOf(const CHDDirectory& directory, IQoProgress* progress)
{
    CNSDirMusicFilesInfo info;
    const bool isInfoUsed = hasFileWithoutTag(directory);
    for (const auto& file : directory.getFiles())
    {
        if (qo::isCanceled(progress))
            return false;
        if (isInfoUsed && file->getFileType() == CHDFile::FT_Music)
            info.addMusicFile(boost::static_pointer_cast<CHDMusicFile>(file));
    }
    for (const auto& file : directory.getFiles())
    {
        if (qo::isCanceled(progress))
            return false;
        if (file->getFileType() != CHDFile::FT_Music)
            CNSAnalyzer::createOtherNamePatternsAndLTObjects(file, info);
    }
    return true;
}
} // namespace

bool CNSAnalyzer::findSubAtom(CNSAtom::EType type,
                              const char16_t* value,
                              const CNSAtom* atom,
                              CString& sub,
                              CNSAtom*& before,
                              CNSAtom*& after,
                              bool ignoreExtraChars,
                              bool numberAsText,
                              bool dryRun)
{
    CNSUtils::FindStringInfo info;
    info.ignoreExtraChars = ignoreExtraChars;
    info.numberAsText = numberAsText;
    info.maxExtraPercentSearch = qo::maxExtraCharsPercent;
    info.maxExtraPercentText = qo::maxExtraCharsPercent;
    info.isNumber = CNSAtom::atomTypeIsNumber(type);
    const CString& text = atom->m_value;
    int pos = 0;
    int len = 0;
    if (!CNSUtils::findSubstring(value, text, info, pos, len))
        return false;
    if (dryRun)
        return true;
    auto textBefore = makeFixedAtom(text.Left(pos));
    auto textAfter = makeFixedAtom(text.Mid(pos + len));
    sub = text.Mid(pos, len);
    before = textBefore.release();
    after = textAfter.release();
    return true;
}

bool CNSAnalyzer::refinePatternWithAtom(CNSNamePattern& pattern,
                                        CNSAtom::EType type,
                                        const char16_t* value,
                                        bool ignoreExtraChars,
                                        bool numberAsText,
                                        bool dryRun)
{
    for (CNSAtom* atom : pattern.m_atoms)
    {
        CString sub;
        CNSAtom* before = nullptr;
        CNSAtom* after = nullptr;
        if (atom->m_type != CNSAtom::FixedString ||
            !findSubAtom(
                type, value, atom, sub, before, after, ignoreExtraChars, numberAsText, dryRun))
            continue;
        if (dryRun)
            return true;
        if (before)
            pattern.insertAtomBefore(before, atom);
        if (after)
            pattern.insertAtomAfter(after, atom);
        atom->setAtom(type, sub);
        return true;
    }
    return false;
}

bool CNSAnalyzer::refinePatternWithAtom(CNSNamePattern& pattern,
                                        const CNSAtom* atom,
                                        bool ignoreExtraChars,
                                        bool numberAsText,
                                        bool dryRun)
{
    return refinePatternWithAtom(
        pattern, atom->m_type, atom->m_value, ignoreExtraChars, numberAsText, dryRun);
}

void CNSAnalyzer::refineFilePatternWithMusicFile(const boost::shared_ptr<CHDFile>& file,
                                                 const CNSNamePattern& pattern,
                                                 const boost::shared_ptr<CHDMusicFile>& musicFile,
                                                 int& matchMask,
                                                 CNSNamePattern& result)
{
    matchMask = 0;
    result.copyFrom(pattern);
    CString value;
    for (const qo::AtomWeight* row = qo::atomTableOf(file->getFileType()); row->weight != 0; ++row)
    {
        if (musicFile->getAtomValueFromDbFileItem(row->type, value) &&
            refinePatternWithAtom(result, row->type, value, true, false, false))
            matchMask |= row->type;
    }
}

void CNSAnalyzer::getBestMusicFileMatch(const boost::shared_ptr<CHDFile>& file,
                                        const CNSNamePattern& pattern,
                                        const CNSDirMusicFilesInfo& info,
                                        boost::shared_ptr<CHDMusicFile>& best,
                                        CNSNamePattern& result,
                                        int& matchMask)
{
    result.clear();
    matchMask = 0;
    best = qo::findBestMusicFile(file, pattern, info).musicFile;
    if (best)
        refineFilePatternWithMusicFile(file, pattern, best, matchMask, result);
}

void CNSAnalyzer::createOtherNamePatternsAndLTObjects(const boost::shared_ptr<CHDFile>& file,
                                                      const CNSDirMusicFilesInfo& info)
{
    const CString title = file->getFileTitle();
    if (title.IsEmpty())
        return;
    CNSNamePattern pattern;
    pattern.setAtom(CNSAtom::FixedString, title);
    boost::shared_ptr<CHDMusicFile> best;
    CNSNamePattern refined;
    int matchMask = 0;
    {
        const qo::ProfileTimer timer(
            u"CNSAnalyzer::createOtherNamePatternsAndLTObjects: getBestMusicFileMatch");
        getBestMusicFileMatch(file, pattern, info, best, refined, matchMask);
    }
    if (!best)
        return;
    const QoFileDbItem& from = *best->getDbItem();
    QoFileDbItem& to = *file->getDbItem();
    const bool artistChanged = takeOver(from.artist, to.artist);
    const bool albumChanged = takeOver(from.album, to.album);
    if ((artistChanged || albumChanged) && to.dbState != qo::dbState::added)
        to.dbState = qo::dbState::modified;
}

void CNSAnalyzer::createOtherNamePatternsAndLTObjects(
    const boost::shared_ptr<CHDDirectory>& directory, IQoProgress* progress)
{
    qo::walkBottomUp(directory,
                     progress,
                     [&](const boost::shared_ptr<CHDDirectory>& each)
                     { return placeFilesOf(*each, progress); });
}
