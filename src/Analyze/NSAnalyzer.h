#pragma once

#include "Analyze/Forward.h"
#include "Analyze/NSAtom.h"
#include "Logical/LTObjectType.h"
#include "Physical/Forward.h"
#include "common/Forward.h"
#include "common/PtrListT.h"
#include "types/Map.h"

/// Gives an artist and an album to what lies beside music without a tag of its own. Tags are taken
/// as the truth; only file records change. No state between calls and no locks: nothing else may
/// work on the tree meanwhile. A progress object is asked for a cancel once per item and may be
/// null; a cancel ends the call at once and leaves what was written. Trees may be of any depth.
class QO_API CNSAnalyzer
{
public:
    using AssocMap = CMap<CLTObjectType::EType, CString>;
    using ObjectList = CPtrListT<CHDObject>;

    CNSAnalyzer() = delete;

    /// Whether the value occurs in the text of the atom. Unless dryRun: sub is the part of the text
    /// that matched, before and after are new fixed atoms of the caller's, null where no text is
    /// left on that side.
    static bool findSubAtom(CNSAtom::EType type,
                            const char16_t* value,
                            const CNSAtom* atom,
                            CString& sub,
                            CNSAtom*& before,
                            CNSAtom*& after,
                            bool ignoreExtraChars,
                            bool numberAsText,
                            bool dryRun);
    /// Splits the first fixed atom that holds the value; false if none does.
    static bool refinePatternWithAtom(CNSNamePattern& pattern,
                                      CNSAtom::EType type,
                                      const char16_t* value,
                                      bool ignoreExtraChars,
                                      bool numberAsText,
                                      bool dryRun);
    static bool refinePatternWithAtom(CNSNamePattern& pattern,
                                      const CNSAtom* atom,
                                      bool ignoreExtraChars,
                                      bool numberAsText,
                                      bool dryRun);
    /// result is the pattern split by all values of the music file that its fixed atoms hold, in
    /// the order of the file's atom table. matchMask joins the types found, by their numbers.
    static void refineFilePatternWithMusicFile(const boost::shared_ptr<CHDFile>& file,
                                               const CNSNamePattern& pattern,
                                               const boost::shared_ptr<CHDMusicFile>& musicFile,
                                               int& matchMask,
                                               CNSNamePattern& result);
    /// The music file that the name of the file points to: the one of the same name, or else the
    /// first by title among those whose values stand in the pattern. best is null if there is none.
    static void getBestMusicFileMatch(const boost::shared_ptr<CHDFile>& file,
                                      const CNSNamePattern& pattern,
                                      const CNSDirMusicFilesInfo& info,
                                      boost::shared_ptr<CHDMusicFile>& best,
                                      CNSNamePattern& result,
                                      int& matchMask);

    /// Copy artist and album of the best music file: to the one file, or to all files without tags
    /// here and below. A record that changed asks for saving.
    static void createOtherNamePatternsAndLTObjects(const boost::shared_ptr<CHDFile>& file,
                                                    const CNSDirMusicFilesInfo& info);
    static void
    createOtherNamePatternsAndLTObjects(const boost::shared_ptr<CHDDirectory>& directory,
                                        IQoProgress* progress);

    /// A file's association stands in its record, that of a directory in the store, which maps
    /// paths to AssocMap*. Empty without one.
    static CString getHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                    CLTObjectType::EType type,
                                    CMapStringToPtr& store);
    /// The record then does not ask for saving.
    static void setHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                 CLTObjectType::EType type,
                                 const CString& value,
                                 CMapStringToPtr& store);
    static void setHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                 const AssocMap& accepted,
                                 CMapStringToPtr& store);
    /// Deletes what the store points to, and empties it.
    static void clearAssocStore(CMapStringToPtr& store) noexcept;

    /// Whether an object other than self says something else, without regard to case.
    static bool findContradictingAssocs(CLTObjectType::EType type,
                                        const CString& value,
                                        const ObjectList& objects,
                                        const boost::shared_ptr<CHDObject>& self,
                                        CMapStringToPtr& store);
    /// Whether few enough items go without the value, by the setting UnrelMaxPercent.
    static bool isUnrelAssocAccepted(int unrelated, int related);
    static bool isUnrelAssocAccepted(CLTObjectType::EType type,
                                     const CString& value,
                                     const ObjectList& objects,
                                     CMapStringToPtr& store);

    /// Spread what the children of a directory agree on over all of them: for one list of children,
    /// or for the directory and all below it, bottom up.
    static void
    detectUnrelatedAssocs(const ObjectList& objects, CMapStringToPtr& store, IQoProgress* progress);
    static void detectUnrelatedAssocs(const boost::shared_ptr<CHDDirectory>& directory,
                                      CMapStringToPtr& store,
                                      IQoProgress* progress);
    static void detectUnrelatedAssocs(const boost::shared_ptr<CHDDirectory>& directory,
                                      IQoProgress* progress);
};
