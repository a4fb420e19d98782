#include "tools/velmoractl/console.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace velmora::ctl {
namespace {

constexpr DWORD kVirtualTerminal = 0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING, Windows 10 and later
constexpr size_t kSecretMaxUnits = 16384;

bool IsConsole(DWORD handle) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(handle), &mode) != 0;
}

bool CanColour() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (std::getenv("NO_COLOR") != nullptr || GetConsoleMode(output, &mode) == 0) return false;
    return SetConsoleMode(output, mode | kVirtualTerminal) != 0;
}

std::string_view Sequence(Ink ink) {
    switch (ink) {
        case Ink::kGood:
            return "\x1b[32m";
        case Ink::kBad:
            return "\x1b[31m";
        case Ink::kFaint:
            return "\x1b[90m";
        default:
            return {};
    }
}

// UTF-8 when the text is valid in it, else the ANSI code page.
std::wstring Widen(std::string_view text) {
    if (text.empty()) return {};
    const int bytes = static_cast<int>(text.size());
    UINT codePage = CP_UTF8;
    int units = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), bytes, nullptr, 0);
    if (units == 0) {
        codePage = CP_ACP;
        units = MultiByteToWideChar(codePage, 0, text.data(), bytes, nullptr, 0);
    }
    std::wstring wide(static_cast<size_t>(units), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), bytes, wide.data(), units);
    return wide;
}

ByteString Narrow(const std::wstring& wide) {
    const int units = static_cast<int>(wide.size());
    const int bytes = WideCharToMultiByte(CP_ACP, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    ByteString text(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide.data(), units, text.data(), bytes, nullptr, nullptr);
    return text;
}

void Write(DWORD handle, std::FILE* stream, std::string_view text) {
    if (IsConsole(handle)) {
        const std::wstring wide = Widen(text);
        WriteConsoleW(GetStdHandle(handle), wide.data(), static_cast<DWORD>(wide.size()), nullptr, nullptr);
        return;
    }
    // Nobody could be told that this failed.
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
    static_cast<void>(std::fflush(stream));
}

// Turns the echo of typed characters off for its lifetime.
class QuietInput {
public:
    QuietInput() {
        GetConsoleMode(input, &mode);
        SetConsoleMode(input, ENABLE_PROCESSED_INPUT | ENABLE_LINE_INPUT);
    }
    ~QuietInput() { SetConsoleMode(input, mode); }
    QuietInput(const QuietInput&) = delete;
    QuietInput& operator=(const QuietInput&) = delete;

private:
    HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD mode = 0;
};

bool ReadTypedSecret(std::string_view prompt, ByteString& secret) {
    // The prompt belongs to the person, not into a file that takes the output.
    Write(STD_ERROR_HANDLE, stderr, prompt);
    std::wstring typed(kSecretMaxUnits, L'\0');
    DWORD units = 0;
    const QuietInput quiet;
    const BOOL done =
        ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), typed.data(), static_cast<DWORD>(typed.size()), &units, nullptr);
    PrintErrorLine("");  // the Enter was not shown either
    if (done == 0 || units == 0) return false;
    typed.resize(units);
    typed.erase(typed.find_last_not_of(L"\r\n") + 1);
    secret = Narrow(typed);
    return true;
}

bool ReadPipedSecret(ByteString& secret) {
    secret.clear();
    bool any = false;
    int character = std::getc(stdin);
    while (character != EOF && character != '\n') {
        any = true;
        secret += static_cast<char>(character);
        character = std::getc(stdin);
    }
    if (secret.ends_with('\r')) secret.pop_back();
    return any || character == '\n';
}

}  // namespace

void Print(std::string_view text, Ink ink) {
    static const bool colours = CanColour();
    if (!colours || ink == Ink::kPlain) return Write(STD_OUTPUT_HANDLE, stdout, text);
    Write(STD_OUTPUT_HANDLE, stdout, ByteString(Sequence(ink)) + ByteString(text) + "\x1b[0m");
}

void PrintErrorLine(std::string_view text) {
    Write(STD_ERROR_HANDLE, stderr, ByteString(text) + "\n");
}

bool ReadSecret(std::string_view prompt, ByteString& secret) {
    return IsInputConsole() ? ReadTypedSecret(prompt, secret) : ReadPipedSecret(secret);
}

bool IsInputConsole() {
    return IsConsole(STD_INPUT_HANDLE);
}

}  // namespace velmora::ctl
