#pragma once

namespace qo
{
class IClock;
class IFileSystem;
class ISpecialFolders;
class DriveMap;
class FolderAhead;
class Platform;
struct DirEntry;
struct FileInfo;
struct FolderErrors;
} // namespace qo
