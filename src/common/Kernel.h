#pragma once

#include "types/Export.h"

class CKVModule;
class KVConfig;

/// Must be the first call into the kernel: declares the settings on the host's store and starts
/// tracing at the configured level ("None" writes no file at all). Opens no database and touches no
/// collection. Both objects stay the host's and must outlive the kernel. On the host's main thread,
/// while no other kernel call runs.
QO_API void initQoKernel(KVConfig* config, CKVModule* module);
