#include "KesraNTC/base/Trace.h"

void TRACE(const char*, ...) {}
