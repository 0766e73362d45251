#include "core/plan/UploadSorter.h"

#include "core/base/RecordedFile.h"
#include "core/collection/CollectionFiles.h"
#include "core/plan/TargetName.h"
#include "core/rules/RuleWalk.h"

#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

#include <boost/make_shared.hpp>

#include <utility>

namespace qo::host
{
namespace
{
using HdFile = boost::shared_ptr<CHDFile>;

/// The file as the collection has it; null when it has none, or another one.
HdFile knownFile(const CString& path, const FileInfo& info)
{
    HdFile file = ownCollection().getFileByPath(path);
    const bool isIt =
        file && file->getDbItem()->path == path && !isOtherFile(*file->getDbItem(), info);
    return isIt ? file : HdFile();
}

/// A file of no collection, with what its tags say.
HdFile readFileAt(const CString& path, const FileInfo& info)
{
    auto record = boost::make_shared<QoFileDbItem>();
    record->path = path;
    record->size = info.size;
    record->createTime = info.created;
    record->modifTime = info.modified;
    record->flags |= CQoUtils::isVideoExt(fileExtOf(path)) ? fileFlag::video : fileFlag::audio;
    // What cannot be read has no tags, which rules have answers for.
    CMusicTagEx tag;
    if (CMusicTagEx::fileSupportsTags(path) && tag.readTag(path))
        tag.getTag(record);
    return CHDFile::createHDFile(record);
}

bool isVideo(const CHDFile& file)
{
    return file.getAudioVideoType() == CHDFile::AV_Video;
}
} // namespace

/// What is done with one kind of files.
class UploadSorter::Sorting
{
public:
    Sorting(const Kind& kind, const VolumeRules& names)
        : m_walk(*kind.rule), m_folder(kind.folder), m_names(names)
    {
    }

    Answer answerFor(const HdFile& file)
    {
        const auto root =
            file->getParentDir() ? CQoUtils::getRootDir(file->getParentDir()) : nullptr;
        const CString& path = file->getPath();
        const CString rootPath =
            root ? root->getPath().toString() : path.Left(path.ReverseFind(u'\\'));
        const RuleWalk::Answer wanted = m_walk.answerFor(file, rootPath);
        Answer answer;
        answer.isSorted = true;
        answer.folders = m_folder;
        if (wanted.isMeant && !wanted.hasPlace)
        {
            answer.reason = wanted.reason;
            return answer;
        }
        answer.name = fittingFileName(wanted.isMeant ? wanted.name : fileNameOf(path), m_names);
        if (isNoName(answer.name))
            answer.reason = "no file there can have such a name";
        for (const CString& name : CStringArray::split(wanted.folder, u'\\'))
        {
            if (!name.IsEmpty())
                answer.folders.Add(fittingFolderName(name, m_names));
        }
        return answer;
    }

private:
    RuleWalk m_walk;
    CStringArray m_folder;
    VolumeRules m_names;
};

UploadSorter::UploadSorter(Kind music, Kind movies, const VolumeRules& names)
{
    if (music.rule)
        m_music = std::make_unique<Sorting>(music, names);
    if (movies.rule)
        m_movies = std::make_unique<Sorting>(movies, names);
}

UploadSorter::~UploadSorter() = default;

UploadSorter::Answer UploadSorter::answerFor(const CString& path)
{
    FileInfo info;
    if (!CQoUtils::isMusicFilePath(path) || fileSystem().info(path, Spelling::exact, info) != 0)
        return {};
    HdFile file = knownFile(path, info);
    if (!file)
        file = readFileAt(path, info);
    Sorting* const sorting = isVideo(*file) ? m_movies.get() : m_music.get();
    return sorting ? sorting->answerFor(file) : Answer();
}
} // namespace qo::host
