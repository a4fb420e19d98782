#include "tools/velmoractl/tapi_library.h"

#include "config/text_numbers.h"

namespace velmora::ctl {
namespace {

constexpr char kFileName[] = "tapi32.dll";

template <typename Function>
void Find(HMODULE library, const char* name, Function& function) {
    // By way of void*: GetProcAddress gives one type for all functions.
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

}  // namespace

ByteString TapiLibrary::Load() {
    const HMODULE library = LoadLibraryExA(kFileName, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library == nullptr) {
        return "Windows' " + ByteString(kFileName) + " cannot be loaded: Windows error " + DecimalText(GetLastError()) +
               ".";
    }
    Find(library, "lineAddProviderW", lineAddProviderW);
    Find(library, "lineRemoveProvider", lineRemoveProvider);
    const bool whole = lineAddProviderW != nullptr && lineRemoveProvider != nullptr;
    return whole ? ByteString() : ByteString(kFileName) + " lacks a function: this is not a whole Windows.";
}

}  // namespace velmora::ctl
