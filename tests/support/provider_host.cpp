#include "tests/support/provider_host.h"

#include <gtest/gtest.h>

#include <bit>

namespace velmora {

std::string PathBesideProgram(const std::string& name) {
    char program[MAX_PATH];
    const DWORD length = GetModuleFileNameA(nullptr, program, MAX_PATH);
    const std::string path(program, length);
    return path.substr(0, path.find_last_of("\\/") + 1) + name;
}

ProviderHost::ProviderHost() : module(LoadLibraryA(PathBesideProgram("velmora.tsp").c_str())) {
    EXPECT_NE(module, nullptr) << "velmora.tsp does not load: error " << GetLastError();
    Find(providerInit, "TSPI_providerInit");
    Find(providerShutdown, "TSPI_providerShutdown");
    Find(providerEnumDevices, "TSPI_providerEnumDevices");
    Find(providerUIIdentify, "TSPI_providerUIIdentify");
    Find(lineNegotiateTSPIVersion, "TSPI_lineNegotiateTSPIVersion");
    Find(phoneNegotiateTSPIVersion, "TSPI_phoneNegotiateTSPIVersion");
    Find(lineGetDevCaps, "TSPI_lineGetDevCaps");
    Find(lineGetAddressCaps, "TSPI_lineGetAddressCaps");
    Find(lineOpen, "TSPI_lineOpen");
    Find(lineClose, "TSPI_lineClose");
    Find(lineGetLineDevStatus, "TSPI_lineGetLineDevStatus");
    Find(lineGetAddressStatus, "TSPI_lineGetAddressStatus");
    Find(lineGetAdressStatus, "TSPI_lineGetAdressStatus");
    Find(lineGetNumAddressIDs, "TSPI_lineGetNumAddressIDs");
    Find(lineGetExtensionID, "TSPI_lineGetExtensionID");
    Find(lineSetStatusMessages, "TSPI_lineSetStatusMessages");
    Find(lineMakeCall, "TSPI_lineMakeCall");
    Find(lineDrop, "TSPI_lineDrop");
    Find(lineCloseCall, "TSPI_lineCloseCall");
    Find(lineGetCallInfo, "TSPI_lineGetCallInfo");
    Find(lineGetCallStatus, "TSPI_lineGetCallStatus");
    Find(lineGetCallAddressID, "TSPI_lineGetCallAddressID");
}

void ProviderHost::Unload() const {
    EXPECT_NE(FreeLibrary(module), 0);
    EXPECT_EQ(GetModuleHandleA("velmora.tsp"), nullptr) << "somebody still holds the provider";
}

FARPROC ProviderHost::Export(const char* name) const {
    const FARPROC address = GetProcAddress(module, name);
    EXPECT_NE(address, nullptr) << name << " is not exported";
    return address;
}

template <typename Function>
void ProviderHost::Find(Function& function, const char* name) {
    function = std::bit_cast<Function>(Export(name));
}

}  // namespace velmora
