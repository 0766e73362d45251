#pragma once

#include "QoColl/Db/Forward.h"

#include <boost/smart_ptr/shared_ptr.hpp>

class CFileFilter;
class CHDDirectory;
class CHDFile;
class CHDObject;
class CQoCollection;
class CQoFileChangeInfoList;
class CQoUtils;

namespace qo
{
class FoundFiles;
}
