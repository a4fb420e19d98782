#include <algorithm>

#include "tests/provider/provider_test.h"
#include "tests/support/guarded_buffer.h"

namespace velmora {
namespace {

static_assert(sizeof(LINEADDRESSCAPS) == kLineAddressCapsBytes);

// What the address text of a username takes, by its declaration: 16-bit units with a NUL; nothing without a username.
DWORD AddressBytes(const std::string& username) {
    return username.empty() ? 0 : static_cast<DWORD>(2 * username.size() + 2);
}

// The address text as it is written: as many units as its declared size has bytes, so twice that size. Each byte of the
// username is widened as a signed character; zeros follow.
std::string AddressText(const std::string& username) {
    std::string text;
    for (const char character : username) {
        const bool negative = static_cast<unsigned char>(character) >= 0x80;
        text += character;
        text += negative ? '\xFF' : '\0';
    }
    text.resize(2 * size_t{AddressBytes(username)}, '\0');
    return text;
}

void FillFields(GuardedBuffer& caps, DWORD deviceId) {
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwLineDeviceID), deviceId);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwAddressSharing), 1);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwCallInfoStates), 0x30);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwCallerIDFlags), 0x28);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwCalledIDFlags), 0x28);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwRedirectionIDFlags), 0x28);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwCallStates), 0x117);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwDialToneModes), 0x20);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwBusyModes), 0x20);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwSpecialInfo), 0x10);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwDisconnectModes), 0x800);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwMaxNumActiveCalls), 1);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwAddrCapFlags), 0x100020);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwCallFeatures), 0x2C5);
    caps.SetWord(offsetof(LINEADDRESSCAPS, dwAddressFeatures), 3);
}

class AddressCapsTest : public ProviderTest {
protected:
    // Hands over a buffer that declares totalBytes, with room for what is written beyond, and compares every byte.
    void ExpectCaps(const std::string& username, DWORD totalBytes) {
        SCOPED_TRACE(totalBytes);
        const DWORD addressBytes = AddressBytes(username);
        const DWORD neededBytes = static_cast<DWORD>(kLineAddressCapsBytes) + addressBytes;
        const size_t bufferBytes = std::max<size_t>(totalBytes, kLineAddressCapsBytes + 2 * size_t{addressBytes});
        GuardedBuffer caps(bufferBytes);
        GuardedBuffer expected(bufferBytes);
        expected.SetWord(offsetof(LINEADDRESSCAPS, dwTotalSize), totalBytes);
        expected.SetWord(offsetof(LINEADDRESSCAPS, dwNeededSize), neededBytes);
        expected.SetWord(offsetof(LINEADDRESSCAPS, dwUsedSize), std::min(totalBytes, neededBytes));
        if (totalBytes >= kLineAddressCapsBytes) FillFields(expected, 99);
        if (addressBytes > 0 && totalBytes >= neededBytes) {
            expected.SetWord(offsetof(LINEADDRESSCAPS, dwAddressSize), addressBytes);
            expected.SetWord(offsetof(LINEADDRESSCAPS, dwAddressOffset), kLineAddressCapsBytes);
            expected.SetBytes(kLineAddressCapsBytes, AddressText(username));
        }
        caps.SetWord(offsetof(LINEADDRESSCAPS, dwTotalSize), totalBytes);
        EXPECT_EQ(provider.lineGetAddressCaps(99, 17, kTspiVersion, 0, caps.As<LINEADDRESSCAPS>()), 0);
        EXPECT_EQ(caps.DifferencesFrom(expected), "");
    }
};

TEST_F(AddressCapsTest, HoldTheFieldsAndTheUsernameWithTwiceTheRoomThatItDeclares) {
    Init();
    ExpectCaps(kUsername, kLineAddressCapsBytes + 6);
    ExpectCaps(kUsername, kLineAddressCapsBytes + 7);
    ExpectCaps(kUsername, 1000);
}

TEST_F(AddressCapsTest, LeaveTheAddressOutWhenOneByteIsMissingAndAllFieldsBelowTheFixedPart) {
    Init();
    ExpectCaps(kUsername, kLineAddressCapsBytes + 5);
    ExpectCaps(kUsername, kLineAddressCapsBytes);
    ExpectCaps(kUsername, kLineAddressCapsBytes - 1);
    ExpectCaps(kUsername, 12);
}

TEST_F(AddressCapsTest, HaveNoAddressWithoutAUsername) {
    registry.RemoveValue("username");
    Init();
    ExpectCaps("", kLineAddressCapsBytes - 1);
    ExpectCaps("", kLineAddressCapsBytes);
    ExpectCaps("", kLineAddressCapsBytes + 100);
}

TEST_F(AddressCapsTest, WidenBytesOfTheUsernameAsSignedCharacters) {
    const std::string username = "J\xF6rg\x80\x7F\xFF";
    registry.SetRaw("username", REG_BINARY, username);
    Init();
    ExpectCaps(username, kLineAddressCapsBytes + 16);
}

TEST_F(AddressCapsTest, HoldALongUsernameAndOneWithNuls) {
    const std::string numbers(1000, '7');
    registry.Set("username", numbers);
    Init();
    ExpectCaps(numbers, kLineAddressCapsBytes + 2002);
    Stop();
    const std::string strings(
        "40\0"
        "41\0\0",
        7);
    registry.SetRaw("username", REG_MULTI_SZ, strings);
    Init();
    ExpectCaps(strings, kLineAddressCapsBytes + 16);
}

TEST_F(AddressCapsTest, AreRecordedWithoutTheirArguments) {
    Init();
    EXPECT_EQ(Recorded([&] { ExpectCaps(kUsername, kLineAddressCapsBytes); }), (LogTexts{"TSPI_lineGetAddressCaps"}));
    EXPECT_EQ(log.Records().back().level, 5);
}

}  // namespace
}  // namespace velmora
