#pragma once

#include "types/Export.h"

class CKVModule;
class KVConfig;

/// Must be the first call into the kernel: declares the settings in the host's store and starts
/// tracing at the configured level ("None" writes no file). Opens no database and touches no
/// collection. Both objects belong to the host and must outlive the kernel. To be called on the
/// host's main thread while no other kernel call runs.
QO_API void initQoKernel(KVConfig* config, CKVModule* module);
