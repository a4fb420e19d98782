#pragma once

#include <windows.h>

#include <bit>

namespace velmora {

// Puts a function in the place of one that a loaded module imports by name, for the calls of that module alone and
// until the process ends. The test fails when the module has no such import.
void HookImport(HMODULE module, const char* library, const char* name, FARPROC replacement);

template <typename Function>
void HookImport(HMODULE module, const char* library, const char* name, Function* replacement) {
    HookImport(module, library, name, std::bit_cast<FARPROC>(replacement));
}

}  // namespace velmora
