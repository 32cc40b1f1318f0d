#pragma once

#include "KesraNTC/platform/Export.h"

#include <cstdio>

/// The diagnostic log: one text file per calendar day, KESRA_NETWORK_LOG/<month>월<day>일.log below the
/// process's current directory, with the two Korean characters in code page 949. The year is not part of the
/// name, and nothing deletes old files.
///
/// Hooks take messages over for a game that has a log of its own or shows them. All operations may be called
/// on any thread at any time.
class KESRANTC_API CDebug
{
public:
    /// Receives a message in code page 949 as it was formatted, cut to 1023 bytes, without an added line end.
    /// The text lives until the hook returns.
    ///
    /// A hook runs on the thread that has something to say, on several at once when several have, and often
    /// while the library holds a lock of its own: it only takes the text and returns. It must not throw. What
    /// it logs itself goes to the file, what it passes to the operation that called it, to no hook.
    using Hook = void (*)(void* context, const char* text);

    /// Where a message goes besides the hook.
    enum HookPlace { BesideFile, InsteadOfFile };

    // An object holds nothing; what there is to call is static.
    CDebug();
    CDebug(const CDebug&);
    CDebug& operator=(const CDebug&);
    virtual ~CDebug();

    /// Does nothing.
    static void InitDebugMsg();

    /// Appends a message, formatted as CString::Format does, and one line end (CR LF, as for every newline of
    /// the message) to the log of the local date, and passes it to the log hook. A message is cut to 1023
    /// bytes, and lost without report when memory does not suffice. A line is lost in the same way when the
    /// file cannot be opened. Messages never mix. The file is open during the call only, and the line is in
    /// it afterwards.
    static void AppendDebugMsg(const char* format, ...) KESRANTC_PRINTF(1, 2);

    /// The most bytes that the log of a day may hold, what earlier runs have written (also on this day of
    /// earlier years) included: 64 MiB unless set, 0 for no limit. Instead of the first line that does not
    /// fit, one line is appended, and may pass the limit, that tells so; what comes behind it is lost. A
    /// higher limit, or a file that has been emptied or removed, lets lines in again; a full file is looked
    /// at once a second.
    static void SetLogLimit(unsigned long long bytes);

    /// Passes every message to a hook from now on, beside or instead of the file; null ends it. When this
    /// returns, the hook set before is not running any more, and its context may go; a caller inside a hook
    /// does not wait for calls on other threads. The caller holds no lock that a hook takes.
    static void SetLogHook(Hook hook, void* context, HookPlace place = BesideFile);
    /// The same for what is passed to TRACE, which is discarded unformatted while there is no hook.
    static void SetTraceHook(Hook hook, void* context);

private:
    static void AppendLine(const char* message);

    static std::FILE* DiskFile;
};
