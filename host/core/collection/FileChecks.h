#pragma once

#include <QoKernel/Kernel.h>

#include <string>

namespace qo::host
{
class Trash;

/// What has to be so before a file or folder is moved, copied or thrown away. Refusals throw
/// HostError with one sentence. Paths in collection form, spelled as the disk spells them. For the
/// kernel's thread, with the collection loaded.
namespace check
{
/// It is there; a link counts wherever it leads to. The deed is a word like "moved".
void source(const CString& path, const std::string& deed);
/// It neither is nor holds a root folder, the home folder, the trash or a folder of this program,
/// under whatever name, and is no part of this program's data.
void notProtected(const CString& path, const std::string& deed, const Trash& trash);
/// It lies below a root folder.
void inCollection(const CString& path, const std::string& deed);
/// It is a folder, or leads to one.
void folder(const CString& path);
/// Nothing has that name yet, the folder of it is part of the collection, and the source does not
/// hold it.
void freeTarget(const CString& from, const CString& to);
} // namespace check

/// An existing folder takes the source in under the name it has; what differs from the source in
/// case alone and is the same file is another name for it.
CString targetOf(const CString& from, const CString& to);
/// Whether anything has that name, a link that leads nowhere too.
bool nameExists(const CString& path);
} // namespace qo::host
