#pragma once

class CDirLTNames;
class CHDDirectory;
class CHDFile;
class CHDInplaceConvertedFile;
class CHDMusicFile;
class CHDObject;
class CHDOfflineFile;
class CHDOtherFile;
class CHDPictureFile;
class CHDSearchResult;
class CHDTextFile;
class CQoCheckObject;
class CSourceObject;
