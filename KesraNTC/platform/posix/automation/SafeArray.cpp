#include "KesraNTC/platform/posix/automation/SafeArray.h"

#include "KesraNTC/platform/posix/automation/Bstr.h"
#include "KesraNTC/platform/posix/automation/Variant.h"

#include <cstdlib>
#include <cstring>

namespace
{

// The element type stands directly before the descriptor.
constexpr std::size_t PrefixSize = 16;
constexpr std::uint64_t LargestDataSize = 0x7FFFFFFF;

ULONG ElementSize(VARTYPE type)
{
    switch (type) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
        return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
        return 8;
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
        return sizeof(void*);
    case VT_VARIANT:
    case VT_DECIMAL:
        return 16;
    default:
        return 0;
    }
}

USHORT Features(VARTYPE type)
{
    switch (type) {
    case VT_BSTR:
        return FADF_BSTR | FADF_HAVEVARTYPE;
    case VT_UNKNOWN:
        return FADF_UNKNOWN;
    case VT_DISPATCH:
        return FADF_DISPATCH;
    case VT_VARIANT:
        return FADF_VARIANT | FADF_HAVEVARTYPE;
    default:
        return FADF_HAVEVARTYPE;
    }
}

VARTYPE TypeOf(const SAFEARRAY* array)
{
    VARTYPE type;
    std::memcpy(&type, reinterpret_cast<const char*>(array) - sizeof type, sizeof type);
    return type;
}

std::size_t ElementCount(const SAFEARRAY* array)
{
    std::size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i)
        count *= array->rgsabound[i].cElements;
    return count;
}

SAFEARRAY* AllocateDescriptor(VARTYPE type, USHORT dimensions)
{
    const std::size_t size = sizeof(SAFEARRAY) + (dimensions - 1U) * sizeof(SAFEARRAYBOUND);
    auto* const block = static_cast<char*>(std::calloc(1, PrefixSize + size));
    if (block == nullptr)
        return nullptr;
    std::memcpy(block + PrefixSize - sizeof type, &type, sizeof type);
    auto* const array = reinterpret_cast<SAFEARRAY*>(block + PrefixSize);
    array->cDims = dimensions;
    array->fFeatures = Features(type);
    array->cbElements = ElementSize(type);
    return array;
}

void FreeDescriptor(SAFEARRAY* array)
{
    std::free(reinterpret_cast<char*>(array) - PrefixSize);
}

bool AllocateData(SAFEARRAY* array)
{
    std::uint64_t size = array->cbElements;
    for (USHORT i = 0; i < array->cDims; ++i) {
        size *= array->rgsabound[i].cElements;
        if (size > LargestDataSize)
            return false;
    }
    // An array without elements has data too, only none to look at.
    array->pvData = std::calloc(1, size > 0 ? size : 1);
    return array->pvData != nullptr;
}

HRESULT CopyText(BSTR source, BSTR& target)
{
    if (source == nullptr)
        return S_OK;
    target = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(source), SysStringByteLen(source));
    return target == nullptr ? E_OUTOFMEMORY : S_OK;
}

/// Into zeroed elements; what was copied before a failure stays, for the target's destruction to free.
HRESULT CopyElements(const SAFEARRAY* source, SAFEARRAY* target)
{
    const std::size_t count = ElementCount(source);
    HRESULT result = S_OK;
    switch (TypeOf(source)) {
    case VT_BSTR:
        for (std::size_t i = 0; i < count && SUCCEEDED(result); ++i)
            result = CopyText(static_cast<BSTR*>(source->pvData)[i], static_cast<BSTR*>(target->pvData)[i]);
        return result;
    case VT_VARIANT:
        for (std::size_t i = 0; i < count && SUCCEEDED(result); ++i)
            result = VariantCopy(static_cast<VARIANT*>(target->pvData) + i,
                                 static_cast<VARIANT*>(source->pvData) + i);
        return result;
    case VT_UNKNOWN:
    case VT_DISPATCH:
        for (std::size_t i = 0; i < count; ++i)
            if (IUnknown* const object = static_cast<IUnknown**>(source->pvData)[i])
                object->AddRef();
        [[fallthrough]];
    default:
        std::memcpy(target->pvData, source->pvData, count * source->cbElements);
        return S_OK;
    }
}

