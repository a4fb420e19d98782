// Stands in for velmoractl.exe in an installer under test: Wine's telephony functions register no provider. It writes
// down how it was called and what it found then, one line a call in C:\velmoractl_calls.txt:
//
//     install --quiet; velmora.tsp is there; address pbx.example.com
//
// If there is a file C:\velmoractl_fails.txt, its first word the command that is to fail, it says so and ends with 10.

#include <windows.h>

#include <cstdio>
#include <string>

namespace {

std::string ProviderState() {
    char folder[MAX_PATH];
    GetSystemDirectoryA(folder, sizeof folder);
    const std::string path = std::string(folder) + R"(\velmora.tsp)";
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES ? "is there" : "is missing";
}

std::string StoredAddress() {
    char text[256];
    DWORD length = sizeof text;
    const LSTATUS result =
        RegGetValueA(HKEY_LOCAL_MACHINE, R"(SOFTWARE\velmora\tapi)", "address", RRF_RT_REG_SZ, nullptr, text, &length);
    return result == ERROR_SUCCESS ? text : "missing";
}

bool IsToFail(const std::string& command) {
    FILE* const file = std::fopen(R"(C:\velmoractl_fails.txt)", "r");
    if (file == nullptr) return false;
    char word[64] = "";
    const bool read = std::fscanf(file, "%63s", word) == 1;
    std::fclose(file);
    return read && command == word;
}

}  // namespace

int main(int count, char** arguments) {
    std::string words;
    for (int at = 1; at < count; ++at) words += (at > 1 ? " " : "") + std::string(arguments[at]);
    FILE* const calls = std::fopen(R"(C:\velmoractl_calls.txt)", "a");
    if (calls == nullptr) return 1;
    std::fprintf(calls, "%s; velmora.tsp %s; address %s\n", words.c_str(), ProviderState().c_str(),
                 StoredAddress().c_str());
    std::fclose(calls);
    if (count < 2 || !IsToFail(arguments[1])) return 0;
    std::fprintf(stderr, "velmoractl: the telephony service refuses\n");
    return 10;
}
