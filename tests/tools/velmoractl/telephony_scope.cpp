#include "tests/tools/velmoractl/telephony_scope.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "config/text_numbers.h"
#include "tests/support/provider_host.h"

namespace velmora::ctl {
namespace {

constexpr char kTelephonyPath[] = R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Telephony\Providers)";
constexpr char kCallsVariable[] = "VELMORA_FAKE_TAPI_CALLS";
constexpr char kResultVariable[] = "VELMORA_FAKE_TAPI_RESULT";
constexpr char kProgramPath[] = R"(Software\Wine\AppDefaults\velmoractl.exe)";
constexpr char kOverridesPath[] = R"(Software\Wine\AppDefaults\velmoractl.exe\DllOverrides)";
constexpr char kNative[] = "native";
constexpr DWORD kFirstId = 10;

ByteString SystemPath(const char* fileName) {
    char folder[MAX_PATH] = "";
    GetSystemDirectoryA(folder, MAX_PATH);
    return ByteString(folder) + "\\" + fileName;
}

ByteString TapiPath() {
    return SystemPath("tapi32.dll");
}

ByteString KeptTapiPath() {
    return SystemPath("tapi32.dll.kept-by-test");
}

// Moves the system's own file back, if it is away: a test that was killed may have left it so.
void PutTapiBack() {
    if (GetFileAttributesA(KeptTapiPath().c_str()) == INVALID_FILE_ATTRIBUTES) return;
    EXPECT_TRUE(MoveFileExA(KeptTapiPath().c_str(), TapiPath().c_str(), MOVEFILE_REPLACE_EXISTING));
}

void SetNumber(HKEY key, const ByteString& name, DWORD number) {
    const LSTATUS status =
        RegSetValueExA(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number));
    EXPECT_EQ(status, ERROR_SUCCESS);
}

}  // namespace

FakeTapi::FakeTapi() : callsPath(PathBesideProgram("fake_tapi_calls.txt")) {
    PutTapiBack();
    EXPECT_TRUE(MoveFileExA(TapiPath().c_str(), KeptTapiPath().c_str(), 0));
    EXPECT_TRUE(CopyFileA(PathBesideProgram("fake_tapi32.dll").c_str(), TapiPath().c_str(), TRUE));
    DeleteFileA(callsPath.c_str());
    SetEnvironmentVariableA(kCallsVariable, callsPath.c_str());
    // Wine takes its own library before any file of its name, unless it is told otherwise for a program.
    EXPECT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, kOverridesPath, "tapi32", REG_SZ, kNative, sizeof(kNative)),
              ERROR_SUCCESS);
    Order("0");
}

FakeTapi::~FakeTapi() {
    RegDeleteTreeA(HKEY_CURRENT_USER, kProgramPath);
    PutTapiBack();
    DeleteFileA(callsPath.c_str());
}

// NOLINTBEGIN(readability-convert-member-functions-to-static): what they tell of lasts as long as their object.
void FakeTapi::Order(const char* result) {
    SetEnvironmentVariableA(kResultVariable, result);
}
// NOLINTEND(readability-convert-member-functions-to-static)

std::vector<ByteString> FakeTapi::Calls() const {
    std::vector<ByteString> calls;
    std::ifstream file(callsPath);
    for (ByteString line; std::getline(file, line);) calls.push_back(line);
    return calls;
}

ProviderListScope::ProviderListScope(const std::vector<ByteString>& files) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, kTelephonyPath, &key), ERROR_SUCCESS);
    SetNumber(key, "NumProviders", static_cast<DWORD>(files.size()));
    SetNumber(key, "NextProviderID", kFirstId + static_cast<DWORD>(files.size()));
    for (size_t index = 0; index < files.size(); ++index) {
        const ByteString number = DecimalText(static_cast<int64_t>(index));
        const auto* const text = reinterpret_cast<const BYTE*>(files[index].c_str());
        RegSetValueExA(key, ("ProviderFilename" + number).c_str(), 0, REG_SZ, text,
                       static_cast<DWORD>(files[index].size() + 1));
        SetNumber(key, "ProviderID" + number, kFirstId + static_cast<DWORD>(index));
    }
    RegCloseKey(key);
}

ProviderListScope::~ProviderListScope() {
    EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, kTelephonyPath), ERROR_SUCCESS);
}

ServiceScope::ServiceScope(DWORD startType)
    : manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)),
      service(CreateServiceA(manager, "TapiSrv", "Telephony", SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS, startType,
                             SERVICE_ERROR_IGNORE, "C:\\nosuch.exe", nullptr, nullptr, nullptr, nullptr, nullptr)) {
    EXPECT_NE(service, nullptr);
}

ServiceScope::~ServiceScope() {
    EXPECT_TRUE(DeleteService(service));
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
}

SystemFileScope::SystemFileScope(const char* copyOf) {
    DeleteFileA(SystemProviderPath().c_str());
    if (copyOf == nullptr) return;
    EXPECT_TRUE(CopyFileA(PathBesideProgram(copyOf).c_str(), SystemProviderPath().c_str(), TRUE));
}

SystemFileScope::~SystemFileScope() {
    DeleteFileA(SystemProviderPath().c_str());
}

ByteString SystemProviderPath() {
    return SystemPath("velmora.tsp");
}

}  // namespace velmora::ctl
