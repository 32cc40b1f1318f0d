#pragma once

// Variants and what they hold.
#include "KesraNTC/platform/posix/automation/AutomationTypes.h"
#include "KesraNTC/platform/posix/automation/Bstr.h"
#include "KesraNTC/platform/posix/automation/ComError.h"
#include "KesraNTC/platform/posix/automation/HResult.h"
#include "KesraNTC/platform/posix/automation/SafeArray.h"
#include "KesraNTC/platform/posix/automation/Variant.h"
#include "KesraNTC/platform/posix/automation/VariantClass.h"
