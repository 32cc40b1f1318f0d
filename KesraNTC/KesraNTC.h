#pragma once

// Everything a game includes, from the ground up. docs/using.md tells a game's story from the first call to
// the last; the header of each class has the details.

// Comes first: it says what a compiler must understand.
#include "KesraNTC/platform/Export.h"

#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/CFile.h"
#include "KesraNTC/base/CFixCharString.h"
#include "KesraNTC/base/CLock.h"
#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/base/COLEDateTimeSpan.h"
#include "KesraNTC/base/COLEVariant.h"
#include "KesraNTC/base/CString.h"
#include "KesraNTC/base/Trace.h"

#include "KesraNTC/net/CNTBase.h"
#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/net/CNTStatistics.h"
#include "KesraNTC/net/CNetClientIO.h"
#include "KesraNTC/net/CNetIO.h"
#include "KesraNTC/net/CPropCollection.h"
#include "KesraNTC/net/DateEncoding.h"
#include "KesraNTC/net/END_REASON.h"
#include "KesraNTC/net/GS_RESULT.h"
#include "KesraNTC/net/OVERLAPPED_PLUS.h"
#include "KesraNTC/net/VariantEncoding.h"

#include "KesraNTC/world/CDRVector.h"
#include "KesraNTC/world/CNTVector.h"
#include "KesraNTC/world/CPartyMember.h"
#include "KesraNTC/world/TAvatar.h"
#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TMonster.h"
#include "KesraNTC/world/TNPC.h"
#include "KesraNTC/world/TObject.h"
#include "KesraNTC/world/TPrivData.h"
#include "KesraNTC/world/TSkill.h"
#include "KesraNTC/world/TWorldItem.h"
#include "KesraNTC/world/sAttackResult.h"
#include "KesraNTC/world/sGS.h"

#include "KesraNTC/rpc/CNTMainClient.h"
#include "KesraNTC/rpc/CNTProxy.h"
#include "KesraNTC/rpc/CNTProxy_CLToGS.h"
#include "KesraNTC/rpc/CNTStub.h"
#include "KesraNTC/rpc/CNTStub_GSToCL.h"
#include "KesraNTC/rpc/CNTStub_Quiet.h"
#include "KesraNTC/rpc/CNestedReply.h"
#include "KesraNTC/rpc/MessageNumbers.h"
