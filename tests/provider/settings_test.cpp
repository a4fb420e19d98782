#include <cstring>
#include <stdexcept>

#include "tests/provider/provider_test.h"
#include "tests/support/guarded_buffer.h"

namespace velmora {
namespace {

const char* const kValueNames[] = {"username",      "password", "domain",    "address", "port", "encrypt",
                                   "autooriginate", "loglevel", "loglength", "logfile", "guid"};

constexpr char kNotANumber[] = "invalid stoi argument";
constexpr char kTooLarge[] = "stoi argument out of range";

class SettingsTest : public ProviderTest {
protected:
    // What initialising throws, by its message; "invalid argument: " or "out of range: " names the type.
    std::string ErrorOfInit() {
        running = true;
        try {
            provider.providerInit(kTspiVersion, kProviderId, kLineDeviceIdBase, kPhoneDeviceIdBase, 1, 1, nullptr,
                                  nullptr);
        } catch (const std::invalid_argument& error) {
            return std::string("invalid argument: ") + error.what();
        } catch (const std::out_of_range& error) {
            return std::string("out of range: ") + error.what();
        }
        return "nothing thrown";
    }

    std::string LoginElement(const std::string& name) { return ElementText(pbx.WaitForFrame(0).xml, "tns:" + name); }

    // Whether a login comes with a port value of this text in place of the PBX's port.
    void ExpectPortTakenFrom(const std::string& text) {
        SCOPED_TRACE(text);
        registry.Set("port", text);
        const size_t before = pbx.Frames().size();
        Init();
        EXPECT_TRUE(pbx.WaitForFrames(before + 1));
        Stop();
    }

    // Whether a MakeCall asks for auto-origination under this text of the setting.
    bool AutoOriginates(const std::string& text, const std::string& number) {
        registry.Set("autooriginate", text);
        Init();
        MakeCall(Wide(number));
        WaitForMakeCall(number);
        Stop();
        return pbx.Frames().back().xml.find("<autoOriginate>") != std::string::npos;
    }

