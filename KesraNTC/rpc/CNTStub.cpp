#include "KesraNTC/rpc/CNTStub.h"

CNTStub::~CNTStub() = default;
