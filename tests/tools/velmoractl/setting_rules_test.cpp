#include "tools/velmoractl/setting_rules.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "config/settings.h"
#include "config/settings_store.h"
#include "config/text_numbers.h"
#include "tests/support/memory_registry.h"
#include "tools/velmoractl/stored_settings.h"

namespace velmora::ctl {
namespace {

const SettingRule& Rule(std::string_view name) {
    const SettingRule* rule = FindSettingRule(name);
    if (rule == nullptr) throw std::logic_error("no such setting");
    return *rule;
}

ByteString Stored(std::string_view name, std::string_view value) {
    const CheckedSetting checked = CheckSetting(Rule(name), value);
    EXPECT_EQ(checked.error, "") << name << " " << value;
    return checked.stored;
}

bool Refused(std::string_view name, std::string_view value) {
    return !CheckSetting(Rule(name), value).error.empty();
}

TEST(SettingRules, AreThoseThatTheProviderLoadsInItsOrder) {
    memoryRegistry = {};
    LoadSettings();
    std::vector<ByteString> names;
    for (const SettingRule& rule : SettingRules()) names.emplace_back(rule.name);
    EXPECT_EQ(names, memoryRegistry.read);
}

TEST(SettingRules, NameTheDefaultsOfTheProvider) {
    const Settings defaults;
    EXPECT_EQ(Rule("port").defaultText, DecimalText(defaults.port));
    EXPECT_EQ(Rule("encrypt").defaultText, defaults.encrypt ? "1" : "0");
    EXPECT_EQ(Rule("autooriginate").defaultText, defaults.autooriginate ? "1" : "0");
    EXPECT_EQ(Rule("loglevel").defaultText, DecimalText(defaults.loglevel));
    EXPECT_EQ(Rule("loglength").defaultText, DecimalText(defaults.loglength));
    EXPECT_EQ(Rule("logfile").defaultText, defaults.logfile);
}

TEST(SettingRules, KnowNoOtherName) {
    EXPECT_EQ(FindSettingRule("Port"), nullptr);
    EXPECT_EQ(FindSettingRule(""), nullptr);
}

TEST(CheckSetting, TakesPortsFrom1To65535) {
    EXPECT_EQ(Stored("port", "1"), "1");
    EXPECT_EQ(Stored("port", "65535"), "65535");
    for (const char* value : {"0", "65536", "abc", "443x", " 443", "+443", "-1", "4 43", "99999999999"}) {
        EXPECT_TRUE(Refused("port", value)) << value;
    }
}

TEST(CheckSetting, SaysWhatIsWrongWithAPort) {
    EXPECT_EQ(CheckSetting(Rule("port"), "abc").error, "port must be a number from 1 to 65535, not \"abc\".");
}

TEST(CheckSetting, StoresFlagsAs1And0) {
    for (const char* value : {"1", "on", "ON", "yes", "true", "True"}) EXPECT_EQ(Stored("encrypt", value), "1");
    for (const char* value : {"0", "off", "no", "false", "FALSE"}) EXPECT_EQ(Stored("autooriginate", value), "0");
    for (const char* value : {"2", "-1", "maybe", "y", " 1"}) EXPECT_TRUE(Refused("encrypt", value)) << value;
}

TEST(CheckSetting, TakesNumbersOf32Bits) {
    EXPECT_EQ(Stored("loglevel", "-2147483648"), "-2147483648");
    EXPECT_EQ(Stored("loglength", "2147483647"), "2147483647");
    for (const char* value : {"2147483648", "-2147483649", "5x", "x", "1e3"}) {
        EXPECT_TRUE(Refused("loglevel", value)) << value;
    }
}

TEST(CheckSetting, TakesAGuidInItsForm) {
    EXPECT_EQ(Stored("guid", "01234567-89ab-CDEF-8123-456789abcdef"), "01234567-89ab-CDEF-8123-456789abcdef");
    for (const char* value : {"xyz", "01234567-89ab-cdef-8123-456789abcde", "01234567-89ab-cdef-8123-456789abcdef0",
                              "01234567x89ab-cdef-8123-456789abcdef", "g1234567-89ab-cdef-8123-456789abcdef",
                              "{01234567-89ab-cdef-8123-456789abcdef}"}) {
        EXPECT_TRUE(Refused("guid", value)) << value;
    }
}

TEST(CheckSetting, TakesAnEmptyValueForEverySetting) {
    for (const SettingRule& rule : SettingRules()) {
        EXPECT_EQ(Stored(rule.name, ""), "");
        EXPECT_EQ(CheckSetting(rule, "").warning, "");
    }
}

TEST(CheckSetting, WarnsOfATextThatTheDialogWouldCut) {
    EXPECT_EQ(CheckSetting(Rule("domain"), ByteString(255, 'x')).warning, "");
    const CheckedSetting checked = CheckSetting(Rule("domain"), ByteString(256, 'x'));
    EXPECT_EQ(checked.error, "");
    EXPECT_EQ(checked.stored.size(), 256U);
    EXPECT_NE(checked.warning.find("255 bytes"), ByteString::npos);
}

TEST(CheckSetting, RefusesATextThatTheProviderCannotRead) {
    EXPECT_FALSE(Refused("password", ByteString(16383, 'x')));
    EXPECT_TRUE(Refused("password", ByteString(16384, 'x')));
    EXPECT_TRUE(Refused("username", ByteString("4\0"
                                               "0",
                                               3)));
    EXPECT_TRUE(Refused("domain", "a\r\nb"));
}

TEST(CheckSetting, WarnsOfATextThatBreaksAMessage) {
    EXPECT_NE(CheckSetting(Rule("password"), "a&b").warning, "");
    EXPECT_NE(CheckSetting(Rule("username"), "a<b").warning, "");
    EXPECT_EQ(CheckSetting(Rule("logfile"), "C:\\a&b").warning, "");
}

TEST(CheckSetting, NeverRepeatsAPassword) {
    for (const ByteString& password :
         {ByteString(16384, 'Q'), ByteString("Q\nQ"), ByteString("Q&") + ByteString(300, 'Q')}) {
        const CheckedSetting checked = CheckSetting(Rule("password"), password);
        EXPECT_EQ((checked.error + checked.warning).find('Q'), ByteString::npos);
    }
}

class SettingFaultTest : public testing::Test {
protected:
    void SetUp() override {
        memoryRegistry = {};
        settings = {};
        for (const char* name : {"username", "address"}) memoryRegistry.values[name] = StoredText("x");
    }