    std::string PortText() const { return std::to_string(pbx.Port()); }
};

TEST_F(SettingsTest, AreReadInOrderAndMissingOnesRecorded) {
    LogIn();
    Stop();
    registry.RemoveKey();
    registry.CreateKey();
    const LogTexts texts = Recorded([&] {
        Init();
        Stop();
    });
    // The log keeps its file and its level: a missing number keeps what was loaded before. A missing address names no
    // PBX.
    LogTexts expected = {"Provider Init"};
    for (const char* name : kValueNames) expected.push_back(std::string("Cannot read registry key ") + name);
    ASSERT_GE(texts.size(), expected.size());
    EXPECT_EQ(LogTexts(texts.begin(), texts.begin() + static_cast<ptrdiff_t>(expected.size())), expected);
    for (const LogRecord& record : log.Records()) {
        EXPECT_EQ(record.level == 1, record.text == "Provider Init" || record.text.starts_with("Cannot read") ||
                                         record.text.starts_with("Connection establishment"))
            << record.text;
    }
}

TEST_F(SettingsTest, WithoutTheirKeyAreRecordedAsUnreadableOneByOne) {
    LogIn();
    Stop();
    registry.RemoveKey();
    Init();
    Stop();
    LogTexts expected = {"Provider Init"};
    expected.insert(expected.end(), std::size(kValueNames), "Cannot open registry for reading");
    const LogTexts texts = log.TextsOfLevel(1);
    ASSERT_GE(texts.size(), expected.size());
    EXPECT_EQ(LogTexts(texts.begin(), texts.begin() + static_cast<ptrdiff_t>(expected.size())), expected);
}

TEST_F(SettingsTest, ClearMissingTextsAndKeepMissingOrEmptyNumbers) {
    registry.Set("autooriginate", "1");
    LogIn();
    Stop();
    for (const char* name : {"username", "password", "domain", "port", "encrypt", "autooriginate"}) {
        registry.RemoveValue(name);
    }
    Init();
    const std::string login = pbx.WaitForFrame(2).xml;
    EXPECT_NE(login.find("<tns:userName></tns:userName>"), std::string::npos);
    EXPECT_NE(login.find("<tns:password></tns:password>"), std::string::npos);
    EXPECT_NE(login.find("<tns:domain></tns:domain>"), std::string::npos);
    MakeCall(L"1");
    EXPECT_EQ(ElementText(pbx.WaitForFrame(3).xml, "autoOriginate"), "doNotPrompt");
    Stop();

    for (const char* name : {"port", "encrypt", "autooriginate", "loglevel", "loglength"}) registry.Set(name, "");
    Init();
    MakeCall(L"2");
    EXPECT_EQ(ElementText(pbx.WaitForFrame(5).xml, "autoOriginate"), "doNotPrompt");
    EXPECT_EQ(Recorded([&] { provider.lineClose(nullptr); }), (LogTexts{"TSPI_lineClose"}));
}

TEST_F(SettingsTest, WithoutAnyKeyLogNothingAndStillInitialise) {
    registry.RemoveKey();
    Init();
    Stop();
    EXPECT_FALSE(log.Exists());
}

TEST_F(SettingsTest, EncryptByDefaultAndWhenTheNumberIsAboveZero) {
    registry.RemoveValue("encrypt");
    for (const char* text : {"", "1", "2", " +7 times", "2147483647"}) {
        SCOPED_TRACE(text);
        if (*text != '\0') registry.Set("encrypt", text);
        const size_t before = pbx.Bytes().size();
        Init();
        // A TLS 1.0 handshake record that starts with a ClientHello (RFC 2246, 6.2.1 and 7.4).
        ASSERT_TRUE(pbx.WaitForBytes(before + 6));
        const std::string bytes = pbx.Bytes().substr(before);
        EXPECT_EQ(bytes.substr(0, 3), "\x16\x03\x01");
        EXPECT_EQ(bytes[5], '\x01');
        MakeCall(L"1");
        Stop();
        EXPECT_TRUE(pbx.WaitForEnd());
    }
    const std::string bytes = pbx.Bytes();
    for (const char* clear : {"<?xml", "StartApplicationSession", "MakeCall", kPassword}) {
        EXPECT_EQ(bytes.find(clear), std::string::npos) << clear << " goes out in the clear";
    }
}

TEST_F(SettingsTest, DoNotEncryptWhenTheNumberIsZeroOrBelow) {
    size_t frames = 0;
    for (const char* text : {"0", "-1", "0x1", " -2147483648"}) {
        SCOPED_TRACE(text);
        registry.Set("encrypt", text);
        Init();
        EXPECT_NE(pbx.WaitForFrame(frames++).xml.find("<StartApplicationSession "), std::string::npos);
        Stop();
    }
}

TEST_F(SettingsTest, TakeThePortFromTheNumberAtItsStart) {
    ExpectPortTakenFrom(PortText());
    ExpectPortTakenFrom(" " + PortText() + "xyz");
    ExpectPortTakenFrom("\t\r\n +" + PortText() + ".5");
    ExpectPortTakenFrom("000" + PortText() + " 1");
}

TEST_F(SettingsTest, ThrowForANumberThatIsNoneOrTooLarge) {
    for (const char* name : {"port", "encrypt", "autooriginate", "loglevel", "loglength"}) {
        SCOPED_TRACE(name);
        for (const char* text : {"abc", "x1", " ", "-", "+-1", "- 1", ".5"}) {
            SCOPED_TRACE(text);
            registry.Set(name, text);
            EXPECT_EQ(ErrorOfInit(), std::string("invalid argument: ") + kNotANumber);
            Stop();
        }
        for (const char* text : {"2147483648", "-2147483649", "99999999999", "99999999999999999999999"}) {
            SCOPED_TRACE(text);
            registry.Set(name, text);
            EXPECT_EQ(ErrorOfInit(), std::string("out of range: ") + kTooLarge);
            Stop();
        }
        registry.Set(name, "0");
    }
    EXPECT_EQ(pbx.Connections(), 0U);
}

TEST_F(SettingsTest, TakeNumbersUpToTheLimitsOf32Bits) {
    registry.Set("loglength", "2147483647");
    registry.Set("loglevel", "2147483647");
    registry.Set("autooriginate", "-2147483648");
    LogIn();
    EXPECT_EQ(Recorded([&] { provider.lineClose(nullptr); }), (LogTexts{"TSPI_lineClose"}));
}

TEST_F(SettingsTest, BehindAMalformedNumberAreNotRead) {
    LogIn();
    Stop();
    registry.RemoveKey();
    registry.Set("encrypt", "maybe");
    EXPECT_EQ(Recorded([&] { EXPECT_EQ(ErrorOfInit(), std::string("invalid argument: ") + kNotANumber); }),
              (LogTexts{"Provider Init", "Cannot read registry key username", "Cannot read registry key password",
                        "Cannot read registry key domain", "Cannot read registry key address",
                        "Cannot read registry key port"}));
}

TEST_F(SettingsTest, BeforeAMalformedNumberAreTaken) {
    registry.Set("loglevel", "high");
    EXPECT_EQ(ErrorOfInit(), std::string("invalid argument: ") + kNotANumber);
    // The username is there, the GUID is not.
    GuardedBuffer caps(kLineAddressCapsBytes);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwTotalSize), kLineAddressCapsBytes);
    EXPECT_EQ(provider.lineGetAddressCaps(0, 0, kTspiVersion, 0, caps.As<LINEADDRESSCAPS>()), 0);
    EXPECT_EQ(caps.Word(offsetof(LINEADDRESSCAPS, dwNeededSize)), kLineAddressCapsBytes + 6);
    GuardedBuffer devCaps(kLineDevCapsBytes);
    devCaps.SetWord(offsetof(LINEDEVCAPS, dwTotalSize), kLineDevCapsBytes);
    EXPECT_THROW(provider.lineGetDevCaps(0, kTspiVersion, 0, devCaps.As<LINEDEVCAPS>()), std::out_of_range);
}

