#pragma once

#include "QoColl/Db/Records/Forward.h"

class CQoCollDb;
class CQoCollDbImporter;
class CQoCollDbUtils;

namespace qo
{
class FileRuns;
} // namespace qo
