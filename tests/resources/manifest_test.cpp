#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "tests/support/provider_host.h"
#include "tests/support/resource_file.h"

namespace velmora {
namespace {

TEST(Manifest, AsksForNoMoreRightsThanTheProgramHas) {
    constexpr WORD kManifestType = 24;
    constexpr WORD kIsolationAware = 2;  // the number under which a DLL's manifest counts
    const ResourceFile file(PathBesideProgram("velmora.tsp"));
    ASSERT_EQ(file.Names(kManifestType), std::vector<WORD>{kIsolationAware});
    const std::string manifest = file.Bytes(kManifestType, kIsolationAware);
    EXPECT_NE(manifest.find(R"(<requestedExecutionLevel level="asInvoker" uiAccess="false"/>)"), std::string::npos)
        << manifest;
}

}  // namespace
}  // namespace velmora
