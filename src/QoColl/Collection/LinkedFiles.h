#pragma once

#include "QoColl/Collection/QoUtilsTypes.h"

#include <functional>

namespace qo
{
/// False ends the visit.
using FileVisitor = std::function<bool(const boost::shared_ptr<CHDFile>&)>;

/// Visits the files behind an object (see CQoUtils::getLinkedFiles) until a visit returns false.
/// Whether it came through. The visitor changes neither tree.
bool visitLinkedFiles(const boost::shared_ptr<CQoCheckObject>& object, const FileVisitor& visit);

/// Whether the file belongs to the genre, artist and album that are set.
bool belongsTo(const CHDFile& file, const QoUtilsTypes::ParentItemsInfo& parents);
} // namespace qo
