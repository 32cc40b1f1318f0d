#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/automation/AutomationTypes.h"

constexpr USHORT FADF_HAVEVARTYPE = 0x80;
constexpr USHORT FADF_BSTR = 0x100;
constexpr USHORT FADF_UNKNOWN = 0x200;
constexpr USHORT FADF_DISPATCH = 0x400;
constexpr USHORT FADF_VARIANT = 0x800;

// Dimensions count from 1. An array owns its elements: texts, variants and the arrays in them, references.

/// An array of zeroed elements; null when the type cannot be an element or memory does not suffice.
KESRANTC_API SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
KESRANTC_API SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG elements);
/// Frees the array and what its elements own, unless it is locked. Null is nothing to free.
KESRANTC_API HRESULT SafeArrayDestroy(SAFEARRAY* array);
/// Copies elements deeply. The copy of null is null.
KESRANTC_API HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** target);

KESRANTC_API UINT SafeArrayGetDim(SAFEARRAY* array);
KESRANTC_API UINT SafeArrayGetElemsize(SAFEARRAY* array);
KESRANTC_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
KESRANTC_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* lowerBound);
/// One below the lower bound when the dimension has no elements.
KESRANTC_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* upperBound);

/// Locks the array and yields its elements, the first dimension changing fastest.
KESRANTC_API HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
KESRANTC_API HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
