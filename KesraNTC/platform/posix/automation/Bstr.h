#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/automation/AutomationTypes.h"

// Null stands for the empty text wherever a BSTR is read. The allocating calls return null when memory does
// not suffice, and for a null text of SysAllocString; a null text with a length yields that many NULs.

KESRANTC_API BSTR SysAllocString(const OLECHAR* text);
KESRANTC_API BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
/// Takes bytes, which need not be an even number, as they are.
KESRANTC_API BSTR SysAllocStringByteLen(LPCSTR bytes, UINT byteLength);
KESRANTC_API void SysFreeString(BSTR text);

/// Characters before the terminator, NULs among them included.
KESRANTC_API UINT SysStringLen(BSTR text);
KESRANTC_API UINT SysStringByteLen(BSTR text);
