#pragma once

// Sharing: extracts of collections, links that invite to them, and files of peers.
#include "QoColl/Sharing/QoDbExtract.h"
#include "QoColl/Sharing/QoShareDownloadItem.h"
#include "QoColl/Sharing/QoShareManager.h"
#include "QoColl/Sharing/ShareInvitation.h"
#include "QoColl/Sharing/VelmoraShareManager.h"
