#pragma once

#include "KesraNTC/platform/posix/Types.h"
#include "KesraNTC/platform/posix/automation/HResult.h"

// The automation types in their 32-bit layout; only pointers are wider.
using OLECHAR = WCHAR;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
/// A text that its 32-bit byte count precedes and a NUL follows, from SysAllocString and its kin.
using BSTR = OLECHAR*;
using FLOAT = float;
using DOUBLE = double;
using DATE = double;
using SCODE = LONG;
using LCID = DWORD;
using VARTYPE = unsigned short;
using VARIANT_BOOL = short;

/// Wide text in a source file: UTF-16 here as there.
#define OLESTR(text) u##text

constexpr VARIANT_BOOL VARIANT_TRUE = -1;
constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0xFFF,
};

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
};
using IID = GUID;
using REFIID = const IID&;

#define STDMETHODCALLTYPE

/// A reference-counted object of the game's; variants count their references to it.
struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    ~IUnknown() = default;
};
struct IDispatch : IUnknown {
};

// Their members are reached without naming a struct or union in between.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"

/// A fixed-point amount: 64 bits counting ten-thousandths.
union CY {
    struct {
        ULONG Lo;
        LONG Hi;
    };
    LONGLONG int64;
};

/// A 96-bit integer divided by 10 to the power of `scale` (0 to 28).
struct DECIMAL {
    USHORT wReserved;
    union {
        struct {
            BYTE scale;
            BYTE sign; ///< 0, or DECIMAL_NEG
        };
        USHORT signscale;
    };
    ULONG Hi32;
    union {
        struct {
            ULONG Lo32;
            ULONG Mid32;
        };
        ULONGLONG Lo64;
    };
};
constexpr BYTE DECIMAL_NEG = 0x80;

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

/// An array that knows its dimensions and bounds; the last dimension comes first in `rgsabound`.
struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];
};

/// A value and its type code, in 16 bytes. A decimal covers all of them but the type code.
struct tagVARIANT {
    union {
        struct {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            union {
                LONGLONG llVal;
                LONG lVal;
                BYTE bVal;
                SHORT iVal;
                FLOAT fltVal;
                DOUBLE dblVal;
                VARIANT_BOOL boolVal;
                SCODE scode;
                CY cyVal;
                DATE date;
                BSTR bstrVal;
                IUnknown* punkVal;
                IDispatch* pdispVal;
                SAFEARRAY* parray;
                BYTE* pbVal;
                SHORT* piVal;
                LONG* plVal;
                LONGLONG* pllVal;
                FLOAT* pfltVal;
                DOUBLE* pdblVal;
                VARIANT_BOOL* pboolVal;
                SCODE* pscode;
                CY* pcyVal;
                DATE* pdate;
                BSTR* pbstrVal;
                IUnknown** ppunkVal;
                IDispatch** ppdispVal;
                SAFEARRAY** pparray;
                tagVARIANT* pvarVal;
                PVOID byref;
                CHAR cVal;
                USHORT uiVal;
                ULONG ulVal;
                ULONGLONG ullVal;
                INT intVal;
                UINT uintVal;
                DECIMAL* pdecVal;
                CHAR* pcVal;
                USHORT* puiVal;
                ULONG* pulVal;
                ULONGLONG* pullVal;
                INT* pintVal;
                UINT* puintVal;
            };
        };
        DECIMAL decVal;
    };
};
using VARIANT = tagVARIANT;
using VARIANTARG = VARIANT;

#pragma GCC diagnostic pop

static_assert(sizeof(CY) == 8 && sizeof(DECIMAL) == 16 && sizeof(VARIANT) == 16,
              "values travel, and lie in arrays, with these sizes");
