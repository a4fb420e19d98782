#pragma once

namespace velmora {

// The provider's registry key as a user without administrator rights finds it: there to be read. Open for writing again
// at the end.
class ReadOnlyKey {
public:
    ReadOnlyKey();
    ~ReadOnlyKey();
    ReadOnlyKey(const ReadOnlyKey&) = delete;
    ReadOnlyKey& operator=(const ReadOnlyKey&) = delete;
};

}  // namespace velmora