TEST_F(SettingsTest, ThatFailedToLoadCanBeLoadedAfterAShutdown) {
    registry.Set("port", "abc");
    EXPECT_EQ(ErrorOfInit(), std::string("invalid argument: ") + kNotANumber);
    registry.Set("port", PortText());
    // The provider counts as initialised, without a session.
    EXPECT_EQ(ErrorOfInit(), "nothing thrown");
    EXPECT_EQ(pbx.Connections(), 0U);
    Stop();
    LogIn();
    EXPECT_EQ(pbx.Connections(), 1U);
}

TEST_F(SettingsTest, AutoOriginateWhenTheNumberIsAboveZero) {
    EXPECT_FALSE(AutoOriginates("0", "10"));
    EXPECT_TRUE(AutoOriginates("1", "11"));
    EXPECT_FALSE(AutoOriginates("-1", "12"));
    EXPECT_TRUE(AutoOriginates(" 2x", "13"));
    EXPECT_FALSE(AutoOriginates("0", "14"));
    EXPECT_FALSE(AutoOriginates("", "15")) << "an empty text keeps what was there";
    EXPECT_TRUE(AutoOriginates("2147483647", "16"));
    EXPECT_TRUE(AutoOriginates("", "17")) << "an empty text keeps what was there";
}

TEST_F(SettingsTest, TakeATextUpToItsFirstNulWhateverItsType) {
    registry.SetRaw("username", REG_BINARY,
                    std::string("4\0"
                                "1",
                                3));
    registry.SetRaw("password", REG_EXPAND_SZ, std::string("%PATH%\0", 7));
    registry.SetRaw("domain", REG_SZ, std::string("one\0two\0", 8));
    Init();
    EXPECT_EQ(LoginElement("userName"), "4");
    EXPECT_EQ(LoginElement("password"), "%PATH%");
    EXPECT_EQ(LoginElement("domain"), "one");
    Stop();

    registry.SetRaw("username", REG_SZ, "");
    registry.SetRaw("password", REG_BINARY, "");
    registry.SetRaw("domain", REG_MULTI_SZ, "");
    Init();
    const std::string login = pbx.WaitForFrame(1).xml;
    for (const char* name : {"userName", "password", "domain"}) {
        EXPECT_NE(login.find(std::string("<tns:") + name + "></tns:"), std::string::npos) << name;
    }
}

TEST_F(SettingsTest, TakeTheBytesOfANumericType) {
    // 0x00383736 and 0x4443424139383736, little-endian: the second has no NUL.
    registry.SetRaw("username", REG_DWORD, std::string("678\0", 4));
    registry.SetRaw("password", REG_QWORD, "6789ABCD");
    Init();
    EXPECT_EQ(LoginElement("userName"), "678");
    EXPECT_EQ(LoginElement("password"), "6789ABCD");
    Stop();

    // 8443 as a DWORD: its first byte is no digit.
    registry.SetRaw("port", REG_DWORD, std::string("\xFB\x20\0\0", 4));
    EXPECT_EQ(ErrorOfInit(), std::string("invalid argument: ") + kNotANumber);
}

