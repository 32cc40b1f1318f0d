#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

/// A file opened for appending. Destroying the object does not close the file: call Close. Failures of
/// writing, reading and removing are not reported. One thread at a time.
class KESRANTC_API CFile
{
public:
    /// No file is open.
    CFile();
    /// A copy holds the same handle, which one of the two closes.
    CFile(const CFile&);
    CFile& operator=(const CFile&);
    virtual ~CFile();

    /// Opens the file, creating it when missing, and goes to its end. Others may read it meanwhile. Returns
    /// the handle, or INVALID_HANDLE_VALUE when the name is null or the file cannot be opened; the object
    /// then keeps the handle it had. A handle that was open before is not closed.
    void* Open(const char* name);
    /// Closes the open file, if any.
    void Close();

    /// Writes a text, formatted as CString::Format does and cut to 511 bytes, without a terminator.
    void Write(const char* format, ...) KESRANTC_PRINTF(2, 3);
    /// Writes n bytes. Character data must be passed as `const void*` to be told from a format.
    void Write(const void* data, unsigned int n);
    /// Reads up to n bytes and returns how many came: 0 from a file opened by Open, which is for writing.
    unsigned int Read(void* data, unsigned int n);
    /// Deletes the named file.
    void Remove(const char* name);

private:
    HANDLE Handle;
};
