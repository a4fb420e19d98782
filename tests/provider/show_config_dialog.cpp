#include <windows.h>
// TAPI's headers are written for a windows.h that has not been cut down.
#include <tspi.h>

#include <bit>
#include <cstdio>

// Shows the configuration dialog of the velmora.tsp in the folder of this program, until somebody closes it. For
// scripts/dialog-picture.
int main() {
    const HMODULE provider = LoadLibraryW(L"velmora.tsp");
    if (provider == nullptr) {
        std::fprintf(stderr, "velmora.tsp does not load: error %lu\n", GetLastError());
        return 1;
    }
    const auto providerConfig =
        std::bit_cast<decltype(&TUISPI_providerConfig)>(GetProcAddress(provider, "TUISPI_providerConfig"));
    return providerConfig(nullptr, nullptr, 0);
}
