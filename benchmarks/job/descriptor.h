#pragma once

#include <unistd.h>

#include <utility>

namespace velmora {

// A file descriptor, closed in the end.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int owned) : number(owned) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    ~Descriptor() {
        if (number >= 0) close(number);
    }

    int Get() const { return number; }

private:
    int number = -1;
};

}  // namespace velmora
