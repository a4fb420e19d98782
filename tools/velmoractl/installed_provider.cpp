#include "tools/velmoractl/installed_provider.h"

#include <windows.h>

#include <cstring>

#include "config/ascii_case.h"
#include "config/text_numbers.h"
#include "tools/velmoractl/file_places.h"
#include "tools/velmoractl/provider_host.h"
#include "tools/velmoractl/provider_list.h"
#include "tools/velmoractl/stored_settings.h"

namespace velmora::ctl {
namespace {

constexpr char kProvidersPath[] = R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Telephony\Providers)";
constexpr char kServiceName[] = "TapiSrv";
constexpr DWORD kMaxNameBytes = 256;    // with its NUL
constexpr DWORD kMaxValueBytes = 4096;  // a file name and more; a value that is longer is passed over
constexpr DWORD kHeadBytes = 4096;

void AddValue(ProviderKey& values, const ByteString& name, DWORD type, const ByteString& bytes) {
    if (type == REG_SZ) {
        values.texts[LowerCase(name)] = bytes.substr(0, bytes.find('\0'));
    } else if (type == REG_DWORD && bytes.size() == sizeof(uint32_t)) {
        std::memcpy(&values.numbers[LowerCase(name)], bytes.data(), sizeof(uint32_t));
    }
}

ProviderKey ReadProviderKey() {
    ProviderKey values;
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kProvidersPath, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return values;
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD index = 0; status != ERROR_NO_MORE_ITEMS; ++index) {
        char name[kMaxNameBytes] = "";
        BYTE bytes[kMaxValueBytes];
        DWORD nameBytes = sizeof(name);
        DWORD length = sizeof(bytes);
        DWORD type = REG_NONE;
        status = RegEnumValueA(key, index, name, &nameBytes, nullptr, &type, bytes, &length);
        if (status == ERROR_SUCCESS) AddValue(values, name, type, ByteString(bytes, bytes + length));
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) break;
    }
    RegCloseKey(key);
    return values;
}

ServiceState StateOf(SC_HANDLE service) {
    BYTE bytes[kMaxValueBytes];
    auto* const configuration = reinterpret_cast<QUERY_SERVICE_CONFIGA*>(bytes);
    DWORD needed = 0;
    const bool known = QueryServiceConfigA(service, configuration, sizeof(bytes), &needed) != 0;
    SERVICE_STATUS status{};
    if (QueryServiceStatus(service, &status) == 0) return ServiceState::kUnknown;
    switch (status.dwCurrentState) {
        case SERVICE_RUNNING:
            return ServiceState::kRunning;
        case SERVICE_STOPPED:
            return known && configuration->dwStartType == SERVICE_DISABLED ? ServiceState::kDisabled
                                                                           : ServiceState::kStopped;
        default:
            return ServiceState::kChanging;
    }
}

}  // namespace

ByteString InstalledProviderPath() {
    return SystemFolder() + kProviderFileName;
}

std::vector<uint32_t> RegisteredProviderIds() {
    return ProviderIds(ReadProviderKey(), kProviderFileName);
}

std::optional<PeHeader> PeHeaderOf(const ByteString& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return {};
    char bytes[kHeadBytes];
    DWORD count = 0;
    if (ReadFile(file, bytes, sizeof(bytes), &count, nullptr) == 0) count = 0;
    CloseHandle(file);
    return ReadPeHeader({bytes, count});
}

ByteString FileVersionOf(const ByteString& path) {
    DWORD ignored = 0;
    ByteString resource(GetFileVersionInfoSizeA(path.c_str(), &ignored), '\0');
    const DWORD length = static_cast<DWORD>(resource.size());
    void* found = nullptr;
    UINT foundBytes = 0;
    if (length == 0 || GetFileVersionInfoA(path.c_str(), 0, length, resource.data()) == 0 ||
        VerQueryValueA(resource.data(), "\\", &found, &foundBytes) == 0 || foundBytes < sizeof(VS_FIXEDFILEINFO)) {
        return {};
    }
    const auto* const version = static_cast<const VS_FIXEDFILEINFO*>(found);
    ByteString text = DecimalText(HIWORD(version->dwFileVersionMS)) + "." +
                      DecimalText(LOWORD(version->dwFileVersionMS)) + "." +
                      DecimalText(HIWORD(version->dwFileVersionLS));
    const WORD fourth = LOWORD(version->dwFileVersionLS);
    if (fourth != 0) text += "." + DecimalText(fourth);
    return text;
}

ServiceState StateOfService(const char* name) {
    const SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
    if (manager == nullptr) return ServiceState::kUnknown;
    const SC_HANDLE service = OpenServiceA(manager, name, SERVICE_QUERY_STATUS | SERVICE_QUERY_CONFIG);
    const bool missing = service == nullptr && GetLastError() == ERROR_SERVICE_DOES_NOT_EXIST;
    ServiceState state = missing ? ServiceState::kMissing : ServiceState::kUnknown;
    if (service != nullptr) {
        state = StateOf(service);
        CloseServiceHandle(service);
    }
    CloseServiceHandle(manager);
    return state;
}

InstallFacts ReadInstallFacts() {
    InstallFacts facts;
    facts.path = InstalledProviderPath();
    facts.present = FileExists(facts.path);
    facts.header = PeHeaderOf(facts.path);
    facts.version = FileVersionOf(facts.path);
    facts.ids = RegisteredProviderIds();
    facts.service = StateOfService(kServiceName);
    const std::vector<FaultySetting> faulty = FindFaultySettings();
    if (!faulty.empty()) {
        facts.settingFault = faulty.front().sentence;
        facts.settingFix = FixCommand(*faulty.front().rule);
    }
    facts.address = EffectiveText("address");
    facts.port = EffectiveText("port");
    const ByteString user = EffectiveText("username");
    if (!user.empty()) facts.device = user + "@" + EffectiveText("domain");
    facts.encrypt = EffectiveText("encrypt");
    return facts;
}

}  // namespace velmora::ctl
