#pragma once

#include "Analyze/Forward.h"
#include "Analyze/NSAtom.h"
#include "Logical/LTObjectType.h"
#include "Physical/Forward.h"
#include "common/Forward.h"
#include "common/PtrListT.h"
#include "types/Map.h"

/// The name scheme (NS) analyzer. It gives an artist and an album to pictures, texts and other
/// files that lie beside music and have no tag of their own. Tags are taken as the truth, and only
/// file records change; the logical objects are made from the records afterwards.
///
///   Example: one folder, nothing stored for the last two files.
///     01 Morning.mp3        artist Ann, album Harbour Lights
///     02 Night.mp3          artist Ann, album Harbour Lights
///     Night.txt             named after the title of the second track
///     scan0001.jpg          its name contains nothing known
///   detectUnrelatedAssocs: two of four items go without artist and album, more than 20 percent:
///     nothing is spread. (With eight tracks it would be 2 of 10, and both files would get Ann and
///     Harbour Lights here, whatever their names.)
///   createOtherNamePatternsAndLTObjects: "Night" contains the title of 02 Night.mp3, so Night.txt
///     gets its artist and album. scan0001.jpg stays an unknown object.
///
/// There is no state between calls and there are no locks: nothing else may work on the tree
/// meanwhile. A progress object may be null; it is asked for a cancel once per item, and a cancel
/// ends the call and keeps what was written so far. Trees may be of any depth.
class QO_API CNSAnalyzer
{
public:
    /// An association: the name of a logical object (title, album, artist, genre) that a file or
    /// folder is taken to belong to, by the type of that object.
    using AssocMap = CMap<CLTObjectType::EType, CString>;
    using ObjectList = CPtrListT<CHDObject>;

    CNSAnalyzer() = delete;

    /// Whether the value occurs in the text of the atom. Unless dryRun, sub becomes the part of the
    /// text that matched; before and after become new fixed atoms with the text on either side,
    /// which the caller must delete, or null where no text is left on that side. With dryRun the
    /// outputs are not touched.
    ///
    ///   Example: Artist "Ann" in "01 Ann (live)" gives before "01 ", sub "Ann", after " (live)".
    static bool findSubAtom(CNSAtom::EType type,
                            const char16_t* value,
                            const CNSAtom* atom,
                            CString& sub,
                            CNSAtom*& before,
                            CNSAtom*& after,
                            bool ignoreExtraChars,
                            bool numberAsText,
                            bool dryRun);
    /// Splits the first fixed atom that contains the value into up to three atoms; false if none
    /// contains it. With dryRun the pattern stays as it is and only the answer counts.
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
    /// The result is the pattern, split by all values of the music file that its fixed atoms
    /// contain, in the order of the file's atom table. matchMask becomes the bitwise "or" of the
    /// numbers of the types that were found; these are no bit values, so it tells for certain only
    /// whether any was found.
    ///
    ///   Example: text "Ann_night", music file with artist Ann and title Night: "[Artist]_[Track]".
    static void refineFilePatternWithMusicFile(const boost::shared_ptr<CHDFile>& file,
                                               const CNSNamePattern& pattern,
                                               const boost::shared_ptr<CHDMusicFile>& musicFile,
                                               int& matchMask,
                                               CNSNamePattern& result);
    /// Finds the music file that the name of the file points to: the one of the same name, or else
    /// the one with the alphabetically first file title among those whose values occur in the
    /// pattern. best is null, and the result empty, when there is none.
    static void getBestMusicFileMatch(const boost::shared_ptr<CHDFile>& file,
                                      const CNSNamePattern& pattern,
                                      const CNSDirMusicFilesInfo& info,
                                      boost::shared_ptr<CHDMusicFile>& best,
                                      CNSNamePattern& result,
                                      int& matchMask);

    /// Copies artist and album of the best music file: to one file, or to all files without tags in
    /// the directory and below. Empty values are not copied. A record that changed is marked as
    /// modified, so that the next save writes it.
    static void createOtherNamePatternsAndLTObjects(const boost::shared_ptr<CHDFile>& file,
                                                    const CNSDirMusicFilesInfo& info);
    static void
    createOtherNamePatternsAndLTObjects(const boost::shared_ptr<CHDDirectory>& directory,
                                        IQoProgress* progress);

    /// The association of an object: of a file from its record, of a directory from the store,
    /// which maps directory paths to AssocMap* and lives for one analysis. "" when there is none.
    static CString getHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                    CLTObjectType::EType type,
                                    CMapStringToPtr& store);
    /// Sets it. A file's record is not marked as modified, so the value is saved only when the
    /// record has another reason to be saved.
    static void setHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                 CLTObjectType::EType type,
                                 const CString& value,
                                 CMapStringToPtr& store);
    static void setHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                 const AssocMap& accepted,
                                 CMapStringToPtr& store);
    /// Deletes all maps that the store points to, and empties it.
    static void clearAssocStore(CMapStringToPtr& store) noexcept;

    /// Whether an object other than self has a different association, without regard to case.
    /// Objects without one do not contradict; an empty value is never contradicted.
    static bool findContradictingAssocs(CLTObjectType::EType type,
                                        const CString& value,
                                        const ObjectList& objects,
                                        const boost::shared_ptr<CHDObject>& self,
                                        CMapStringToPtr& store);
    /// Whether the share of items without the value is at most the setting UnrelMaxPercent.
    static bool isUnrelAssocAccepted(int unrelated, int related);
    static bool isUnrelAssocAccepted(CLTObjectType::EType type,
                                     const CString& value,
                                     const ObjectList& objects,
                                     CMapStringToPtr& store);

    /// Spreads each value that the children of a directory agree on over all of its children: for
    /// one list of children, or for the directory and all below it, bottom up. The third form uses
    /// a store of its own.
    static void
    detectUnrelatedAssocs(const ObjectList& objects, CMapStringToPtr& store, IQoProgress* progress);
    static void detectUnrelatedAssocs(const boost::shared_ptr<CHDDirectory>& directory,
                                      CMapStringToPtr& store,
                                      IQoProgress* progress);
    static void detectUnrelatedAssocs(const boost::shared_ptr<CHDDirectory>& directory,
                                      IQoProgress* progress);
};
