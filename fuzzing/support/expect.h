#pragma once

namespace velmora {

// Ends the program, which is a finding, unless the rule held.
void Expect(bool held, const char* rule);

}  // namespace velmora
