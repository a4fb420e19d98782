#pragma once

#include "tools/pbxsim/identity.h"

namespace velmora::pbxsim {

// The identity of a PBX that is given no other: "pbxsim TEST certificate", with a key of 2048 bits. FOR TESTS ONLY: the
// private key is in every copy of this program, so it keeps nothing secret.
Identity TestIdentity();

}  // namespace velmora::pbxsim
