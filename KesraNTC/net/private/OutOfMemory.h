#pragma once

#include <new>

namespace Kesra
{

/// Memory ran out while the library queued or decoded a packet: unlike what a handler throws, it ends the
/// connection when it happens on the receive thread.
class OutOfMemory : public std::bad_alloc
{
};

} // namespace Kesra
