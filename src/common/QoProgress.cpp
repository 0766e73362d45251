#include "common/QoProgress.h"

#include "common/QoBaseObj.h"

CQoBaseObj::~CQoBaseObj() = default;

IQoProgress::~IQoProgress() = default;

bool CDummyProgress::isCanceled()
{
    return false;
}