    static bool LoadingFails() {
        try {
            LoadSettings();
            return false;
        } catch (const std::logic_error&) {
            return true;
        }
    }
};

TEST_F(SettingFaultTest, IsFoundExactlyWhereLoadingFails) {
    for (const char* name : {"port", "encrypt", "autooriginate", "loglevel", "loglength"}) {
        for (const char* text :
             {"", "1", " 8443xyz", "+7", "abc", " ", "-", "99999999999", "2147483647", "2147483648"}) {
            SCOPED_TRACE(ByteString(name) + " = \"" + text + "\"");
            memoryRegistry.values[name] = StoredText(text);
            EXPECT_EQ(FindSettingFault(Rule(name), text).stopsLoading, LoadingFails());
            memoryRegistry.values.erase(name);
        }
    }
}

TEST_F(SettingFaultTest, NamesTheSettingAndItsText) {
    memoryRegistry.values["port"] = StoredText("abc");
    memoryRegistry.values["loglevel"] = StoredText("99999999999");
    memoryRegistry.values["guid"] = StoredText("xyz");
    const std::vector<FaultySetting> faulty = FindFaultySettings();
    ASSERT_EQ(faulty.size(), 3U);
    EXPECT_EQ(faulty[0].sentence, "port \"abc\" is no number.");
    EXPECT_EQ(faulty[1].sentence, "loglevel \"99999999999\" is more than 32 bits hold.");
    EXPECT_EQ(faulty[2].sentence, "guid \"xyz\" is too short for a GUID.");
}

TEST_F(SettingFaultTest, IsAPortThatIsNone) {
    memoryRegistry.values["port"] = StoredText("70000");
    const std::vector<FaultySetting> faulty = FindFaultySettings();
    ASSERT_EQ(faulty.size(), 1U);
    EXPECT_EQ(faulty[0].sentence, "port \"70000\" is no TCP port (1 to 65535).");
    EXPECT_FALSE(faulty[0].stopsLoading);
}

TEST_F(SettingFaultTest, IsAMissingUsernameOrAddress) {
    memoryRegistry.values.clear();
    const std::vector<FaultySetting> faulty = FindFaultySettings();
    ASSERT_EQ(faulty.size(), 2U);
    EXPECT_EQ(faulty[0].sentence, "username is not set.");
    EXPECT_EQ(faulty[1].sentence, "address is not set.");
}

TEST_F(SettingFaultTest, IsAGuidOfFewerThan34Characters) {
    EXPECT_TRUE(FindSettingFault(Rule("guid"), ByteString(33, '0')).stopsLoading);
    EXPECT_EQ(FindSettingFault(Rule("guid"), ByteString(34, '0')).problem, "");
}

TEST_F(SettingFaultTest, IsMendedByACommandThatIsTaken) {
    EXPECT_EQ(FixCommand(Rule("port")), "velmoractl config set port 443");
    EXPECT_EQ(FixCommand(Rule("address")), "velmoractl config set address ADDRESS");
    EXPECT_EQ(FixCommand(Rule("password")), "velmoractl config set password");
}

TEST_F(SettingFaultTest, EffectiveTextIsTheStoredOneOrTheDefault) {
    EXPECT_EQ(EffectiveText("port"), "443");
    memoryRegistry.values["port"] = StoredText("");
    EXPECT_EQ(EffectiveText("port"), "443");
    memoryRegistry.values["port"] = StoredText("5050");
    EXPECT_EQ(EffectiveText("port"), "5050");
    EXPECT_EQ(EffectiveText("nosuch"), "");
}

}  // namespace
}  // namespace velmora::ctl
