// TAPI's own header is the judge of our names and positions.

#include <windows.h>

#include <tapi.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "tools/velmoractl/capability_report.h"
#include "tools/velmoractl/tapi_error.h"
#include "tools/velmoractl/tapi_flags.h"

namespace velmora::ctl {
namespace {

using Names = std::vector<ByteString>;

// One flag under the name that the header gives it.
#define EXPECT_NAMED(table, flag) EXPECT_EQ(FlagNames(table, flag), (Names{#flag}))

TEST(FlagNames, AreThoseOfTheHeader) {
    EXPECT_NAMED(kAddressModes, LINEADDRESSMODE_DIALABLEADDR);
    EXPECT_NAMED(kBearerModes, LINEBEARERMODE_VOICE);
    EXPECT_NAMED(kBearerModes, LINEBEARERMODE_RESTRICTEDDATA);
    EXPECT_NAMED(kMediaModes, LINEMEDIAMODE_UNKNOWN);
    EXPECT_NAMED(kMediaModes, LINEMEDIAMODE_INTERACTIVEVOICE);
    EXPECT_NAMED(kMediaModes, LINEMEDIAMODE_VIDEO);
    EXPECT_NAMED(kDigitModes, LINEDIGITMODE_DTMF);
    EXPECT_NAMED(kToneModes, LINETONEMODE_BILLING);
    EXPECT_NAMED(kDevCapFlags, LINEDEVCAPFLAGS_CLOSEDROP);
    EXPECT_NAMED(kDevCapFlags, LINEDEVCAPFLAGS_LOCAL);
    EXPECT_NAMED(kLineFeatures, LINEFEATURE_MAKECALL);
    EXPECT_NAMED(kLineFeatures, LINEFEATURE_FORWARDDND);
    EXPECT_NAMED(kAddressSharing, LINEADDRESSSHARING_MONITORED);
    EXPECT_NAMED(kCallInfoStates, LINECALLINFOSTATE_MEDIAMODE);
    EXPECT_NAMED(kCallInfoStates, LINECALLINFOSTATE_CALLDATA);
    EXPECT_NAMED(kCallPartyIds, LINECALLPARTYID_UNAVAIL);
    EXPECT_NAMED(kCallStates, LINECALLSTATE_IDLE);
    EXPECT_NAMED(kCallStates, LINECALLSTATE_CONNECTED);
    EXPECT_NAMED(kCallStates, LINECALLSTATE_UNKNOWN);
    EXPECT_NAMED(kDialToneModes, LINEDIALTONEMODE_UNAVAIL);
    EXPECT_NAMED(kBusyModes, LINEBUSYMODE_UNAVAIL);
    EXPECT_NAMED(kSpecialInfo, LINESPECIALINFO_UNAVAIL);
    EXPECT_NAMED(kDisconnectModes, LINEDISCONNECTMODE_UNAVAIL);
    EXPECT_NAMED(kDisconnectModes, LINEDISCONNECTMODE_CANCELLED);
    EXPECT_NAMED(kAddrCapFlags, LINEADDRCAPFLAGS_DIALED);
    EXPECT_NAMED(kAddrCapFlags, LINEADDRCAPFLAGS_ACCEPTTOALERT);
    EXPECT_NAMED(kAddrCapFlags, LINEADDRCAPFLAGS_NOPSTNADDRESSTRANSLATION);
    EXPECT_NAMED(kCallFeatures, LINECALLFEATURE_GENERATEDIGITS);
    EXPECT_NAMED(kCallFeatures, LINECALLFEATURE_SETCALLDATA);
    EXPECT_NAMED(kAddrFeatures, LINEADDRFEATURE_FORWARDDND);
}

// One error under the name and number that the header gives it.
#define EXPECT_ERROR_NAMED(error) EXPECT_TRUE(TapiErrorText(error).starts_with(#error " (" + HexText(error, 8) + "): "))

TEST(TapiErrorText, HasTheNamesOfTheHeader) {
    EXPECT_ERROR_NAMED(LINEERR_INIFILECORRUPT);
    EXPECT_ERROR_NAMED(LINEERR_INVALPARAM);
    EXPECT_ERROR_NAMED(LINEERR_INVALPOINTER);
    EXPECT_ERROR_NAMED(LINEERR_NODRIVER);
    EXPECT_ERROR_NAMED(LINEERR_NOMEM);
    EXPECT_ERROR_NAMED(LINEERR_OPERATIONFAILED);
    EXPECT_ERROR_NAMED(LINEERR_OPERATIONUNAVAIL);
    EXPECT_ERROR_NAMED(LINEERR_RESOURCEUNAVAIL);
    EXPECT_ERROR_NAMED(LINEERR_NOMULTIPLEINSTANCE);
    EXPECT_ERROR_NAMED(LINEERR_USERCANCELLED);
    EXPECT_ERROR_NAMED(LINEERR_SERVICE_NOT_RUNNING);
}

TEST(FlagNames, ListEveryFlagFromTheLowest) {
    EXPECT_EQ(FlagNames(kCallStates, LINECALLSTATE_CONNECTED | LINECALLSTATE_IDLE),
              (Names{"LINECALLSTATE_IDLE", "LINECALLSTATE_CONNECTED"}));
    EXPECT_TRUE(FlagNames(kCallStates, 0).empty());
}

TEST(FlagNames, SayWhichBitsHaveNone) {
    EXPECT_EQ(FlagNames(kBusyModes, LINEBUSYMODE_STATION | 0x20 | 0x80000000),
              (Names{"LINEBUSYMODE_STATION", "(0x80000020 has no name)"}));
    EXPECT_EQ(FlagNames(kMediaModes, 1), (Names{"(0x1 has no name)"}));
}

TEST(ResultText, NamesTheCodesOfTheProvider) {
    EXPECT_EQ(ResultText(static_cast<int32_t>(LINEERR_CALLUNAVAIL)), "LINEERR_CALLUNAVAIL (0x80000005)");
    EXPECT_EQ(ResultText(static_cast<int32_t>(LINEERR_INVALCALLHANDLE)), "LINEERR_INVALCALLHANDLE (0x80000018)");
    EXPECT_EQ(ResultText(static_cast<int32_t>(LINEERR_INVALLINEHANDLE)), "LINEERR_INVALLINEHANDLE (0x8000002B)");
    EXPECT_EQ(ResultText(static_cast<int32_t>(LINEERR_INCOMPATIBLEAPIVERSION)),
              "LINEERR_INCOMPATIBLEAPIVERSION (0x8000000C)");
    EXPECT_EQ(ResultText(1), "0x00000001");
}

// The header's structures go on behind the fields of version 2.2; only these count.
template <typename Structure>
ByteString Bytes(const Structure& structure, size_t count) {
    ByteString bytes(count, '\0');
    std::memcpy(bytes.data(), &structure, count);
    return bytes;
}

TEST(DescribeDevCaps, FindsTheFieldsWhereTheHeaderHasThem) {
    EXPECT_EQ(offsetof(LINEDEVCAPS, PermanentLineGuid) + sizeof(GUID), kDevCapsFixedBytes);
    LINEDEVCAPS caps = {};
    caps.dwPermanentLineID = 0x23450000;
    caps.dwStringFormat = STRINGFORMAT_ASCII;
    caps.dwMaxRate = 64000;
    caps.dwMediaModes = LINEMEDIAMODE_INTERACTIVEVOICE;
    caps.dwUUICallInfoSize = 17;
    caps.MaxDialParams = {1000, 50, 1001, 1002};
    caps.DefaultDialParams = {250, 50, 250, 500};
    caps.dwLineFeatures = LINEFEATURE_MAKECALL;
    caps.PermanentLineGuid = {0x01234567, 0x89AB, 0xCDEF, {0x80, 1, 2, 3, 4, 5, 6, 0xFF}};
    const std::vector<CapabilityLine> lines = DescribeDevCaps(Bytes(caps, kDevCapsFixedBytes));
    EXPECT_EQ(lines.size(), 9U);
    EXPECT_EQ(FieldValue(lines, "dwPermanentLineID"), "0x23450000");
    EXPECT_EQ(FieldValue(lines, "dwStringFormat"), "STRINGFORMAT_ASCII");
    EXPECT_EQ(FieldValue(lines, "dwMaxRate"), "64000");
    EXPECT_EQ(FieldValue(lines, "dwMediaModes"), "0x4");
    EXPECT_EQ(FieldValue(lines, "dwUUICallInfoSize"), "17");
    EXPECT_EQ(FieldValue(lines, "MaxDialParams"),
              "pause 1000 ms, speed 50 ms, digit 1001 ms, wait for dial tone 1002 ms");
    EXPECT_EQ(FieldValue(lines, "DefaultDialParams"),
              "pause 250 ms, speed 50 ms, digit 250 ms, wait for dial tone 500 ms");
    EXPECT_EQ(FieldValue(lines, "dwLineFeatures"), "0x8");
    EXPECT_EQ(FieldValue(lines, "PermanentLineGuid"), "{01234567-89AB-CDEF-8001-0203040506FF}");
}

TEST(DescribeAddressCaps, FindsTheFieldsWhereTheHeaderHasThem) {
    EXPECT_EQ(offsetof(LINEADDRESSCAPS, dwAvailableMediaModes) + sizeof(DWORD), kAddressCapsFixedBytes);
    LINEADDRESSCAPS caps = {};
    caps.dwLineDeviceID = 3;
    caps.dwAddressSharing = LINEADDRESSSHARING_PRIVATE;
    caps.dwRedirectionIDFlags = LINECALLPARTYID_ADDRESS;
    caps.dwAddrCapFlags = LINEADDRCAPFLAGS_DIALED;
    caps.dwCallFeatures = LINECALLFEATURE_DROP;
    caps.dwAddressFeatures = LINEADDRFEATURE_MAKECALL;
    caps.dwAvailableMediaModes = 4;
    const std::vector<CapabilityLine> lines = DescribeAddressCaps(Bytes(caps, kAddressCapsFixedBytes));
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(FieldValue(lines, "dwLineDeviceID"), "3");
    EXPECT_EQ(lines[1].names, (Names{"LINEADDRESSSHARING_PRIVATE"}));
    EXPECT_EQ(lines[2].field, "dwRedirectionIDFlags");
    EXPECT_EQ(lines[2].names, (Names{"LINECALLPARTYID_ADDRESS"}));
    EXPECT_EQ(lines[3].names, (Names{"LINEADDRCAPFLAGS_DIALED"}));
    EXPECT_EQ(lines[4].names, (Names{"LINECALLFEATURE_DROP"}));
    EXPECT_EQ(lines[5].names, (Names{"LINEADDRFEATURE_MAKECALL"}));
    EXPECT_EQ(FieldValue(lines, "dwAvailableMediaModes"), "0x4");
}

}  // namespace
}  // namespace velmora::ctl
