#pragma once

// Variants and what they hold.
#include "KesraNTC/platform/posix/AutomationTypes.h"
#include "KesraNTC/platform/posix/Bstr.h"
#include "KesraNTC/platform/posix/ComError.h"
#include "KesraNTC/platform/posix/HResult.h"
#include "KesraNTC/platform/posix/SafeArray.h"
#include "KesraNTC/platform/posix/Variant.h"
#include "KesraNTC/platform/posix/VariantClass.h"
