#pragma once

#include <cstddef>

#include "config/byte_string.h"

namespace velmora::pbxsim {

// Follows the frame headers in what a client sends, to be able to say what is wrong with it: FrameCutter just drops a
// stream that it has lost.
class StreamCheck {
public:
    // Takes the next bytes. Gives what makes the stream unreadable from here on, in words; empty while all is well.
    ByteString Follow(const ByteString& bytes);

private:
    ByteString header;       // of the next frame, up to its length
    size_t bytesLeft = 0;    // of the present frame
    bool firstFrame = true;  // the stream has yet to complete its first header
};

}  // namespace velmora::pbxsim
