#include "tests/support/xml_judge.h"

#include <windows.h>
// and what builds on it
#include <objbase.h>
#include <oleauto.h>

#include <msxml2.h>

namespace velmora {
namespace {

// COM on the calling thread, for the length of a scope.
class ComScope {
public:
    ComScope() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    ~ComScope() { CoUninitialize(); }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;
};

}  // namespace

bool IsWellFormedXml(const std::string& document) {
    const ComScope com;
    CLSID reading = {};
    IXMLDOMDocument* reader = nullptr;
    if (CLSIDFromProgID(L"Msxml2.DOMDocument.3.0", &reading) != S_OK) return false;
    if (CoCreateInstance(reading, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                         reinterpret_cast<void**>(&reader)) != S_OK) {
        return false;
    }
    const std::wstring units(document.begin(), document.end());
    BSTR text = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
    VARIANT_BOOL wellFormed = VARIANT_FALSE;
    const bool read = reader->loadXML(text, &wellFormed) == S_OK;
    SysFreeString(text);
    reader->Release();
    return read && wellFormed != VARIANT_FALSE;
}

}  // namespace velmora
