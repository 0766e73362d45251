#pragma once

#include "Physical/HDFile.h"
#include "QoColl/Db/Records/QoFileDbItem.h"

#include <boost/make_shared.hpp>

/// A record of that path and nothing else.
inline QoFileDbItemPtr recordOf(const CString& path)
{
    auto item = boost::make_shared<QoFileDbItem>();
    item->path = path;
    return item;
}

/// A file of the tree, of the class that its extension asks for, with such a record.
inline boost::shared_ptr<CHDFile> fileOf(const CString& path)
{
    return CHDFile::createHDFile(recordOf(path));
}
