#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "tests/support/provider_host.h"

namespace velmora {
namespace {

// The version of the file, read as Windows' own properties page does.
class FileVersion {
public:
    explicit FileVersion(const char* fileName) {
        const std::string path = PathBesideProgram(fileName);
        bytes.resize(GetFileVersionInfoSizeA(path.c_str(), nullptr));
        EXPECT_TRUE(GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(bytes.size()), bytes.data()))
            << "error " << GetLastError();
    }

    VS_FIXEDFILEINFO Fixed() const {
        VS_FIXEDFILEINFO fixed = {};
        const std::string found = Query("\\");
        EXPECT_EQ(found.size(), sizeof(fixed));
        std::memcpy(&fixed, found.data(), std::min(found.size(), sizeof(fixed)));
        return fixed;
    }

    // A text of the first language that the file declares.
    std::string Text(const std::string& name) const {
        WORD translation[2] = {};  // language, code page
        const std::string found = Query(R"(\VarFileInfo\Translation)");
        EXPECT_EQ(found.size(), sizeof(translation));
        std::memcpy(translation, found.data(), std::min(found.size(), sizeof(translation)));
        char block[64];
        std::snprintf(block, sizeof(block), R"(\StringFileInfo\%04x%04x\)", translation[0], translation[1]);
        const std::string text = Query(block + name);
        return text.substr(0, text.find('\0'));
    }

private:
    // Empty when it is missing.
    std::string Query(const std::string& block) const {
        void* value = nullptr;
        UINT length = 0;
        EXPECT_TRUE(VerQueryValueA(bytes.data(), block.c_str(), &value, &length)) << block;
        return value == nullptr ? std::string() : std::string(static_cast<const char*>(value), length);
    }

    std::string bytes;
};

constexpr DWORD kVersionHigh = 2 << 16 | 0;  // 2.0
constexpr DWORD kVersionLow = 3 << 16 | 0;   // 3.0

TEST(VersionInfo, NumbersTheFileAndTheProduct203) {
    const VS_FIXEDFILEINFO fixed = FileVersion("velmora.tsp").Fixed();
    EXPECT_EQ(fixed.dwSignature, 0xFEEF04BD);
    EXPECT_EQ(fixed.dwFileVersionMS, kVersionHigh);
    EXPECT_EQ(fixed.dwFileVersionLS, kVersionLow);
    EXPECT_EQ(fixed.dwProductVersionMS, kVersionHigh);
    EXPECT_EQ(fixed.dwProductVersionLS, kVersionLow);
    EXPECT_EQ(fixed.dwFileOS, static_cast<DWORD>(VOS_NT_WINDOWS32));
    EXPECT_EQ(fixed.dwFileType, static_cast<DWORD>(VFT_DLL));
    EXPECT_EQ(fixed.dwFileFlags, 0U) << "neither a debug nor a private build";
}

TEST(VersionInfo, NamesTheProductAndTheFile) {
    const FileVersion version("velmora.tsp");
    EXPECT_EQ(version.Text("ProductName"), "Velmora TAPI service provider");
    EXPECT_EQ(version.Text("FileDescription"), "Velmora TAPI service provider");
    EXPECT_EQ(version.Text("OriginalFilename"), "velmora.tsp");
    EXPECT_EQ(version.Text("InternalName"), "velmora");
    EXPECT_EQ(version.Text("CompanyName"), "Velmora");
    EXPECT_EQ(version.Text("FileVersion"), "2.0.3");
    EXPECT_EQ(version.Text("ProductVersion"), "2.0.3");
}

TEST(VersionInfo, GivesTheToolsTheVersionOfTheProvider) {
    for (const std::string name : {"velmoractl", "pbxsim"}) {
        SCOPED_TRACE(name);
        const FileVersion version((name + ".exe").c_str());
        EXPECT_EQ(version.Fixed().dwFileVersionMS, kVersionHigh);
        EXPECT_EQ(version.Fixed().dwFileVersionLS, kVersionLow);
        EXPECT_EQ(version.Fixed().dwFileType, static_cast<DWORD>(VFT_APP));
        EXPECT_EQ(version.Text("OriginalFilename"), name + ".exe");
        EXPECT_EQ(version.Text("ProductVersion"), "2.0.3");
    }
}

}  // namespace
}  // namespace velmora
