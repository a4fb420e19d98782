#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "tests/provider/provider_test.h"
#include "tests/support/guarded_buffer.h"

namespace velmora {
namespace {

static_assert(offsetof(LINEDEVCAPS, PermanentLineGuid) + sizeof(GUID) == kLineDevCapsBytes);

constexpr std::u16string_view kProviderText = u"Velmora TAPI Service Provider";
constexpr std::u16string_view kLineText = u"Velmora PBX";
constexpr DWORD kProviderTextBytes = 60;  // with its NUL
constexpr DWORD kLineTextBytes = 24;
constexpr DWORD kNeededBytes = kLineDevCapsBytes + kProviderTextBytes + kLineTextBytes;

std::string TerminatedBytes(std::u16string_view text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2) + std::string(2, '\0');
}

void SetDialParams(GuardedBuffer& caps, size_t offset, DWORD pause, DWORD speed, DWORD duration, DWORD dialtone) {
    caps.SetWord(offset + offsetof(LINEDIALPARAMS, dwDialPause), pause);
    caps.SetWord(offset + offsetof(LINEDIALPARAMS, dwDialSpeed), speed);
    caps.SetWord(offset + offsetof(LINEDIALPARAMS, dwDigitDuration), duration);
    caps.SetWord(offset + offsetof(LINEDIALPARAMS, dwWaitForDialtone), dialtone);
}

// Turns a caller's buffer that starts with totalBytes into what it has to hold afterwards.
void Fill(GuardedBuffer& caps, DWORD totalBytes) {
    caps.Zero(0, totalBytes);
    caps.SetWord(offsetof(LINEDEVCAPS, dwTotalSize), totalBytes);
    caps.SetWord(offsetof(LINEDEVCAPS, dwNeededSize), kNeededBytes);
    caps.SetWord(offsetof(LINEDEVCAPS, dwUsedSize), std::min(totalBytes, kNeededBytes));
    if (totalBytes >= kNeededBytes) {
        caps.SetWord(offsetof(LINEDEVCAPS, dwProviderInfoSize), kProviderTextBytes);
        caps.SetWord(offsetof(LINEDEVCAPS, dwProviderInfoOffset), kLineDevCapsBytes);
        caps.SetBytes(kLineDevCapsBytes, TerminatedBytes(kProviderText));
        caps.SetWord(offsetof(LINEDEVCAPS, dwLineNameSize), kLineTextBytes);
        caps.SetWord(offsetof(LINEDEVCAPS, dwLineNameOffset), kLineDevCapsBytes + kProviderTextBytes);
        caps.SetBytes(kLineDevCapsBytes + kProviderTextBytes, TerminatedBytes(kLineText));
    }
    caps.SetWord(offsetof(LINEDEVCAPS, dwPermanentLineID), 0x23450000);
    caps.SetWord(offsetof(LINEDEVCAPS, dwStringFormat), 1);
    caps.SetWord(offsetof(LINEDEVCAPS, dwAddressModes), 1);
    caps.SetWord(offsetof(LINEDEVCAPS, dwNumAddresses), 1);
    caps.SetWord(offsetof(LINEDEVCAPS, dwBearerModes), 1);
    caps.SetWord(offsetof(LINEDEVCAPS, dwMediaModes), 4);
    caps.SetWord(offsetof(LINEDEVCAPS, dwGenerateDigitModes), 2);
    caps.SetWord(offsetof(LINEDEVCAPS, dwDevCapFlags), 0x20);
    caps.SetWord(offsetof(LINEDEVCAPS, dwMaxNumActiveCalls), 1);
    SetDialParams(caps, offsetof(LINEDEVCAPS, MinDialParams), 100, 50, 100, 100);
    SetDialParams(caps, offsetof(LINEDEVCAPS, DefaultDialParams), 250, 50, 250, 500);
    SetDialParams(caps, offsetof(LINEDEVCAPS, MaxDialParams), 1000, 50, 1000, 1000);
    caps.SetWord(offsetof(LINEDEVCAPS, dwLineFeatures), 8);
    // GUID {00000000-0000-4000-8000-000000000000}, little-endian in its first three fields.
    caps.SetBytes(offsetof(LINEDEVCAPS, PermanentLineGuid),
                  std::string("\0\0\0\0\0\0\x00\x40\x80\0\0\0\0\0\0\0", sizeof(GUID)));
}

LONG GetDevCaps(const ProviderHost& provider, GuardedBuffer& caps, DWORD totalBytes,
                DWORD deviceId = kLineDeviceIdBase) {
    caps.SetWord(offsetof(LINEDEVCAPS, dwTotalSize), totalBytes);
    return provider.lineGetDevCaps(deviceId, kTspiVersion, 0, caps.As<LINEDEVCAPS>());
}

class DevCapsTest : public ProviderTest {
protected:
    // Hands over a buffer of bufferBytes that declares totalBytes, and compares every byte of it.
    void ExpectCaps(size_t bufferBytes, DWORD totalBytes) {
        SCOPED_TRACE(totalBytes);
        GuardedBuffer caps(bufferBytes);
        GuardedBuffer expected(bufferBytes);
        Fill(expected, totalBytes);
        EXPECT_EQ(GetDevCaps(provider, caps, totalBytes), 0);
        EXPECT_EQ(caps.DifferencesFrom(expected), "");
    }

