#pragma once

namespace qo
{
class IClock;
class IDrives;
class IFileSystem;
class IPortableDevices;
class ISpecialFolders;
class DriveMap;
class IFolderLister;
class Platform;
struct DirEntry;
struct FileInfo;
} // namespace qo
