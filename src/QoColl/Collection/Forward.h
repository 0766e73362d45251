#pragma once

#include "QoColl/Db/Forward.h"

#include <boost/smart_ptr/shared_ptr.hpp>

#include <vector>

class CHDDirectory;
class CHDFile;
class CHDObject;
class CQoCollection;
class CQoFileChangeInfoList;
class CQoUtils;
class IQoScanHost;

namespace qo
{
class StoredFiles;
struct FoundFile;
using FoundFiles = std::vector<FoundFile>;
} // namespace qo