    // The line's identity under another stored GUID text, as 32 hexadecimal digits: Data1, Data2, Data3, Data4. It
    // takes a session of its own, since the settings are loaded at its start.
    std::string LineGuidOf(const std::string& text) {
        registry.Set("guid", text);
        Init();
        GuardedBuffer caps(kLineDevCapsBytes);
        EXPECT_EQ(GetDevCaps(provider, caps, kLineDevCapsBytes), 0);
        Stop();
        const auto* guid = &caps.As<LINEDEVCAPS>()->PermanentLineGuid;
        GUID copy;
        std::memcpy(&copy, guid, sizeof copy);
        char digits[40];
        const int length =
            std::snprintf(digits, sizeof digits, "%08lx-%04x-%04x-%02x%02x%02x%02x%02x%02x%02x%02x", copy.Data1,
                          copy.Data2, copy.Data3, copy.Data4[0], copy.Data4[1], copy.Data4[2], copy.Data4[3],
                          copy.Data4[4], copy.Data4[5], copy.Data4[6], copy.Data4[7]);
        return {digits, digits + length};
    }

    // The message of the std::out_of_range that a stored GUID text makes the entry point throw; a note when it does
    // not.
    std::string ErrorOf(const std::string& text) {
        registry.Set("guid", text);
        Init();
        GuardedBuffer caps(kLineDevCapsBytes);
        std::string message = "nothing thrown";
        try {
            GetDevCaps(provider, caps, kLineDevCapsBytes);
        } catch (const std::out_of_range& error) {
            message = error.what();
        }
        Stop();
        return message;
    }
};

TEST_F(DevCapsTest, FillsEveryFieldAndBothTextsWhenThereIsRoomAndZeroesTheRest) {
    Init();
    ExpectCaps(kNeededBytes, kNeededBytes);
    ExpectCaps(kNeededBytes + 1, kNeededBytes + 1);
    ExpectCaps(5000, 5000);
}

TEST_F(DevCapsTest, LeavesTheTextsOutWhenOneByteIsMissing) {
    Init();
    ExpectCaps(kNeededBytes - 1, kNeededBytes - 1);
    ExpectCaps(kLineDevCapsBytes + 1, kLineDevCapsBytes + 1);
    ExpectCaps(kLineDevCapsBytes, kLineDevCapsBytes);
}

TEST_F(DevCapsTest, FillsTheFieldsBeyondADeclaredSizeBelowTheFixedPart) {
    Init();
    ExpectCaps(kLineDevCapsBytes, kLineDevCapsBytes - 1);
    ExpectCaps(kLineDevCapsBytes, 12);
    ExpectCaps(kLineDevCapsBytes, 4);
}

TEST_F(DevCapsTest, AreRecordedWithTheDeviceIdInDecimal) {
    Init();
    GuardedBuffer caps(kLineDevCapsBytes);
    EXPECT_EQ(Recorded([&] { GetDevCaps(provider, caps, kLineDevCapsBytes, 5); }),
              (LogTexts{"TSPI_lineGetDevCaps dwDeviceID=5"}));
    EXPECT_EQ(Recorded([&] { GetDevCaps(provider, caps, kLineDevCapsBytes, 0xFFFFFFFF); }),
              (LogTexts{"TSPI_lineGetDevCaps dwDeviceID=4294967295"}));
    EXPECT_EQ(log.Records().back().level, 5);
}

TEST_F(DevCapsTest, MakeThePermanentLineIdOfProviderAndLineNumber) {
    struct Line {
        DWORD providerId;
        DWORD lineDeviceIdBase;
        DWORD deviceId;
        DWORD permanentLineId;
    };
    const Line lines[] = {
        {0x00012345, 5, 5, 0x23450000}, {0x00012345, 5, 6, 0x23450001},          {0, 0, 0, 0},
        {0xFFFFFFFF, 3, 3, 0xFFFF0000}, {0x00000002, 0, 0x00010001, 0x00030001}, {0x00000002, 5, 4, 0xFFFFFFFF},
    };
    for (const Line& line : lines) {
        SCOPED_TRACE(testing::Message() << line.providerId << " " << line.deviceId);
        Init(line.providerId, line.lineDeviceIdBase);
        GuardedBuffer caps(kLineDevCapsBytes);
        EXPECT_EQ(GetDevCaps(provider, caps, kLineDevCapsBytes, line.deviceId), 0);
        EXPECT_EQ(caps.Word(offsetof(LINEDEVCAPS, dwPermanentLineID)), line.permanentLineId);
        Stop();
    }
}

TEST_F(DevCapsTest, TakeTheLineGuidFromDecimalAndUpperCaseDigits) {
    EXPECT_EQ(LineGuidOf("00000000-0000-4000-8000-000000000000"), "00000000-0000-4000-8000000000000000");
    EXPECT_EQ(LineGuidOf("12345678-9012-3456-7890-123456789012"), "12345678-9012-3456-7890123456789012");
    EXPECT_EQ(LineGuidOf("ABCDEF01-FEDC-BA98-0A1B-2C3D4E5F6DFC"), "abcdef01-fedc-ba98-0a1b2c3d4e5f6dfc");
}

// The rule for upper-case digits takes in the lower-case ones too: 'a' counts 42, 'b' 43, up to 'f' 47.
TEST_F(DevCapsTest, CountLowerCaseGuidDigitsFrom42) {
    // In the high digit of a byte the surplus of 32 is cut off: 42 * 16 = 0x2A0.
    EXPECT_EQ(LineGuidOf("00000000-0000-4000-a0b0-c0d0e0f09000"), "00000000-0000-4000-a0b0c0d0e0f09000");
    // In the low digit it is not: 0x00 + 42 = 0x2A, 0x10 + 43 = 0x3B, 0xF0 + 47 = 0x11F.
    EXPECT_EQ(LineGuidOf("00000000-0000-4000-0a1b-2c3d4e5fFf00"), "00000000-0000-4000-2a3b4c5d6e7f1f00");
    // 42 * 4096 + 43 * 256 + 44 * 16 + 45 = 0x2CDED; 46 * 4096 + 47 * 256 + 46 * 16 + 47 = 0x3120F.
    EXPECT_EQ(LineGuidOf("00000000-abcd-efef-0000-000000000000"), "00000000-cded-120f-0000000000000000");
    // In 32 bits: 47 * 0x11111111, cut to 32 bits.
    EXPECT_EQ(LineGuidOf("ffffffff-0000-4000-8000-000000000000"), "2222221f-0000-4000-8000000000000000");
}

// Every character from 'A' to 'f' counts its code less 55, whatever it is; any other counts 0.
TEST_F(DevCapsTest, CountOtherCharactersOfTheGuidByTheirCodeOrNotAtAll) {
    // 'G' 16, 'Z' 35, '[' 36, '_' 40, '`' 41 in the low digit of a byte each; 'g', '@', ':' 0.
    EXPECT_EQ(LineGuidOf("00000000-0000-4000-0G0Z-0[0_0`0g0@0:"), "00000000-0000-4000-1023242829000000");
    EXPECT_EQ(LineGuidOf("g1 2/3-4-:0@1-4{0}-8~0g-000000000000"), "01020304-0001-4000-8000000000000000");
}

TEST_F(DevCapsTest, IgnoreWhatStandsBetweenAndBehindTheFieldsOfTheGuid) {
    EXPECT_EQ(LineGuidOf("12345678f9012f3456f7890f123456789012ffff"), "12345678-9012-3456-7890123456789012");
}

TEST_F(DevCapsTest, TakeAGuidOf34CharactersWithAZeroLastByte) {
    EXPECT_EQ(LineGuidOf("12345678-9012-3456-7890-123456789099"), "12345678-9012-3456-7890123456789099");
    EXPECT_EQ(LineGuidOf("12345678-9012-3456-7890-12345678909"), "12345678-9012-3456-7890123456789009");
    EXPECT_EQ(LineGuidOf("12345678-9012-3456-7890-1234567890"), "12345678-9012-3456-7890123456789000");
}

TEST_F(DevCapsTest, ThrowOutOfRangeForAShorterGuid) {
    // No settings have been loaded yet: the text is empty.
    GuardedBuffer caps(kLineDevCapsBytes);
    EXPECT_THROW(GetDevCaps(provider, caps, kLineDevCapsBytes), std::out_of_range);
    EXPECT_EQ(ErrorOf("xyz"), "invalid string position");
    EXPECT_EQ(ErrorOf("12345678"), "invalid string position");
    EXPECT_EQ(ErrorOf("12345678-9012-3456-7890-123456789"), "invalid string position");
}

}  // namespace
}  // namespace velmora
