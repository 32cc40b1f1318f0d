#pragma once

#include "KesraNTC/platform/Export.h"

#include <cstdio>

/// The diagnostic log: one text file per calendar day, KESRA_NETWORK_LOG/<month>월<day>일.log below the
/// process's current directory, with the two Korean characters in code page 949. The year is not part of the
/// name, and nothing deletes old files.
class KESRANTC_API CDebug
{
public:
    // An object holds nothing; what there is to call is static.
    CDebug();
    CDebug(const CDebug&);
    CDebug& operator=(const CDebug&);
    virtual ~CDebug();

    /// Does nothing.
    static void InitDebugMsg();

    /// Appends a printf-style message and one line end (CR LF, as for every newline of the message) to the
    /// log of the local date. A message is cut to 1023 bytes, and lost without report when the file cannot be
    /// opened. Safe from any thread: messages never mix.
    static void AppendDebugMsg(const char* format, ...) KESRANTC_PRINTF(1, 2);

private:
    static void AppendLine(const char* line);

    static std::FILE* DiskFile;
};
