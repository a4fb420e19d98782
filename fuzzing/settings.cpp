// Any texts in the registry, of any type, against the number rule written down once more: std::stoi.
#include "config/settings.h"

#include <optional>
#include <stdexcept>
#include <string>

#include "config/settings_store.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "provider/line_guid.h"
#include "tests/support/memory_registry.h"

namespace velmora {
namespace {

constexpr const char* kNames[] = {"username", "password",      "domain",   "address",   "port",
                                  "encrypt",  "autooriginate", "loglevel", "loglength", "guid"};

// The text as ReadSetting gives it.
ByteString TextOf(const char* name) {
    const auto found = memoryRegistry.values.find(name);
    if (found == memoryRegistry.values.end()) return {};
    const RegistryValue& value = found->second;
    return value.multiString ? value.bytes : ByteString(value.bytes.c_str());
}

// The number in a setting; before it, the field's value. False when there is none: an error is thrown.
bool Expected(const char* name, int32_t& field) {
    const ByteString text = TextOf(name);
    if (text.empty()) return true;
    try {
        field = std::stoi(text);
        return true;
    } catch (const std::logic_error&) {
        return false;
    }
}

bool Load() {
    try {
        LoadSettings();
        return true;
    } catch (const std::logic_error&) {
        return false;
    }
}

void CheckNumbers(bool loaded) {
    Settings expected;
    int32_t encrypt = 1;
    int32_t autooriginate = 0;
    const bool good = Expected("port", expected.port) && Expected("encrypt", encrypt) &&
                      Expected("autooriginate", autooriginate) && Expected("loglevel", expected.loglevel) &&
                      Expected("loglength", expected.loglength);
    Expect(loaded == good, "settings are loaded when every number is one");
    Expect(settings.port == expected.port, "the port is the number in its text");
    if (!good) return;
    Expect(settings.encrypt == (encrypt > 0), "a flag is a number above zero");
    Expect(settings.autooriginate == (autooriginate > 0), "a flag is a number above zero");
    Expect(settings.loglevel == expected.loglevel, "loglevel is the number in its text");
    Expect(settings.loglength == expected.loglength, "loglength is the number in its text");
    Expect(settings.username == TextOf("username"), "a text is kept as it stands");
}

}  // namespace
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    memoryRegistry = {};
    settings = {};
    for (FuzzInput input(data, bytes); !input.AtEnd();) {
        const unsigned kind = input.U8();
        const ByteString stored = input.Piece();
        memoryRegistry.values[kNames[kind % std::size(kNames)]] = {RegistryStatus::kDone, kind >= 128, stored};
    }
    const bool loaded = Load();
    CheckNumbers(loaded);
    try {
        ParseLineGuid(settings.guid);
    } catch (const std::out_of_range&) {
        Expect(settings.guid.size() < 34, "a long guid gives an identity");
    }
    if (!loaded) return 0;

    // What is saved is what the next start loads.
    const Settings first = settings;
    settings.loglevel = 0;
    SaveSettings();
    settings = {};
    Expect(Load() && settings.port == first.port && settings.encrypt == first.encrypt, "saved numbers are loaded");
    return 0;
}
