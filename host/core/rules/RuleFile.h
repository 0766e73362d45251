#pragma once

#include <QoKernel/Rules.h>

#include <memory>

namespace qo::host
{
/// Reads a rule file. Throws HostError that says what is wrong with it: notFound when there is no
/// such file, failed when it cannot be read or holds no valid rule.
std::unique_ptr<CReorganizeRule> readRuleFile(const CString& path);
} // namespace qo::host
