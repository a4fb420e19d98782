#pragma once

#include <cstddef>
#include <string>

namespace velmora {

// Whether a process that has worked for long uses no more than before.
class SteadyUse {
public:
    // Takes the figures of this moment, once everything that is made only once is there.
    SteadyUse();

    // Prints them beside those of now, and how many rounds (sessions, frames) went by in a second. Expects no more
    // memory than before but for noiseBytes, and but for the system's own no more threads and handles, however many
    // rounds there were.
    void ExpectUnchanged(const std::string& rounds, size_t count, size_t noiseBytes) const;

private:
    struct Figures {
        size_t heapBytes = 0;
        size_t committedBytes = 0;
        size_t handles = 0;
        size_t threads = 0;
    };
    static Figures Now();

    Figures before;
    double startMs;
};

}  // namespace velmora
