#include <windows.h>

#include <ctime>

#include "config/clock.h"

namespace velmora {

uint32_t TickCount32() {
    return GetTickCount();
}

uint64_t TickCount64() {
    return GetTickCount64();
}

int64_t UnixSeconds() {
    return _time64(nullptr);
}

}  // namespace velmora
