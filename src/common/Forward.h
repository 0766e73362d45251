#pragma once

class CDummyProgress;
class CKVModule;
class CLoggerEx;
class CQoBaseObj;
class CQoCollPath;
class CQoException;
class CQoPathsInfoMap;
class CStdioFileEx;
class IQoProgress;
class KVConfig;
