#pragma once

#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

/// Writes the date value in 8 bytes, as a double; the status does not travel.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const COLEDateTime& date);
/// Reads a date value; the status becomes valid. A value that did not come whole leaves the bytes it lacks.
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, COLEDateTime& date);
