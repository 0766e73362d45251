#pragma once

#include <QoKernel/Collection.h>
#include <QoKernel/Rules.h>

#include <memory>
#include <string>

namespace qo::host
{
/// The folder that a file lies in, as a path from the root that holds it; "" for the root itself.
CString folderBelow(const CString& root, const CString& path);

/// Where a rule wants the files of the loaded collection, one by one. The first node at the top
/// that is a separator or a folder decides. What RuleAttributes and RuleFacts say holds for the
/// values; no name is limited in length here. A file that is no music, picture or lyrics goes with
/// the music of its name beside it, and gets that music's new name before its extension. Rule and
/// collection may not change while this lives. For the kernel's thread.
class RuleWalk
{
public:
    struct Answer
    {
        bool isMeant = false; ///< whether the rule speaks of the file; else the reason says why not
        bool hasPlace = false; ///< of a file that is meant: else the reason says why it has none
        CString folder; ///< below the target folder, without closing backslash; "" for itself
        CString name;   ///< with extension
        CString kind;   ///< "Music", "Picture", "Lyrics" or ""
        CString track;  ///< the path of the music that it goes by, "" for none
        std::string decidedBy; ///< "LessTracks > {artist.name}\ > Music {track.name}"
        std::string reason;    ///< a clause
    };

    explicit RuleWalk(const CReorganizeRule& rule);
    ~RuleWalk();
    RuleWalk(const RuleWalk&) = delete;
    RuleWalk& operator=(const RuleWalk&) = delete;

    /// The root, which holds the file, is the folder that a kept sub-folder counts from.
    Answer answerFor(const boost::shared_ptr<CHDFile>& file, const CString& root);

private:
    class State;
    std::unique_ptr<State> m_state;
};
} // namespace qo::host
