#pragma once

#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

/// An automation VARIANT that owns its value: a type code and 8 bytes that hold the value or point at it. The
/// object is nothing but those 16 bytes and serves wherever a VARIANT is expected.
///
/// Nothing throws. A platform call that fails is reported to TRACE, and the object keeps what the call left
/// in it. An object belongs to one thread at a time.
class KESRANTC_API COLEVariant : public tagVARIANT
{
public:
    /// VT_EMPTY, all 16 bytes zero.
    COLEVariant();
    /// VT_UI1.
    COLEVariant(unsigned char value);
    /// VT_BOOL when that type is asked for (true unless the value is 0), VT_I2 otherwise.
    COLEVariant(short value, unsigned short type);
    /// VT_ERROR or VT_BOOL when that type is asked for, VT_I4 otherwise; of the low 32 bits.
    COLEVariant(long value, unsigned short type);
    /// VT_R4.
    COLEVariant(float value);
    /// VT_R8.
    COLEVariant(double value);
    /// VT_DATE with the date's value, whatever its status.
    COLEVariant(const COLEDateTime& value);
    /// Deep copies: texts and arrays are duplicated.
    COLEVariant(const COLEVariant& source);
    COLEVariant(const tagVARIANT& source);
    /// Releases the value.
    ~COLEVariant();

    /// Deep copies. Assigning an object to itself changes nothing.
    COLEVariant& operator=(const COLEVariant& source);
    COLEVariant& operator=(const tagVARIANT& source);

    // An object that already has the type keeps it; any other value is released first. VT_BOOL stays VT_BOOL
    // under integers, and VT_ERROR stays VT_ERROR under a long.
    COLEVariant& operator=(unsigned char value);
    COLEVariant& operator=(short value);
    COLEVariant& operator=(long value);
    COLEVariant& operator=(float value);
    COLEVariant& operator=(double value);
    COLEVariant& operator=(const COLEDateTime& value);

    /// Releases the value; the object is VT_EMPTY then.
    void Clear();
    /// The same.
    void _ClearCompat();
    /// Converts the source, or this object when the source is null, into this object.
    void ChangeType(unsigned short type, tagVARIANT* source);
    /// Takes the value over and leaves the source VT_EMPTY.
    void Attach(tagVARIANT& source);
    /// Hands the value to the caller, who clears it, and leaves this object VT_EMPTY.
    tagVARIANT Detach();
    /// The object itself.
    operator tagVARIANT*() { return this; }

    /// Nonzero when type and value agree: VT_EMPTY, VT_NULL, VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE,
    /// VT_BSTR (a null text is the empty one), VT_ERROR, VT_BOOL, VT_UI1, interfaces by address, and arrays
    /// byte by byte whatever their lower bounds. A value of another type equals only itself, the same object.
    int operator==(const tagVARIANT& other) const;
    int operator==(const COLEVariant& other) const { return *this == static_cast<const tagVARIANT&>(other); }

private:
    template <class T> COLEVariant& Store(unsigned short type, T tagVARIANT::*member, T value);
};
