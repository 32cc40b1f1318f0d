#pragma once

#include "KesraNTC/platform/Export.h"

/// What a client's pushed messages are delivered to; the game attaches an object of a class derived from
/// CNTStub_GSToCL and keeps it alive until nothing is dispatched any more. Holds nothing.
class KESRANTC_API CNTStub
{
public:
    CNTStub() = default;
    CNTStub(const CNTStub&) {}
    CNTStub& operator=(const CNTStub&) { return *this; }
    virtual ~CNTStub();
};
