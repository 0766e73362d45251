#pragma once

// Sharing: extracts of collections, and links that invite to them.
#include "QoColl/Sharing/QoDbExtract.h"
#include "QoColl/Sharing/ShareInvitation.h"
