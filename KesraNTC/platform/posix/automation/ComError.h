#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/automation/HResult.h"

/// What automation failures are thrown as.
class KESRANTC_API _com_error
{
public:
    explicit _com_error(HRESULT result) noexcept : Result(result) {}
    HRESULT Error() const noexcept { return Result; }

private:
    HRESULT Result;
};

[[noreturn]] inline void _com_issue_error(HRESULT result)
{
    throw _com_error(result);
}

namespace _com_util
{
inline void CheckError(HRESULT result)
{
    if (FAILED(result))
        _com_issue_error(result);
}
} // namespace _com_util
