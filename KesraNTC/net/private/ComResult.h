#pragma once

#include "KesraNTC/platform/Platform.h"

#include <new>

namespace Kesra
{

/// Does the work and returns the code of a _com_error that it throws.
///
/// A game cannot catch what is thrown inside the DLL, for each of the two has a C++ runtime of its own. What
/// may throw is therefore exported as a function that returns a code, and inline code of the public headers,
/// which is compiled into the game, throws it.
template <class Work> HRESULT ComResult(Work work) noexcept
{
    try {
        work();
        return S_OK;
    } catch (const _com_error& error) {
        return error.Error();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace Kesra
