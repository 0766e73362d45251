#pragma once

#include "QoColl/Collection/QoUtilsTypes.h"

#include <functional>

namespace qo
{
/// Is called for each file; false ends the visit.
using FileVisitor = std::function<bool(const boost::shared_ptr<CHDFile>&)>;

/// Visits the files of an object (see CQoUtils::getLinkedFiles) until a visit returns false. True
/// if all visits returned true. The visitor must change neither tree.
bool visitLinkedFiles(const boost::shared_ptr<CQoCheckObject>& object, const FileVisitor& visit);

/// Whether the file belongs to the genre, artist and album that are set in parents.
bool belongsTo(const CHDFile& file, const QoUtilsTypes::ParentItemsInfo& parents);
} // namespace qo