TEST_F(SettingsTest, TakeATextStoredWithoutItsTerminator) {
    registry.Set("username", "a long text before it");
    registry.SetUnterminated("password", "xy");
    registry.SetUnterminated("domain", "z");
    Init();
    EXPECT_EQ(LoginElement("userName"), "a long text before it");
    EXPECT_EQ(LoginElement("password"), "xy");
    EXPECT_EQ(LoginElement("domain"), "z");
}

TEST_F(SettingsTest, TakeAMultiStringWithAllItsNuls) {
    const std::string strings(
        "40\0"
        "41\0\0",
        7);
    registry.SetRaw("username", REG_MULTI_SZ, strings);
    LogIn();
    EXPECT_EQ(LoginElement("userName"), strings);
    MakeCall(L"1");
    EXPECT_EQ(ElementText(pbx.WaitForFrame(2).xml, "callingDevice"), strings + "@" + kDomain);
}

TEST_F(SettingsTest, TakeTextsOf16384BytesAndNoMore) {
    registry.Set("username", std::string(16383, 'u'));
    registry.Set("password", std::string(16384, 'p'));
    registry.SetRaw("domain", REG_BINARY, std::string(16384, 'd'));
    Init();
    EXPECT_EQ(LoginElement("userName"), std::string(16383, 'u'));
    EXPECT_EQ(LoginElement("password"), "");
    EXPECT_EQ(LoginElement("domain"), std::string(16384, 'd'));
}

// The C runtime's rand(), which nobody seeds, starts with 41, 18467, 6334, 26500, 19169, 15724, 11478, 29358: in
// hexadecimal 0029 4823 18be 6784 4ae1 3d6c 2cd6 72ae. With the version and variant bits in place the text is
// 00294823-18be-4784-8ae1-3d6c2cd672ae. In the line's GUID lower-case digits count 42 and more: 18be is
// 0x1800 + 43 * 16 + 46 = 0x1ade; 8a is 0xaa, e1 stays (0x2e1 cut), 3d is 0x5d, 6c is 0x8c, 2c is 0x4c, d6 and 72 stay,
// ae is 42 * 16 + 46 = 0x2ce cut to 0xce.
//
// The second load goes on with 26962, 24464, 5705, 28145, 23281, 16827, 9961, 491, so 69525f90-1649-4df1-9af1-
// 41bb26e901eb, and the third with 2995, 11942, 4827, 5436, 32391, 14604, 3902, 153: 0bb32ea6-12db-453c-be87-
// 390c0f3e0099.
TEST_F(SettingsTest, MakeANewGuidWithEachLoadWhenNoneIsStored) {
    constexpr GUID kExpected[] = {
        {0x00294823, 0x1ade, 0x4784, {0xaa, 0xe1, 0x5d, 0x8c, 0x4c, 0xd6, 0x72, 0xce}},
        {0x69527f90, 0x1649, 0x6ff1, {0xba, 0xf1, 0x41, 0xdb, 0x26, 0xe9, 0x01, 0x0b}},
        {0x2db350a6, 0x14fb, 0x455c, {0xde, 0x87, 0x39, 0x2c, 0x2f, 0x5e, 0x00, 0x99}},
    };
    registry.RemoveValue("guid");
    for (const GUID& expected : kExpected) {
        Init();
        GuardedBuffer caps(kLineDevCapsBytes);
        caps.SetWord(offsetof(LINEDEVCAPS, dwTotalSize), kLineDevCapsBytes);
        EXPECT_EQ(provider.lineGetDevCaps(0, kTspiVersion, 0, caps.As<LINEDEVCAPS>()), 0);
        const std::string guid = caps.Bytes(offsetof(LINEDEVCAPS, PermanentLineGuid), sizeof(GUID));
        EXPECT_EQ(std::memcmp(guid.data(), &expected, sizeof expected), 0);
        Stop();
    }
    EXPECT_EQ(log.TextsOfLevel(1).front(), "Cannot read registry key guid");
    EXPECT_FALSE(registry.HasValue("guid"));
}

}  // namespace
}  // namespace velmora
