#pragma once

#include "config/byte_string.h"

namespace velmora::ctl {

// Where the trace log lies unless somebody wants it elsewhere: Velmora\trace.log in the folder for all users' data. It
// makes the folder, for administrators and the telephony service's account (NETWORK SERVICE) alone, since the log holds
// the password of the login. One that is there stays as it is.
ByteString DefaultLogPath();

}  // namespace velmora::ctl
