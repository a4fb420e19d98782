#include "packaging/setup_actions/given_properties.h"

#include "packaging/setup_actions/installer_session.h"

namespace velmora::setup {
namespace {

struct PublicProperty {
    const char* property;
    const char* setting;
};

constexpr PublicProperty kProperties[] = {
    {"ADDRESS", "address"},
    {"PORT", "port"},
    {"DOMAIN", "domain"},
    {"USERNAME", "username"},
    {"PASSWORD", "password"},
    {"ENCRYPT", "encrypt"},
    {"AUTOORIGINATE", "autooriginate"},
};

ByteString RegistryText(HKEY root, const char* path, const char* name) {
    char text[1024];
    DWORD length = sizeof text;
    if (RegGetValueA(root, path, name, RRF_RT_REG_SZ, nullptr, text, &length) != ERROR_SUCCESS) return {};
    return text;
}

ByteString RegisteredOwnerOfProduct(MSIHANDLE installation) {
    char text[1024];
    DWORD length = sizeof text;
    const ByteString product = ReadProperty(installation, "ProductCode");
    if (MsiGetProductInfoA(product.c_str(), INSTALLPROPERTY_REGOWNER, text, &length) != ERROR_SUCCESS) return {};
    return text;
}

// Windows Installer has a property USERNAME of its own, the name of whoever installs. Unless the command line gives it,
// it comes from the user's own registry, from the owner that Windows is registered to, or, once the product is
// installed, from what was kept then (Microsoft's page on the property "USERNAME"). Such a name is no extension.
bool IsNameOfWindows(MSIHANDLE installation, const ByteString& name) {
    return name == RegistryText(HKEY_CURRENT_USER, R"(Software\Microsoft\MS Setup (ACME)\User Info)", "DefName") ||
           name ==
               RegistryText(HKEY_LOCAL_MACHINE, R"(SOFTWARE\Microsoft\Windows NT\CurrentVersion)", "RegisteredOwner") ||
           name == RegisteredOwnerOfProduct(installation);
}

}  // namespace

std::vector<GivenProperty> ReadGivenProperties(MSIHANDLE installation) {
    std::vector<GivenProperty> given;
    for (const auto& [property, setting] : kProperties) {
        const ByteString value = ReadProperty(installation, property);
        if (value.empty()) continue;
        if (ByteString(setting) == "username" && IsNameOfWindows(installation, value)) {
            LogLine(installation, "USERNAME is the name of the user of Windows and not stored.");
            continue;
        }
        given.push_back({property, setting, value});
    }
    return given;
}

}  // namespace velmora::setup
