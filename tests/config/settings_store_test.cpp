#include "config/settings_store.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <stdexcept>

#include "config/settings.h"
#include "tests/support/log_file_fake.h"
#include "tests/support/memory_registry.h"

namespace velmora {
namespace {

const std::vector<ByteString> kNames = {"username",      "password", "domain",    "address", "port", "encrypt",
                                        "autooriginate", "loglevel", "loglength", "logfile", "guid"};

class SettingsStore : public testing::Test {
protected:
    SettingsStore() {
        settings = {};
        memoryRegistry = {};
    }

    static void Store(const ByteString& name, const ByteString& text) {
        memoryRegistry.values[name] = StoredText(text);
    }

    // The texts that WriteLog has added to the log during call. A length without end keeps earlier tests out of it.
    template <typename Call>
    static ByteString LoggedBy(int32_t level, Call call) {
        settings.logfile = "trace.log";
        settings.loglevel = level;
        settings.loglength = 1000000;
        const size_t before = WrittenLog().size();
        call();
        return WrittenLog().substr(before);
    }
};

TEST_F(SettingsStore, KeepsTheDefaultsAndMakesAGuidWhenTheKeyIsEmpty) {
    LoadSettings();
    EXPECT_EQ(settings.username, "");
    EXPECT_EQ(settings.password, "");
    EXPECT_EQ(settings.domain, "");
    EXPECT_EQ(settings.address, "");
    EXPECT_EQ(settings.port, 443);
    EXPECT_TRUE(settings.encrypt);
    EXPECT_FALSE(settings.autooriginate);
    EXPECT_EQ(settings.loglevel, 0);
    EXPECT_EQ(settings.loglength, 1000);
    EXPECT_EQ(settings.logfile, "");
    EXPECT_EQ(settings.guid.size(), 36U);
    EXPECT_TRUE(memoryRegistry.written.empty()) << "a new GUID is stored by SaveSettings alone";
}

TEST_F(SettingsStore, ReadsEveryValueInOrder) {
    for (const ByteString& name : kNames) Store(name, "1");
    LoadSettings();
    EXPECT_EQ(memoryRegistry.read, kNames);
    EXPECT_EQ(settings.username, "1");
    EXPECT_EQ(settings.password, "1");
    EXPECT_EQ(settings.domain, "1");
    EXPECT_EQ(settings.address, "1");
    EXPECT_EQ(settings.port, 1);
    EXPECT_TRUE(settings.encrypt);
    EXPECT_TRUE(settings.autooriginate);
    EXPECT_EQ(settings.loglevel, 1);
    EXPECT_EQ(settings.loglength, 1);
    EXPECT_EQ(settings.logfile, "1");
    EXPECT_EQ(settings.guid, "1");
}

TEST_F(SettingsStore, ClearsAMissingTextAndKeepsAMissingNumber) {
    settings.username = "40";
    settings.logfile = "old.log";
    settings.port = 5060;
    settings.encrypt = false;
    Store("port", "");
    LoadSettings();
    EXPECT_EQ(settings.username, "");
    EXPECT_EQ(settings.logfile, "");
    EXPECT_EQ(settings.port, 5060);
    EXPECT_FALSE(settings.encrypt);
}

TEST_F(SettingsStore, TakesAnyNumberAboveZeroAsTrue) {
    const std::pair<const char*, bool> flags[] = {{"0", false}, {"1", true}, {"2", true}, {"-1", false}, {"7up", true}};
    for (const auto& [text, value] : flags) {
        SCOPED_TRACE(text);
        Store("encrypt", text);
        Store("autooriginate", text);
        LoadSettings();
        EXPECT_EQ(settings.encrypt, value);
        EXPECT_EQ(settings.autooriginate, value);
    }
}

TEST_F(SettingsStore, LetsAMalformedNumberThroughAndStopsThere) {
    Store("username", "40");
    Store("port", "abc");
    Store("logfile", "trace.log");
    EXPECT_THROW(LoadSettings(), std::invalid_argument);
    EXPECT_EQ(settings.username, "40");
    EXPECT_EQ(settings.port, 443);
    EXPECT_EQ(settings.logfile, "");
    EXPECT_EQ(memoryRegistry.read.back(), "port");

    Store("port", "99999999999");
    EXPECT_THROW(LoadSettings(), std::out_of_range);
    Store("port", "1");
    Store("loglength", "many");
    EXPECT_THROW(LoadSettings(), std::invalid_argument);
    EXPECT_EQ(settings.port, 1);
}

TEST_F(SettingsStore, CutsATextAtItsFirstNul) {
    memoryRegistry.values["username"] = {RegistryStatus::kDone, false, ByteString("40\0rest\0", 8)};
    memoryRegistry.values["domain"] = {RegistryStatus::kDone, false, "unterminated"};
    EXPECT_EQ(ReadSetting("username"), "40");
    EXPECT_EQ(ReadSetting("domain"), "unterminated");
}

TEST_F(SettingsStore, ReturnsAllBytesOfAMultiString) {
    const ByteString bytes("one\0two\0\0", 9);
    memoryRegistry.values["username"] = {RegistryStatus::kDone, true, bytes};
    EXPECT_EQ(ReadSetting("username"), bytes);
}

TEST_F(SettingsStore, LogsAnUnreadableKeyOrValueAtLevel1) {
    EXPECT_NE(LoggedBy(1, [] { EXPECT_EQ(ReadSetting("domain"), ""); }).find(":1 Cannot read registry key domain\r"),
              ByteString::npos);
    memoryRegistry.keyReadable = false;
    EXPECT_NE(LoggedBy(1, [] { EXPECT_EQ(ReadSetting("domain"), ""); }).find(":1 Cannot open registry for reading\r"),
              ByteString::npos);
    EXPECT_EQ(LoggedBy(0, [] { ReadSetting("domain"); }), "");
}

TEST_F(SettingsStore, SavesEveryValueInOrderAsText) {
    settings.username = "40";
    settings.password = "p&<>";
    settings.domain = "example.com";
    settings.address = "pbx.example.com";
    settings.port = -8443;
    settings.encrypt = true;
    settings.autooriginate = false;
    settings.loglevel = 5;
    settings.loglength = 12;
    settings.logfile = R"(C:\trace.log)";
    settings.guid = "g";
    SaveSettings();
    const std::vector<std::pair<ByteString, ByteString>> expected = {
        {"username", "40"},
        {"password", "p&<>"},
        {"domain", "example.com"},
        {"address", "pbx.example.com"},
        {"port", "-8443"},
        {"encrypt", "1"},
        {"autooriginate", "0"},
        {"loglevel", "5"},
        {"loglength", "12"},
        {"logfile", R"(C:\trace.log)"},
        {"guid", "g"},
    };
    EXPECT_EQ(memoryRegistry.written, expected);
}

TEST_F(SettingsStore, GoesOnSavingWhenOneValueFails) {
    memoryRegistry.unwritable = {"password", "guid"};
    SaveSettings();
    EXPECT_EQ(memoryRegistry.written.size(), kNames.size() - 2);
}

TEST_F(SettingsStore, TellsAnUnwritableKeyFromAnUnwritableValueAtLevel7) {
    memoryRegistry.unwritable = {"port"};
    EXPECT_NE(LoggedBy(7, [] { WriteSetting("port", "1"); })
                  .find(":7 WriteSetting: Could not access registry: SOFTWARE\\velmora\\tapi\\port\r"),
              ByteString::npos);
    memoryRegistry.keyWritable = false;
    EXPECT_NE(LoggedBy(7, [] { WriteSetting("port", "1"); })
                  .find(":7 WriteSetting: Could not access registry: SOFTWARE\\velmora\\tapi\r"),
              ByteString::npos);
    EXPECT_EQ(LoggedBy(6, [] { WriteSetting("port", "1"); }), "");
}

TEST_F(SettingsStore, LoadsWhatItSaved) {
    settings.username = "40";
    settings.port = 8443;
    settings.encrypt = false;
    settings.autooriginate = true;
    settings.loglevel = -2;
    settings.guid = GenerateGuid();
    const Settings saved = settings;
    SaveSettings();
    settings = {};
    LoadSettings();
    EXPECT_EQ(settings.username, saved.username);
    EXPECT_EQ(settings.port, saved.port);
    EXPECT_EQ(settings.encrypt, saved.encrypt);
    EXPECT_EQ(settings.autooriginate, saved.autooriginate);
    EXPECT_EQ(settings.loglevel, saved.loglevel);
    EXPECT_EQ(settings.guid, saved.guid);
}

// The layout with the place of each digit as "x", and of the digit that tells the variant as "V".
ByteString LayoutOf(const ByteString& guid) {
    ByteString layout;
    for (size_t index = 0; index < guid.size(); ++index) {
        const bool digit = ByteString("0123456789abcdef").find(guid[index]) != ByteString::npos;
        const bool version = index == 14;
        const bool variant = index == 19 && ByteString("89ab").find(guid[index]) != ByteString::npos;
        layout += variant ? 'V' : digit && !version ? 'x' : guid[index];
    }
    return layout;
}

TEST(GenerateGuid, HasTheLayoutVersionAndVariantOfARandomGuid) {
    std::set<ByteString> seen;
    for (int round = 0; round < 200; ++round) {
        const ByteString guid = GenerateGuid();
        EXPECT_EQ(LayoutOf(guid), "xxxxxxxx-xxxx-4xxx-Vxxx-xxxxxxxxxxxx") << guid;
        seen.insert(guid);
    }
    EXPECT_EQ(seen.size(), 200U);
}

// srand(1) is what an unseeded rand() starts from. The numbers of the Windows C runtime's rand() are 41, 18467, 6334,
// 26500, 19169, 15724, 11478 and 29358; a GUID made of them starts each group with 0 to 7.
#ifdef _WIN32
TEST(GenerateGuid, FollowsTheRandOfTheWindowsRuntime) {
    std::srand(1);
    EXPECT_EQ(GenerateGuid(), "00294823-18be-4784-8ae1-3d6c2cd672ae");
}
#endif

}  // namespace
}  // namespace velmora
