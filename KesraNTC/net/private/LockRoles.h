#pragma once

#include "KesraNTC/base/private/Held.h"

namespace Kesra
{

inline constexpr LockRole DispatchRole{}; ///< CNetIO::Lock: one packet at a time
inline constexpr LockRole SendRole{};     ///< IoState::SendLock

} // namespace Kesra
