#pragma once

#include <QoKernel/Kernel.h>

namespace qo::host
{
/// Throws HostError unless the file can be read and has certificates (PEM).
void needCertificates(const CString& file);
} // namespace qo::host
