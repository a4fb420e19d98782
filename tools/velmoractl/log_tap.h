#pragma once

#include <windows.h>

#include "config/byte_string.h"

namespace velmora::ctl {

// A place for the provider's trace log to go to in this process: a named pipe, read as the provider writes.
//
// A file would not do. The provider opens its log with fopen_s, which lets nobody else open the file for as long as the
// process lives; and the log holds the password of the login, which has no business on a disk.
class LogTap {
public:
    LogTap();
    ~LogTap();
    LogTap(const LogTap&) = delete;
    LogTap& operator=(const LogTap&) = delete;

    // False when the pipe could not be made; nothing can be read then.
    bool Open() const { return pipe != INVALID_HANDLE_VALUE; }

    // What to set as the log's path.
    const ByteString& Path() const { return path; }

    // What the provider has written since the last call; does not wait. The pipe holds 1 MiB; with more unread, the
    // provider waits, so this is to be called often.
    ByteString Read();

    // Whether a provider has written here and is gone, and with it the pipe's other end.
    bool WriterLeft() const;

    // Lets the next provider in, at the same path.
    void Reopen();

private:
    void Create();

    ByteString path;
    HANDLE pipe = INVALID_HANDLE_VALUE;
};

// Whether a log path is that of a tap, of this process or of another.
bool IsLogTapPath(const ByteString& path);

}  // namespace velmora::ctl
