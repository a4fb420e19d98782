#pragma once

#include <windows.h>

#include <optional>

#include "config/byte_string.h"

namespace velmora {

// A program under test, started from this program's own folder, with what it prints (to both outputs) in a pipe. It
// ends with this object at the latest, and with this process however that ends.
class ChildProcess {
public:
    // arguments follow the program's name on its command line as they are; input (at most 4096 bytes) is all that it
    // finds on its standard input. The test fails when the program cannot be started.
    ChildProcess(const ByteString& program, const ByteString& arguments, const ByteString& input = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The next line printed, without its end; none when there is none within the deadline or the program has ended.
    std::optional<ByteString> ReadLine();

    // Reads lines until one holds text, and gives that one; empty when none comes.
    ByteString ReadLineWith(const ByteString& text);

    // Waits for the end of the program; none when it has not ended within the deadline.
    std::optional<DWORD> ExitCode();

private:
    HANDLE job = nullptr;  // ends the program when its last handle is closed
    HANDLE process = nullptr;
    HANDLE output = nullptr;
    ByteString unread;  // printed, but not yet given out
};

}  // namespace velmora
