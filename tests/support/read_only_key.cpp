#include "tests/support/read_only_key.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <sddl.h>

#include "config/registry.h"

namespace velmora {
namespace {

void Allow(const char* accessList) {
    HKEY key = nullptr;
    const bool opened =
        RegOpenKeyExA(HKEY_LOCAL_MACHINE, kRegistryPath, 0, READ_CONTROL | WRITE_DAC, &key) == ERROR_SUCCESS;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ConvertStringSecurityDescriptorToSecurityDescriptorA(accessList, SDDL_REVISION_1, &descriptor, nullptr);
    const bool done = opened && RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor) == ERROR_SUCCESS;
    EXPECT_TRUE(done);
    LocalFree(descriptor);
    RegCloseKey(key);
}

void AllowAll() {
    Allow("D:P(A;;KA;;;WD)");
}

}  // namespace

ReadOnlyKey::ReadOnlyKey() {
    Allow("D:P(A;;KRWD;;;WD)");
}

ReadOnlyKey::~ReadOnlyKey() {
    AllowAll();
}

ClosedKey::ClosedKey() {
    Allow("D:P(A;;RCWD;;;WD)");
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kRegistryPath, 0, KEY_QUERY_VALUE, &key), ERROR_ACCESS_DENIED);
}

ClosedKey::~ClosedKey() {
    AllowAll();
}

}  // namespace velmora
