#include "tools/velmoractl/capability_report.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

#include "config/text_numbers.h"
#include "tools/velmoractl/tapi_flags.h"

namespace velmora::ctl {
namespace {

enum class Kind {
    kNumber,
    kFlags,         // hexadecimal, with the names of a table when there is one
    kText,          // a size field, then an offset field, both in bytes; UTF-16
    kDialParams,    // a LINEDIALPARAMS: four times in milliseconds
    kStringFormat,  // one of the STRINGFORMAT_ numbers
    kGuid,
};

struct Field {
    std::string_view name;
    Kind kind;
    size_t position;                   // in the structure, in bytes
    const FlagTable* table = nullptr;  // of kFlags
};

const Field kDevCapsFields[] = {
    {"ProviderInfo", Kind::kText, 12},
    {"SwitchInfo", Kind::kText, 20},
    {"dwPermanentLineID", Kind::kFlags, 28},
    {"LineName", Kind::kText, 32},
    {"dwStringFormat", Kind::kStringFormat, 40},
    {"dwAddressModes", Kind::kFlags, 44, &kAddressModes},
    {"dwNumAddresses", Kind::kNumber, 48},
    {"dwBearerModes", Kind::kFlags, 52, &kBearerModes},
    {"dwMaxRate", Kind::kNumber, 56},
    {"dwMediaModes", Kind::kFlags, 60, &kMediaModes},
    {"dwGenerateToneModes", Kind::kFlags, 64, &kToneModes},
    {"dwGenerateToneMaxNumFreq", Kind::kNumber, 68},
    {"dwGenerateDigitModes", Kind::kFlags, 72, &kDigitModes},
    {"dwMonitorToneMaxNumFreq", Kind::kNumber, 76},
    {"dwMonitorToneMaxNumEntries", Kind::kNumber, 80},
    {"dwMonitorDigitModes", Kind::kFlags, 84, &kDigitModes},
    {"dwGatherDigitsMinTimeout", Kind::kNumber, 88},
    {"dwGatherDigitsMaxTimeout", Kind::kNumber, 92},
    {"dwMedCtlDigitMaxListSize", Kind::kNumber, 96},
    {"dwMedCtlMediaMaxListSize", Kind::kNumber, 100},
    {"dwMedCtlToneMaxListSize", Kind::kNumber, 104},
    {"dwMedCtlCallStateMaxListSize", Kind::kNumber, 108},
    {"dwDevCapFlags", Kind::kFlags, 112, &kDevCapFlags},
    {"dwMaxNumActiveCalls", Kind::kNumber, 116},
    {"dwAnswerMode", Kind::kNumber, 120},
    {"dwRingModes", Kind::kFlags, 124},
    {"dwLineStates", Kind::kFlags, 128},
    {"dwUUIAcceptSize", Kind::kNumber, 132},
    {"dwUUIAnswerSize", Kind::kNumber, 136},
    {"dwUUIMakeCallSize", Kind::kNumber, 140},
    {"dwUUIDropSize", Kind::kNumber, 144},
    {"dwUUISendUserUserInfoSize", Kind::kNumber, 148},
    {"dwUUICallInfoSize", Kind::kNumber, 152},
    {"MinDialParams", Kind::kDialParams, 156},
    {"MaxDialParams", Kind::kDialParams, 172},
    {"DefaultDialParams", Kind::kDialParams, 188},
    {"dwNumTerminals", Kind::kNumber, 204},
    {"dwTerminalCapsSize", Kind::kNumber, 208},
    {"dwTerminalCapsOffset", Kind::kNumber, 212},
    {"dwTerminalTextEntrySize", Kind::kNumber, 216},
    {"dwTerminalTextSize", Kind::kNumber, 220},
    {"dwTerminalTextOffset", Kind::kNumber, 224},
    {"dwDevSpecificSize", Kind::kNumber, 228},
    {"dwDevSpecificOffset", Kind::kNumber, 232},
    {"dwLineFeatures", Kind::kFlags, 236, &kLineFeatures},
    {"dwSettableDevStatus", Kind::kFlags, 240},
    {"dwDeviceClassesSize", Kind::kNumber, 244},
    {"dwDeviceClassesOffset", Kind::kNumber, 248},
    {"PermanentLineGuid", Kind::kGuid, 252},
};

const Field kAddressCapsFields[] = {
    {"dwLineDeviceID", Kind::kNumber, 12},
    {"Address", Kind::kText, 16},
    {"dwDevSpecificSize", Kind::kNumber, 24},
    {"dwDevSpecificOffset", Kind::kNumber, 28},
    {"dwAddressSharing", Kind::kFlags, 32, &kAddressSharing},
    {"dwAddressStates", Kind::kFlags, 36},
    {"dwCallInfoStates", Kind::kFlags, 40, &kCallInfoStates},
    {"dwCallerIDFlags", Kind::kFlags, 44, &kCallPartyIds},
    {"dwCalledIDFlags", Kind::kFlags, 48, &kCallPartyIds},
    {"dwConnectedIDFlags", Kind::kFlags, 52, &kCallPartyIds},
    {"dwRedirectionIDFlags", Kind::kFlags, 56, &kCallPartyIds},
    {"dwRedirectingIDFlags", Kind::kFlags, 60, &kCallPartyIds},
    {"dwCallStates", Kind::kFlags, 64, &kCallStates},
    {"dwDialToneModes", Kind::kFlags, 68, &kDialToneModes},
    {"dwBusyModes", Kind::kFlags, 72, &kBusyModes},
    {"dwSpecialInfo", Kind::kFlags, 76, &kSpecialInfo},
    {"dwDisconnectModes", Kind::kFlags, 80, &kDisconnectModes},
    {"dwMaxNumActiveCalls", Kind::kNumber, 84},
    {"dwMaxNumOnHoldCalls", Kind::kNumber, 88},
    {"dwMaxNumOnHoldPendingCalls", Kind::kNumber, 92},
    {"dwMaxNumConference", Kind::kNumber, 96},
    {"dwMaxNumTransConf", Kind::kNumber, 100},
    {"dwAddrCapFlags", Kind::kFlags, 104, &kAddrCapFlags},
    {"dwCallFeatures", Kind::kFlags, 108, &kCallFeatures},
    {"dwRemoveFromConfCaps", Kind::kFlags, 112},
    {"dwRemoveFromConfState", Kind::kFlags, 116},
    {"dwTransferModes", Kind::kFlags, 120},
    {"dwParkModes", Kind::kFlags, 124},
    {"dwForwardModes", Kind::kFlags, 128},
    {"dwMaxForwardEntries", Kind::kNumber, 132},
    {"dwMaxSpecificEntries", Kind::kNumber, 136},
    {"dwMinFwdNumRings", Kind::kNumber, 140},
    {"dwMaxFwdNumRings", Kind::kNumber, 144},
    {"dwMaxCallCompletions", Kind::kNumber, 148},
    {"dwCallCompletionConds", Kind::kFlags, 152},
    {"dwCallCompletionModes", Kind::kFlags, 156},
    {"dwNumCompletionMessages", Kind::kNumber, 160},
    {"dwCompletionMsgTextEntrySize", Kind::kNumber, 164},
    {"dwCompletionMsgTextSize", Kind::kNumber, 168},
    {"dwCompletionMsgTextOffset", Kind::kNumber, 172},
    {"dwAddressFeatures", Kind::kFlags, 176, &kAddrFeatures},
    {"dwPredictiveAutoTransferStates", Kind::kFlags, 180},
    {"dwNumCallTreatments", Kind::kNumber, 184},
    {"dwCallTreatmentListSize", Kind::kNumber, 188},
    {"dwCallTreatmentListOffset", Kind::kNumber, 192},
    {"dwDeviceClassesSize", Kind::kNumber, 196},
    {"dwDeviceClassesOffset", Kind::kNumber, 200},
    {"dwMaxCallDataSize", Kind::kNumber, 204},
    {"dwCallFeatures2", Kind::kFlags, 208},
    {"dwMaxNoAnswerTimeout", Kind::kNumber, 212},
    {"dwConnectedModes", Kind::kFlags, 216},
    {"dwOfferingModes", Kind::kFlags, 220},
    {"dwAvailableMediaModes", Kind::kFlags, 224},
};

constexpr size_t kDialParamsBytes = 16;
constexpr size_t kGuidBytes = 16;

uint32_t ReadNumber(std::string_view bytes, size_t position, size_t count = 4) {
    uint32_t number = 0;
    for (size_t index = count; index > 0; --index) {
        number = (number << 8) | static_cast<unsigned char>(bytes[position + index - 1]);
    }
    return number;
}

// The provider widens each byte of a text to one unit, as a signed character, so the low byte gives it back.
ByteString ReadText(std::string_view bytes, size_t position) {
    const size_t length = ReadNumber(bytes, position);
    const size_t offset = ReadNumber(bytes, position + 4);
    if (offset > bytes.size() || length > bytes.size() - offset) return {};
    ByteString text;
    for (size_t index = offset; index + 1 < offset + length; index += 2) {
        const uint32_t unit = ReadNumber(bytes, index, 2);
        if (unit == 0) break;
        const bool widened = unit < 0x100 || unit >= 0xFF80;
        text += widened ? static_cast<char>(unit & 0xFF) : '?';
    }
    return text;
}

ByteString GuidText(std::string_view bytes, size_t position) {
    constexpr size_t kGroupDigits = 4;
    const auto digits = [](uint32_t value, size_t count) { return HexText(value, count).substr(2); };
    ByteString text = "{" + digits(ReadNumber(bytes, position), 8);
    text += "-" + digits(ReadNumber(bytes, position + 4, 2), kGroupDigits);
    text += "-" + digits(ReadNumber(bytes, position + 6, 2), kGroupDigits);
    for (size_t index = 8; index < kGuidBytes; ++index) {
        if (index == 8 || index == 10) text += "-";
        text += digits(ReadNumber(bytes, position + index, 1), 2);
    }
    return text + "}";
}

ByteString DialParamsText(std::string_view bytes, size_t position) {
    constexpr std::string_view kNames[] = {"pause ", ", speed ", ", digit ", ", wait for dial tone "};
    ByteString text;
    for (const std::string_view name : kNames) {
        text += ByteString(name) + DecimalText(ReadNumber(bytes, position)) + " ms";
        position += 4;
    }
    return text;
}

ByteString StringFormatText(uint32_t format) {
    constexpr std::string_view kNames[] = {"", "STRINGFORMAT_ASCII", "STRINGFORMAT_DBCS", "STRINGFORMAT_UNICODE",
                                           "STRINGFORMAT_BINARY"};
    return format < std::size(kNames) ? ByteString(kNames[format]) : DecimalText(format);
}

size_t FieldBytes(Kind kind) {
    switch (kind) {
        case Kind::kDialParams:
            return kDialParamsBytes;
        case Kind::kGuid:
            return kGuidBytes;
        default:
            return 4;
    }
}

CapabilityLine Describe(const Field& field, std::string_view bytes) {
    CapabilityLine line{ByteString(field.name), {}, {}};
    switch (field.kind) {
        case Kind::kNumber:
            line.value = DecimalText(ReadNumber(bytes, field.position));
            break;
        case Kind::kFlags:
            line.value = HexText(ReadNumber(bytes, field.position));
            if (field.table != nullptr) line.names = FlagNames(*field.table, ReadNumber(bytes, field.position));
            break;
        case Kind::kText:
            line.value = ReadText(bytes, field.position);
            break;
        case Kind::kDialParams:
            line.value = DialParamsText(bytes, field.position);
            break;
        case Kind::kStringFormat:
            line.value = StringFormatText(ReadNumber(bytes, field.position));
            break;
        case Kind::kGuid:
            line.value = GuidText(bytes, field.position);
            break;
    }
    return line;
}

std::vector<CapabilityLine> DescribeFields(std::span<const Field> fields, std::string_view bytes, size_t fixedBytes) {
    std::vector<CapabilityLine> lines;
    if (bytes.size() < fixedBytes) return lines;
    for (const Field& field : fields) {
        const std::string_view content = bytes.substr(field.position, FieldBytes(field.kind));
        const bool zero = std::ranges::all_of(content, [](char byte) { return byte == '\0'; });
        if (!zero) lines.push_back(Describe(field, bytes));
    }
    return lines;
}

}  // namespace

std::vector<CapabilityLine> DescribeDevCaps(const ByteString& bytes) {
    return DescribeFields(kDevCapsFields, bytes, kDevCapsFixedBytes);
}

std::vector<CapabilityLine> DescribeAddressCaps(const ByteString& bytes) {
    return DescribeFields(kAddressCapsFields, bytes, kAddressCapsFixedBytes);
}

ByteString FieldValue(const std::vector<CapabilityLine>& lines, std::string_view field) {
    const auto found = std::ranges::find(lines, field, &CapabilityLine::field);
    return found == lines.end() ? ByteString() : found->value;
}

}  // namespace velmora::ctl
