#pragma once

#include "KesraNTC/platform/Platform.h"

/// An overlapped block with its owner and its direction.
struct OVERLAPPED_PLUS : OVERLAPPED {
    unsigned long Client; ///< the owner's word, set by CNetIO::AttachClientToOVERLAPPED
    unsigned char IoType; ///< 0 in the read block, 1 in the write block
};
