#pragma once

#include "config/byte_string.h"

namespace velmora::setup {

// A console program, run to its end without a window.
struct ProgramRun {
    bool started = false;
    unsigned long exitCode = 0;  // of the program; when it has not started, the error code of Windows
    ByteString output;           // all that it has printed, errors too
};

// Runs the program at path with arguments. One that does not end within a minute is ended, with exit code 259.
ProgramRun RunProgram(const ByteString& path, const ByteString& arguments);

}  // namespace velmora::setup
