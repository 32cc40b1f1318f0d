#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/automation/AutomationTypes.h"

constexpr USHORT VARIANT_ALPHABOOL = 0x2;

KESRANTC_API void VariantInit(VARIANT* variant);

/// Frees what the variant owns and makes it empty. Fails, and changes nothing, for an unknown type and for a
/// locked array.
KESRANTC_API HRESULT VariantClear(VARIANT* variant);

/// Replaces the target by a deep copy; a reference is copied as a reference. A variant copied to itself
/// stays.
KESRANTC_API HRESULT VariantCopy(VARIANT* target, const VARIANT* source);
/// The same, but of the value behind a reference.
KESRANTC_API HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source);

/// Replaces the target, which may be the source, by the source's value converted to a type; on failure the
/// target stays. Texts are written and read as in US English; of the flags VARIANT_ALPHABOOL counts, which
/// writes a Boolean as "True" or "False" instead of "-1" or "0".
KESRANTC_API HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type);
/// The same for a language; US English (0x0409) is the only one here.
KESRANTC_API HRESULT VariantChangeTypeEx(VARIANT* target, const VARIANT* source, LCID language, USHORT flags,
                                         VARTYPE type);

/// The date of a DOS directory entry: date bits 0-4 day, 5-8 month, 9-15 years since 1980; time bits 0-4
/// seconds / 2, 5-10 minutes, 11-15 hours. Returns 0 when it is none.
KESRANTC_API INT DosDateTimeToVariantTime(USHORT dosDate, USHORT dosTime, DOUBLE* variantTime);
