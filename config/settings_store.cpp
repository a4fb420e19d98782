#include "config/settings_store.h"

#include <cstdint>
#include <cstdlib>

#include "config/registry.h"
#include "config/settings.h"
#include "config/text_numbers.h"
#include "config/trace_log.h"

namespace velmora {
namespace {

void LoadNumber(const ByteString& name, int32_t& field) {
    const ByteString text = ReadSetting(name);
    if (!text.empty()) field = ParseInt(text);
}

// Any number above zero is true, any other false.
void LoadFlag(const ByteString& name, bool& field) {
    const ByteString text = ReadSetting(name);
    if (!text.empty()) field = ParseInt(text) > 0;
}

ByteString FlagText(bool flag) {
    return flag ? "1" : "0";
}

// 16 random bits through mask, with bits set, as four hexadecimal digits.
//
// rand() is never seeded and gives 15 bits, so an unmasked group starts with 0 to 7 and the same call gives the same
// GUID in every new process. Keep.
ByteString RandomGroup(uint32_t mask, uint32_t bits) {
    constexpr char kDigits[] = "0123456789abcdef";
    const uint32_t group = (static_cast<uint32_t>(std::rand()) & mask) | bits;
    ByteString text;
    for (int shift = 12; shift >= 0; shift -= 4) text += kDigits[(group >> shift) & 0xF];
    return text;
}

}  // namespace

ByteString ReadSetting(const ByteString& name) {
    const RegistryValue value = ReadRegistryValue(name);
    if (value.status == RegistryStatus::kNoKey) WriteLog(1, "Cannot open registry for reading");
    if (value.status == RegistryStatus::kNoValue) WriteLog(1, "Cannot read registry key ", name);
    return value.multiString ? value.bytes : value.bytes.substr(0, value.bytes.find('\0'));
}

void WriteSetting(const ByteString& name, const ByteString& value) {
    const RegistryStatus status = WriteRegistryValue(name, value);
    if (status == RegistryStatus::kDone) return;
    // The text that ends with the key means the key; the one that goes on with a name means that value.
    const ByteString text = ByteString("WriteSetting: Could not access registry: ") + kRegistryPath;
    if (status == RegistryStatus::kNoKey) WriteLog(7, text);
    if (status == RegistryStatus::kNoValue) WriteLog(7, text + "\\", name);
}

void LoadSettings() {
    settings.username = ReadSetting("username");
    settings.password = ReadSetting("password");
    settings.domain = ReadSetting("domain");
    settings.address = ReadSetting("address");
    LoadNumber("port", settings.port);
    LoadFlag("encrypt", settings.encrypt);
    LoadFlag("autooriginate", settings.autooriginate);
    LoadNumber("loglevel", settings.loglevel);
    LoadNumber("loglength", settings.loglength);
    settings.logfile = ReadSetting("logfile");
    const ByteString guid = ReadSetting("guid");
    settings.guid = guid.empty() ? GenerateGuid() : guid;
}

void SaveSettings() {
    WriteSetting("username", settings.username);
    WriteSetting("password", settings.password);
    WriteSetting("domain", settings.domain);
    WriteSetting("address", settings.address);
    WriteSetting("port", DecimalText(settings.port));
    WriteSetting("encrypt", FlagText(settings.encrypt));
    WriteSetting("autooriginate", FlagText(settings.autooriginate));
    WriteSetting("loglevel", DecimalText(settings.loglevel));
    WriteSetting("loglength", DecimalText(settings.loglength));
    WriteSetting("logfile", settings.logfile);
    WriteSetting("guid", settings.guid);
}

ByteString GenerateGuid() {
    // A sum of calls would leave their order to the compiler.
    ByteString guid = RandomGroup(0xFFFF, 0);
    guid += RandomGroup(0xFFFF, 0);
    guid += '-';
    guid += RandomGroup(0xFFFF, 0);
    guid += '-';
    guid += RandomGroup(0x0FFF, 0x4000);  // the version digit, 4
    guid += '-';
    guid += RandomGroup(0x3FFF, 0x8000);  // the variant: 8, 9, a or b
    guid += '-';
    for (int group = 0; group < 3; ++group) guid += RandomGroup(0xFFFF, 0);
    return guid;
}

}  // namespace velmora
