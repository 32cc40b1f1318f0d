#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

class CNTClient;

/// The connection as a proxy sees it: something that sends packets and can be disconnected.
class KESRANTC_API CNTBase
{
public:
    CNTBase() = default;
    virtual ~CNTBase();

    /// Null: a client knows no other endpoints.
    virtual CNTClient* GetClientFromMachineID(unsigned short machineID);
    /// Does nothing here.
    virtual void Disconnect();
    /// Sends nothing and returns 0.
    virtual unsigned long SendToServer(CNTPacket& packet);

    /// Identifier of this endpoint; stored and returned only.
    void SetMachineID(unsigned short machineID) { MachineID = machineID; }
    unsigned short GetMachineID() { return MachineID; }

    unsigned short MachineID = 0;
};
