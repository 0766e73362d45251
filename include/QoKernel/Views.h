#pragma once

// Views (CUV*): the panes that a host shows, their items and what stands behind these.
#include "QoColl/Collection/subsets/QoCheckHelper.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "UserView/QoChangedTagFilesInfo.h"
#include "UserView/UVUtils.h"
#include "UserView/UVViewHelper.h"
#include "UserView/UVViewItem.h"
#include "UserView/UVViewItemInfo.h"