void ClearElements(SAFEARRAY* array)
{
    const std::size_t count = ElementCount(array);
    switch (TypeOf(array)) {
    case VT_BSTR:
        for (std::size_t i = 0; i < count; ++i)
            SysFreeString(static_cast<BSTR*>(array->pvData)[i]);
        break;
    case VT_VARIANT:
        for (std::size_t i = 0; i < count; ++i)
            VariantClear(static_cast<VARIANT*>(array->pvData) + i);
        break;
    case VT_UNKNOWN:
    case VT_DISPATCH:
        for (std::size_t i = 0; i < count; ++i)
            if (IUnknown* const object = static_cast<IUnknown**>(array->pvData)[i])
                object->Release();
        break;
    default:
        break;
    }
}

} // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds)
{
    if (ElementSize(type) == 0 || dimensions == 0 || dimensions > 0xFFFF || bounds == nullptr)
        return nullptr;
    SAFEARRAY* const array = AllocateDescriptor(type, static_cast<USHORT>(dimensions));
    if (array == nullptr)
        return nullptr;
    for (UINT i = 0; i < dimensions; ++i)
        array->rgsabound[i] = bounds[dimensions - 1 - i];
    if (AllocateData(array))
        return array;
    FreeDescriptor(array);
    return nullptr;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG elements)
{
    SAFEARRAYBOUND bound{elements, lowerBound};
    return SafeArrayCreate(type, 1, &bound);
}

HRESULT SafeArrayDestroy(SAFEARRAY* array)
{
    if (array == nullptr)
        return S_OK;
    if (array->cLocks > 0)
        return DISP_E_ARRAYISLOCKED;
    ClearElements(array);
    std::free(array->pvData);
    FreeDescriptor(array);
    return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** target)
{
    if (target == nullptr)
        return E_INVALIDARG;
    *target = nullptr;
    if (source == nullptr)
        return S_OK;
    SAFEARRAY* const copy = AllocateDescriptor(TypeOf(source), source->cDims);
    if (copy == nullptr)
        return E_OUTOFMEMORY;
    std::memcpy(copy->rgsabound, source->rgsabound, source->cDims * sizeof(SAFEARRAYBOUND));
    if (!AllocateData(copy)) {
        FreeDescriptor(copy);
        return E_OUTOFMEMORY;
    }
    const HRESULT result = CopyElements(source, copy);
    if (SUCCEEDED(result))
        *target = copy;
    else
        SafeArrayDestroy(copy);
    return result;
}

UINT SafeArrayGetDim(SAFEARRAY* array)
{
    return array != nullptr ? array->cDims : 0;
}

UINT SafeArrayGetElemsize(SAFEARRAY* array)
{
    return array != nullptr ? array->cbElements : 0;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type)
{
    if (array == nullptr || type == nullptr)
        return E_INVALIDARG;
    *type = TypeOf(array);
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* lowerBound)
{
    if (array == nullptr || lowerBound == nullptr)
        return E_INVALIDARG;
    if (dimension == 0 || dimension > array->cDims)
        return DISP_E_BADINDEX;
    *lowerBound = array->rgsabound[array->cDims - dimension].lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* upperBound)
{
    const HRESULT result = SafeArrayGetLBound(array, dimension, upperBound);
    if (FAILED(result))
        return result;
    // Wraps where the real bound does not fit.
    const ULONG last =
        static_cast<ULONG>(*upperBound) + array->rgsabound[array->cDims - dimension].cElements - 1;
    *upperBound = static_cast<LONG>(last);
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data)
{
    if (array == nullptr || data == nullptr)
        return E_INVALIDARG;
    if (array->cLocks == 0xFFFF)
        return E_UNEXPECTED;
    ++array->cLocks;
    *data = array->pvData;
    return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array)
{
    if (array == nullptr)
        return E_INVALIDARG;
    if (array->cLocks == 0)
        return E_UNEXPECTED;
    --array->cLocks;
    return S_OK;
}
