#pragma once

// Files from elsewhere: downloads in the background.
#include "QoColl/Plugins/DownloadItem.h"
#include "QoColl/Plugins/QoDownloadItem.h"
