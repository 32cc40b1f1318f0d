#include "KesraNTC/base/COLEVariant.h"

#include "KesraNTC/base/Trace.h"

#include <cstring>

namespace
{

constexpr const char* SourceName = "OLEVariant";

void Report(HRESULT result)
{
    if (result == E_OUTOFMEMORY)
        TRACE("Memory Exception at %s : %d\n", SourceName, 440);
    else if (FAILED(result))
        TRACE("OLE Exception at %s : %d\n", SourceName, 324);
}

VARIANT_BOOL BooleanOf(bool value)
{
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

/// Neither below nor above: a NaN equals everything.
template <class Real> bool SameReal(Real left, Real right)
{
    return !(left < right) && !(left > right);
}

bool SameText(BSTR left, BSTR right)
{
    const UINT size = SysStringByteLen(left);
    return size == SysStringByteLen(right) && (size == 0 || std::memcmp(left, right, size) == 0);
}

/// Upper minus lower bound of a dimension.
ULONG Extent(SAFEARRAY* array, UINT dimension)
{
    LONG upper = 0;
    LONG lower = 0;
    Report(SafeArrayGetUBound(array, dimension, &upper));
    Report(SafeArrayGetLBound(array, dimension, &lower));
    return static_cast<ULONG>(upper) - static_cast<ULONG>(lower);
}

/// The elements of an array, accessible as long as this lives.
class ArrayAccess
{
public:
    explicit ArrayAccess(SAFEARRAY* array) : Array(array)
    {
        const HRESULT result = SafeArrayAccessData(Array, &Elements);
        Report(result);
        if (FAILED(result))
            Elements = nullptr;
    }
    ArrayAccess(const ArrayAccess&) = delete;
    ArrayAccess& operator=(const ArrayAccess&) = delete;
    ~ArrayAccess()
    {
        if (Elements != nullptr)
            Report(SafeArrayUnaccessData(Array));
    }
    const void* Data() const { return Elements; }

private:
    SAFEARRAY* Array;
    void* Elements = nullptr;
};

bool SameArray(SAFEARRAY* left, SAFEARRAY* right)
{
    if (left == nullptr || right == nullptr)
        return left == right;
    const UINT dimensions = SafeArrayGetDim(left);
    if (dimensions != SafeArrayGetDim(right))
        return false;
    if (dimensions == 0)
        return true;
    std::size_t size = SafeArrayGetElemsize(left);
    if (size != SafeArrayGetElemsize(right))
        return false;
    for (UINT dimension = 1; dimension <= dimensions; ++dimension) {
        const ULONG extent = Extent(left, dimension);
        if (extent != Extent(right, dimension))
            return false;
        size *= static_cast<ULONG>(extent + 1);
    }
    const ArrayAccess leftAccess(left);
    const ArrayAccess rightAccess(right);
    return leftAccess.Data() != nullptr && rightAccess.Data() != nullptr &&
           std::memcmp(leftAccess.Data(), rightAccess.Data(), size) == 0;
}

bool SameValue(const tagVARIANT& left, const tagVARIANT& right)
{
    if ((left.vt & VT_ARRAY) != 0 && (left.vt & VT_BYREF) == 0)
        return SameArray(left.parray, right.parray);
    switch (left.vt) {
    case VT_EMPTY:
    case VT_NULL:
        return true;
    case VT_I2:
    case VT_BOOL:
        return left.iVal == right.iVal;
    case VT_UI1:
        return left.bVal == right.bVal;
    case VT_I4:
    case VT_ERROR:
        return left.lVal == right.lVal;
    case VT_DISPATCH:
    case VT_UNKNOWN:
        return left.punkVal == right.punkVal;
    case VT_CY:
        return left.cyVal.int64 == right.cyVal.int64;
    case VT_R4:
        return SameReal(left.fltVal, right.fltVal);
    case VT_R8:
    case VT_DATE:
        return SameReal(left.dblVal, right.dblVal);
    case VT_BSTR:
        return SameText(left.bstrVal, right.bstrVal);
    default:
        return false;
    }
}

} // namespace

COLEVariant::COLEVariant()
{
    std::memset(static_cast<tagVARIANT*>(this), 0, sizeof(tagVARIANT));
}

COLEVariant::COLEVariant(unsigned char value)
{
    vt = VT_UI1;
    bVal = value;
}

COLEVariant::COLEVariant(short value, unsigned short type)
{
    vt = type == VT_BOOL ? VT_BOOL : VT_I2;
    iVal = type == VT_BOOL ? BooleanOf(value != 0) : value;
}

COLEVariant::COLEVariant(long value, unsigned short type)
{
    vt = type == VT_ERROR || type == VT_BOOL ? type : static_cast<unsigned short>(VT_I4);
    if (type == VT_BOOL)
        boolVal = BooleanOf(value != 0);
    else
        lVal = static_cast<LONG>(value);
}

COLEVariant::COLEVariant(float value)
{
    vt = VT_R4;
    fltVal = value;
}

COLEVariant::COLEVariant(double value)
{
    vt = VT_R8;
    dblVal = value;
}

COLEVariant::COLEVariant(const COLEDateTime& value)
{
    vt = VT_DATE;
    date = value;
}

COLEVariant::COLEVariant(const COLEVariant& source) : COLEVariant(static_cast<const tagVARIANT&>(source)) {}

COLEVariant::COLEVariant(const tagVARIANT& source) : COLEVariant()
{
    *this = source;
}

COLEVariant::~COLEVariant()
{
    Clear();
}

COLEVariant& COLEVariant::operator=(const COLEVariant& source)
{
    return *this = static_cast<const tagVARIANT&>(source);
}

COLEVariant& COLEVariant::operator=(const tagVARIANT& source)
{
    if (&source != this)
        Report(VariantCopy(this, const_cast<tagVARIANT*>(&source)));
    return *this;
}

template <class T> COLEVariant& COLEVariant::Store(unsigned short type, T tagVARIANT::*member, T value)
{
    if (vt != type) {
        Clear();
        vt = type;
    }
    this->*member = value;
    return *this;
}

COLEVariant& COLEVariant::operator=(unsigned char value)
{
    return Store(VT_UI1, &tagVARIANT::bVal, value);
}

COLEVariant& COLEVariant::operator=(short value)
{
    if (vt == VT_BOOL)
        return Store(VT_BOOL, &tagVARIANT::boolVal, BooleanOf(value != 0));
    return Store(VT_I2, &tagVARIANT::iVal, value);
}

COLEVariant& COLEVariant::operator=(long value)
{
    if (vt == VT_BOOL)
        return Store(VT_BOOL, &tagVARIANT::boolVal, BooleanOf(value != 0));
    return Store(vt == VT_ERROR ? VT_ERROR : VT_I4, &tagVARIANT::lVal, static_cast<LONG>(value));
}

COLEVariant& COLEVariant::operator=(float value)
{
    return Store(VT_R4, &tagVARIANT::fltVal, value);
}

COLEVariant& COLEVariant::operator=(double value)
{
    return Store(VT_R8, &tagVARIANT::dblVal, value);
}

COLEVariant& COLEVariant::operator=(const COLEDateTime& value)
{
    return Store(VT_DATE, &tagVARIANT::date, static_cast<double>(value));
}

void COLEVariant::Clear()
{
    VariantClear(this);
}

void COLEVariant::_ClearCompat()
{
    Clear();
}

void COLEVariant::ChangeType(unsigned short type, tagVARIANT* source)
{
    if (source == nullptr)
        source = this;
    if (source != this || vt != type)
        Report(VariantChangeType(this, source, 0, type));
}

void COLEVariant::Attach(tagVARIANT& source)
{
    Clear();
    static_cast<tagVARIANT&>(*this) = source;
    source.vt = VT_EMPTY;
}

tagVARIANT COLEVariant::Detach()
{
    const tagVARIANT value = *this;
    vt = VT_EMPTY;
    return value;
}

int COLEVariant::operator==(const tagVARIANT& other) const
{
    return &other == this || (vt == other.vt && SameValue(*this, other));
}
