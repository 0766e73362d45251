#pragma once

class CException;
class CString;
class CStringArray;
struct FILETIME;
struct GUID;

namespace qo
{
class FilePath;
class FormatArg;
class TextPool;
} // namespace qo
