#pragma once

namespace velmora {

// The provider's registry key as a user without administrator rights finds it. Open to everybody again at the end.

// As Windows comes: there to be read.
class ReadOnlyKey {
public:
    ReadOnlyKey();
    ~ReadOnlyKey();
    ReadOnlyKey(const ReadOnlyKey&) = delete;
    ReadOnlyKey& operator=(const ReadOnlyKey&) = delete;
};

// Closed by its administrator: neither to be written nor to be read.
class ClosedKey {
public:
    ClosedKey();
    ~ClosedKey();
    ClosedKey(const ClosedKey&) = delete;
    ClosedKey& operator=(const ClosedKey&) = delete;
};

}  // namespace velmora
