#include "KesraNTC/world/TObject.h"

TObject::~TObject() = default;

void TObject::Init()
{
    ID = 0;
    JoinedSessionID = 0;
    CurZoneID = -1;
    LastZoneID = -1;
}

bool TObject::SetJoinedSessionID(short id)
{
    JoinedSessionID = id;
    return true;
}
