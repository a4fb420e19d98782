#pragma once

#include <windows.h>

#include <msi.h>

#include <vector>

#include "config/byte_string.h"

namespace velmora::setup {

// The provider's settings that somebody has given on the installer's command line, as public properties.

struct GivenProperty {
    ByteString property;  // such as "ADDRESS"
    ByteString setting;   // the registry value, such as "address"
    ByteString value;
};

// Those that are given and not empty. An empty property is one that is not there: Windows Installer knows no
// difference.
std::vector<GivenProperty> ReadGivenProperties(MSIHANDLE installation);

}  // namespace velmora::setup
