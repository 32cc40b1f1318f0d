#pragma once

#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"

/// One member of a party. No message of the library carries it; a game puts it into packets of its own and
/// gives the fields their meaning.
class KESRANTC_API CPartyMember
{
public:
    CPartyMember();
    CPartyMember(const CPartyMember&);
    CPartyMember& operator=(const CPartyMember&);
    ~CPartyMember();

    short Value1 = 0;
    int Value2 = 0; ///< does not travel
    CString Text1;
    CString Text2;
    short Value3 = 0;
    unsigned char Value4 = 0;
};

/// The wire form, 9 bytes besides the two texts. Value2 does not travel and stays, and so does a text that
/// arrives empty.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const CPartyMember& member);
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, CPartyMember& member);
