#pragma once

#include <windows.h>

#include <tspi.h>

namespace velmora {

// The one line, which stands for the user's extension; its address is the provider's handle for it. Written by
// TSPI_lineOpen, read by nobody: no event of the line is ever reported. Keep.
struct LineDevice {
    LINEEVENT eventCallback = nullptr;
    HTAPILINE tapiLine = nullptr;
};
extern LineDevice lineDevice;

}  // namespace velmora
