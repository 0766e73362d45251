#pragma once

#include <QoKernel/Collection.h>

#include <map>
#include <string>

/// What a record knows and its file does not tell, as texts by name.
namespace qo::host::recordvalues
{
std::map<std::string, std::string> of(const QoFileDbItem& record);
/// A new record of that path and lasting id with the values; its file is read when it comes into
/// the collection. Values that are no such texts are left out.
QoFileDbItemPtr recordOf(const CString& path,
                         const std::string& id,
                         const std::map<std::string, std::string>& values);
} // namespace qo::host::recordvalues
