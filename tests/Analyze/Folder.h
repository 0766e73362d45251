#pragma once

#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "support/Print.h"

#include <boost/make_shared.hpp>

/// A directory of the test's with files made from records; released with its sub-directories when
/// this ends.
class Folder
{
public:
    using Dir = boost::shared_ptr<CHDDirectory>;
    using File = boost::shared_ptr<CHDFile>;

    explicit Folder(const CString& path = u"C:\\m")
        : dir(CHDDirectory::createDir(CQoCollPath(path), CHDDirectory::NullDir))
    {
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { CQoUtils::releaseHDDir(dir); }

    static Dir addDir(const Dir& parent, const CString& name)
    {
        return CHDDirectory::createDir(CQoCollPath(parent->getPath().toString(true) + u"\\" + name),
                                       parent);
    }
    /// A file of the same name in other case is returned as it is.
    static File addFile(const Dir& parent, const CString& name, QoFileDbItem record = {})
    {
        record.path = parent->getPath().toString(true) + u"\\" + name;
        if (const File known = parent->getFile(record.path))
            return known;
        const File file = CHDFile::createHDFile(boost::make_shared<QoFileDbItem>(record));
        CHDDirectory::addFile(parent, file);
        return file;
    }
    static QoFileDbItem
    record(const char16_t* artist, const char16_t* album, const char16_t* title = u"")
    {
        QoFileDbItem item;
        item.artist = artist;
        item.album = album;
        item.title = title;
        return item;
    }
    File add(const CString& name, const QoFileDbItem& item = {})
    {
        return addFile(dir, name, item);
    }

    Dir dir;
};
