#include "Physical/DirLTNames.h"

void CDirLTNames::addName(CStringArray& names, const CString& name)
{
    for (const CString& known : names)
    {
        if (known.CompareNoCase(name) == 0)
            return;
    }
    names.Add(name);
}
