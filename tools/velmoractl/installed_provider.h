#pragma once

#include <cstdint>
#include <vector>

#include "config/byte_string.h"
#include "tools/velmoractl/install_report.h"

namespace velmora::ctl {

// What this PC has of the provider. Anybody may ask.

// Where it has to be: velmora.tsp in the System32 folder.
ByteString InstalledProviderPath();

// The permanent IDs under which the telephony service has it in its list.
std::vector<uint32_t> RegisteredProviderIds();

// The head of a program file; none when the file is none or cannot be read.
std::optional<PeHeader> PeHeaderOf(const ByteString& path);

// A file's version as its resources give it: "2.0.3", with a fourth number only when that is not 0. Empty without one.
ByteString FileVersionOf(const ByteString& path);

// What the system says about a service.
ServiceState StateOfService(const char* name);

// All of it, with the settings.
InstallFacts ReadInstallFacts();

}  // namespace velmora::ctl
