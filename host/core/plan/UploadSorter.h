#pragma once

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>
#include <QoKernel/Rules.h>

#include <memory>
#include <string>

namespace qo::host
{
/// Where rules want files that are copied to a device or service. What the collection knows of a
/// file counts, as it does for plans. Of a file that it does not know, or that has changed since it
/// was scanned, the tags are read, and it counts as one without an artist and without an album when
/// a rule separates by numbers of tracks. On the kernel's thread, with the own collection loaded
/// and no other; rules and collection may not change meanwhile.
class UploadSorter
{
public:
    /// Where one kind of files is sorted to.
    struct Kind
    {
        const CReorganizeRule* rule = nullptr; ///< null: such files are not sorted
        CStringArray folder;                   ///< of the place, that the rule's folders lie below
    };
    struct Answer
    {
        bool isSorted = false; ///< false: the file is neither music nor a video, or has no rule
        CStringArray folders;  ///< from the root of the place on, as components in collection form
        CString name;          ///< likewise
        std::string reason;    ///< why it has no place, as a clause; "" when it has one
    };

    /// names: what the place can hold.
    UploadSorter(Kind music, Kind movies, const VolumeRules& names);
    ~UploadSorter();
    UploadSorter(const UploadSorter&) = delete;
    UploadSorter& operator=(const UploadSorter&) = delete;

    /// Of a file of this machine, in collection form. One that its rule does not speak of keeps its
    /// name and goes to the folder of its kind.
    Answer answerFor(const CString& path);

private:
    class Sorting;
    std::unique_ptr<Sorting> m_music; ///< null without a rule
    std::unique_ptr<Sorting> m_movies;
};
} // namespace qo::host
