#include "types/Exception.h"

CException::~CException() = default;

bool CException::GetErrorMessage(char16_t* error, unsigned maxError, unsigned* helpContext) const
{
    if (helpContext)
        *helpContext = 0;
    if (error && maxError > 0)
        error[0] = 0;
    return false;
}
