#include "Logical/LTList.h"

qo::LTList::~LTList() = default;
