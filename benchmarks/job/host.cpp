#include <windows.h>
// TAPI's header is written for a windows.h that has not been cut down.
#include <objbase.h>
// and the interface between TAPI and a provider
#include <tapi.h>
#include <tspi.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/process_use.h"

// The process that has the provider (or the floor) loaded, in place of TAPI's. It carries out what the driver of the
// benchmark asks for, a command a line on its standard input, and answers each with a line: what has been timed with
// the performance counter at its start and at its end, anything else with a number. A command that fails is answered
// with "failed". It imports neither Winsock nor user32, so that loading them is part of what it measures.

namespace velmora {
namespace {

constexpr char kKeyPath[] = R"(SOFTWARE\velmora\tapi)";
constexpr char kParentPath[] = R"(SOFTWARE\velmora)";
constexpr DWORD kTspiVersion = 0x00020002;

struct LoadedProvider {
    HMODULE module = nullptr;
    decltype(&TSPI_providerInit) init = nullptr;
    decltype(&TSPI_providerShutdown) shutdown = nullptr;
    decltype(&TSPI_lineMakeCall) makeCall = nullptr;
    decltype(&TSPI_lineCloseCall) closeCall = nullptr;
};

LoadedProvider provider;
std::vector<HDRVCALL> calls;

int64_t Counter() {
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    return counter.QuadPart;
}

template <typename Call>
std::string Timed(Call call) {
    const int64_t start = Counter();
    const bool succeeded = call();
    const int64_t end = Counter();
    return succeeded ? std::to_string(start) + " " + std::to_string(end) : "failed";
}

template <typename Function>
bool Find(Function& function, const char* name) {
    function = std::bit_cast<Function>(GetProcAddress(provider.module, name));
    return function != nullptr;
}

std::string Load(const std::string& path) {
    std::string times = Timed([&] {
        provider.module = LoadLibraryA(path.c_str());
        return provider.module != nullptr;
    });
    const bool isComplete =
        Find(provider.init, "TSPI_providerInit") && Find(provider.shutdown, "TSPI_providerShutdown") &&
        Find(provider.makeCall, "TSPI_lineMakeCall") && Find(provider.closeCall, "TSPI_lineCloseCall");
    return isComplete ? times : "failed";
}

std::string PlayScript(const std::string& path) {
    void (*play)(const char*) = nullptr;
    if (!Find(play, "PlayScript")) return "failed";
    play(path.c_str());
    return "0";
}

// "name value"
std::string SetValue(const std::string& assignment) {
    const size_t space = assignment.find(' ');
    const std::string name = assignment.substr(0, space);
    const std::string value = assignment.substr(space + 1);
    const LSTATUS status = RegSetKeyValueA(HKEY_LOCAL_MACHINE, kKeyPath, name.c_str(), REG_SZ, value.c_str(),
                                           static_cast<DWORD>(value.size() + 1));
    return status == ERROR_SUCCESS ? "0" : "failed";
}

std::string ForgetValues() {
    const bool done = RegDeleteKeyA(HKEY_LOCAL_MACHINE, kKeyPath) == ERROR_SUCCESS &&
                      RegDeleteKeyA(HKEY_LOCAL_MACHINE, kParentPath) == ERROR_SUCCESS;
    return done ? "0" : "failed";
}

std::string Init() {
    DWORD options = 0;
    return Timed([&] { return provider.init(kTspiVersion, 1, 0, 0, 1, 1, nullptr, &options) == 0; });
}

std::string MakeCall(const std::string& number) {
    const std::wstring address(number.begin(), number.end());
    HDRVCALL call = nullptr;
    std::string times =
        Timed([&] { return provider.makeCall(1, nullptr, nullptr, &call, address.c_str(), 0, nullptr) == 1; });
    calls.push_back(call);
    return times;
}

std::string CloseCall() {
    return Timed([] { return provider.closeCall(calls.back()) == 0; });
}

std::string Shutdown() {
    return Timed([] { return provider.shutdown(kTspiVersion, 1) == 0; });
}

std::string CarryOut(const std::string& line) {
    const size_t space = line.find(' ');
    const std::string command = line.substr(0, space);
    const std::string argument = space == std::string::npos ? "" : line.substr(space + 1);
    if (command == "now") return std::to_string(Counter());
    if (command == "handles") return std::to_string(OpenHandles());
    if (command == "set") return SetValue(argument);
    if (command == "forget") return ForgetValues();
    if (command == "load") return Load(argument);
    if (command == "script") return PlayScript(argument);
    if (command == "init") return Init();
    if (command == "call") return MakeCall(argument);
    if (command == "close") return CloseCall();
    if (command == "shutdown") return Shutdown();
    return "failed";
}

// The next line of standard input; false at its end. The driver writes a line at a time and waits for the answer.
bool ReadLine(std::string& line) {
    line.clear();
    while (!line.ends_with('\n')) {
        char bytes[512];
        DWORD count = 0;
        const BOOL done = ReadFile(GetStdHandle(STD_INPUT_HANDLE), bytes, sizeof bytes, &count, nullptr);
        if (done == 0 || count == 0) return false;
        line.append(bytes, count);
    }
    line.pop_back();
    return true;
}

void WriteLine(const std::string& line) {
    const std::string whole = line + "\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), whole.data(), static_cast<DWORD>(whole.size()), &written, nullptr);
}

}  // namespace
}  // namespace velmora

int main() {
    std::string line;
    while (velmora::ReadLine(line)) velmora::WriteLine(velmora::CarryOut(line));
    // At once: what is loaded has nothing left to do.
    TerminateProcess(GetCurrentProcess(), 0);
}
