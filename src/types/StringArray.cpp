#include "types/StringArray.h"

CString CStringArray::join(const char16_t* separator) const
{
    CString result;
    for (int i = 0; i < GetSize(); ++i)
    {
        if (i > 0)
            result += separator;
        result += GetAt(i);
    }
    return result;
}

CStringArray CStringArray::split(const CString& text, char16_t separator)
{
    CStringArray parts;
    int begin = 0;
    while (begin < text.GetLength())
    {
        int end = text.Find(separator, begin);
        if (end < 0)
            end = text.GetLength();
        parts.Add(text.Mid(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}
