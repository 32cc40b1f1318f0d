#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/world/TObject.h"

/// A character that nobody plays.
class KESRANTC_API TNPC : public TObject
{
public:
    /// As Init leaves it, of type TypeNPC and template 0.
    TNPC();
    /// A character of a default record that takes what assignment takes.
    TNPC(const TNPC& other);
    /// Takes everything over, so that a character stays what it is when its list grows.
    TNPC(TNPC&& other) noexcept = default;
    /// Copies the movement (but the dead-reckoning state) and the identifier. Template, session, type, zones
    /// and dead-reckoning state stay, also when the other is a temporary. Inside a list these therefore
    /// belong to the place: erase, insert and sorting assign, and move a character without them. A list that
    /// is to be sorted or thinned out is better one of pointers.
    TNPC& operator=(const TNPC& other);
    ~TNPC() override;

    /// Restores the defaults: identifier and session 0, zones -1. Movement and template stay.
    void Init();

    /// Which character it is.
    short GetNpcTemplateID() const { return NpcTemplateID; }
    void SetNpcTemplateID(short id) { NpcTemplateID = id; }

private:
    short NpcTemplateID = 0;
};

/// Reads nothing: the wire form is empty, and a list of them is its count alone.
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, TNPC& npc);
