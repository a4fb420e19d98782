#include <windows.h>

#include "config/clock.h"

namespace velmora {

uint32_t TickCount32() {
    return GetTickCount();
}

uint64_t TickCount64() {
    return GetTickCount64();
}

}  // namespace velmora
