#pragma once

namespace velmora::ctl {

// Whether this user may read the settings; says so on the error output when not. Without their key there is nothing to
// read, and the defaults apply.
bool MayReadSettings();

}  // namespace velmora::ctl
