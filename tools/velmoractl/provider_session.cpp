#include "tools/velmoractl/provider_session.h"

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "config/text_numbers.h"
#include "tools/velmoractl/capability_report.h"
#include "tools/velmoractl/interrupt.h"
#include "tools/velmoractl/log_override.h"
#include "tools/velmoractl/stored_settings.h"
#include "tools/velmoractl/tapi_flags.h"

namespace velmora::ctl {
namespace {

// What the telephony service would say; any numbers would do.
constexpr DWORD kLowVersion = 0x00010003;
constexpr DWORD kHighVersion = 0x00030001;
constexpr DWORD kPermanentProviderId = 1;
constexpr DWORD kLineDeviceId = 0;
constexpr DWORD kPhoneDeviceId = 0;
constexpr DWORD kAddressId = 0;
constexpr DRV_REQUESTID kRequestId = 1;
constexpr DWORD kNoCountry = 0;

constexpr DWORD kLookMs = 10;  // between two looks at the log

// The structures begin with dwTotalSize and dwNeededSize.
struct VariableHead {
    DWORD totalBytes;
    DWORD neededBytes;
};

// The provider takes both and never calls them.
void CALLBACK TakeCompletion(DRV_REQUESTID /*request*/, LONG /*result*/) {}
void CALLBACK TakeLineEvent(HTAPILINE /*line*/, HTAPICALL /*call*/, DWORD /*message*/, DWORD_PTR /*parameter1*/,
                            DWORD_PTR /*parameter2*/, DWORD_PTR /*parameter3*/) {}

ByteString VersionText(DWORD version) {
    return DecimalText(version >> 16) + "." + DecimalText(version & 0xFFFF);
}

// Zero bytes with dwTotalSize set. Some more lie behind it: the provider writes an address text twice as long as it
// says.
ByteString StructureBuffer(size_t totalBytes, size_t spareBytes) {
    ByteString buffer(totalBytes + spareBytes, '\0');
    const auto total = static_cast<DWORD>(totalBytes);
    std::memcpy(buffer.data(), &total, sizeof(total));
    return buffer;
}

size_t NeededBytes(const ByteString& buffer) {
    VariableHead head;
    std::memcpy(&head, buffer.data(), sizeof(head));
    return head.neededBytes;
}

std::wstring Widened(const ByteString& digits) {
    return std::wstring(digits.begin(), digits.end());
}

bool IsRefusal(const XmlNode& message) {
    return message.localName.empty() || message.localName == "CSTAErrorCode" ||
           message.localName.ends_with("NegResponse");
}

// The provider names neither the setting nor its text, so they are looked for here.
Verdict ExceptionVerdict(const ByteString& entryPoint, const ByteString& thrown) {
    for (const FaultySetting& faulty : FindFaultySettings()) {
        if (!faulty.stopsLoading) continue;
        return {ExitCode::kBadSettings, "FAILED: a setting is wrong: " + faulty.sentence,
                "Mend it with: " + FixCommand(*faulty.rule)};
    }
    return {ExitCode::kFailed, "FAILED: " + entryPoint + " threw \"" + thrown + "\".", {}};
}

}  // namespace

bool ProviderSession::Load(const ByteString& path) {
    const ByteString problem = provider.Load(path);
    loadedAtMs = transcript.NowMs();
    if (!problem.empty()) {
        transcript.Failed("Load the provider");
        failure = {ExitCode::kNotLoaded, "FAILED: " + problem,
                   "Name the provider with --tsp, or put velmora.tsp beside velmoractl.exe."};
        return false;
    }
    transcript.Ok("Provider loaded: " + path);
    return true;
}

bool ProviderSession::NegotiateVersion(DWORD deviceId) {
    const ProviderResult result =
        CallProvider([&] { return provider.lineNegotiateTSPIVersion(deviceId, kLowVersion, kHighVersion, &version); });
    if (!Check("TSPI_lineNegotiateTSPIVersion", result)) return false;
    const bool whole = deviceId == INITIALIZE_NEGOTIATION;
    transcript.Ok("Interface version" + ByteString(whole ? "" : " of the line") + ": " + VersionText(version));
    return true;
}

bool ProviderSession::CountDevices() {
    DWORD lines = 0;
    DWORD phones = 0;
    const ProviderResult result = CallProvider([&] {
        return provider.providerEnumDevices(kPermanentProviderId, &lines, &phones, nullptr, TakeLineEvent, nullptr);
    });
    if (!Check("TSPI_providerEnumDevices", result)) return false;
    transcript.Ok("Lines: " + DecimalText(lines) + ", phones: " + DecimalText(phones));
    return true;
}

bool ProviderSession::Initialise() {
    ProviderResult result;
    {
        const LogOverride logOn(tap.Path());
        logVisible = tap.Open() && logOn.Active();
        if (logVisible) {
            transcript.Ok("Trace log switched on for this run");
        } else {
            transcript.Note("No right to switch the trace log on: the answers of the PBX cannot be seen");
        }
        DWORD options = 0;
        result = CallProvider([&] {
            return provider.providerInit(version, kPermanentProviderId, kLineDeviceId, kPhoneDeviceId, 1, 1,
                                         TakeCompletion, &options);
        });
    }
    ShowLog();
    if (!Check("TSPI_providerInit", result)) return false;
    initialised = true;
    if (connectionFailed) {
        transcript.Failed("Provider initialised, but not connected to the PBX");
    } else {
        transcript.Ok(logVisible ? "Provider initialised, connected to the PBX" : "Provider initialised");
    }
    return true;
}

bool ProviderSession::ReadDevCaps(ByteString& bytes) {
    // First the fixed part alone, as TAPI does, to learn how much is needed. The provider trusts these 268 bytes.
    bytes = StructureBuffer(kDevCapsFixedBytes, 0);
    const auto read = [&] {
        return provider.lineGetDevCaps(kLineDeviceId, version, 0, reinterpret_cast<LPLINEDEVCAPS>(bytes.data()));
    };
    if (!Check("TSPI_lineGetDevCaps", CallProvider(read))) return false;
    bytes = StructureBuffer(std::max(NeededBytes(bytes), kDevCapsFixedBytes), 0);
    if (!Check("TSPI_lineGetDevCaps", CallProvider(read))) return false;
    transcript.Ok("Line: " + FieldValue(DescribeDevCaps(bytes), "LineName"));
    return true;
}

bool ProviderSession::ReadAddressCaps(ByteString& bytes) {
    bytes = StructureBuffer(kAddressCapsFixedBytes, 0);
    const auto read = [&] {
        return provider.lineGetAddressCaps(kLineDeviceId, kAddressId, version, 0,
                                           reinterpret_cast<LPLINEADDRESSCAPS>(bytes.data()));
    };
    if (!Check("TSPI_lineGetAddressCaps", CallProvider(read))) return false;
    const size_t needed = std::max(NeededBytes(bytes), kAddressCapsFixedBytes);
    // Twice the size that the address is said to have is written: zeros follow it.
    bytes = StructureBuffer(needed, needed - kAddressCapsFixedBytes);
    if (!Check("TSPI_lineGetAddressCaps", CallProvider(read))) return false;
    bytes.resize(needed);
    transcript.Ok("Address: " + FieldValue(DescribeAddressCaps(bytes), "Address"));
    return true;
}

bool ProviderSession::OpenLine() {
    // The handles are TAPI's own names for line and call; the provider only keeps them.
    const auto* const tapiLine = reinterpret_cast<HTAPILINE>(this);
    const ProviderResult opened =
        CallProvider([&] { return provider.lineOpen(kLineDeviceId, tapiLine, &line, version, TakeLineEvent); });
    if (!Check("TSPI_lineOpen", opened)) return false;
    const ProviderResult set =
        CallProvider([&] { return provider.lineSetStatusMessages(line, LINEDEVSTATE_CLOSE | LINEDEVSTATE_REINIT, 0); });
    if (!Check("TSPI_lineSetStatusMessages", set)) return false;
    transcript.Ok("Line opened");
    return true;
}

bool ProviderSession::MakeCall(const ByteString& dialled, int32_t& code) {
    const auto* const tapiCall = reinterpret_cast<HTAPICALL>(this);
    const std::wstring number = Widened(dialled);
    const ProviderResult result = CallProvider(
        [&] { return provider.lineMakeCall(kRequestId, line, tapiCall, &call, number.c_str(), kNoCountry, nullptr); });
    ShowLog();
    if (result.Threw()) return Check("TSPI_lineMakeCall", result);
    // A request that is taken gives back its own number and is never completed.
    code = static_cast<int32_t>(result.code == static_cast<LONG>(kRequestId) ? 0 : result.code);
    if (code == 0) {
        transcript.Ok("Call handed to the provider");
    } else {
        transcript.Failed("Call handed to the provider: " + ResultText(code));
    }
    return true;
}

bool ProviderSession::CloseCall() {
    const ProviderResult result = CallProvider([&] { return provider.lineCloseCall(call); });
    ShowLog();
    return Check("TSPI_lineCloseCall", result);
}

bool ProviderSession::CloseLine() {
    if (!Check("TSPI_lineClose", CallProvider([&] { return provider.lineClose(line); }))) return false;
    transcript.Ok("Line closed");
    return true;
}

bool ProviderSession::Shutdown() {
    if (!initialised) return true;
    initialised = false;
    const ProviderResult result =
        CallProvider([&] { return provider.providerShutdown(version, kPermanentProviderId); });
    ShowLog(true);
    if (!Check("TSPI_providerShutdown", result)) return false;
    transcript.Ok("Provider shut down");
    return true;
}

bool ProviderSession::WaitUntil(const std::function<bool()>& done, uint64_t timeoutMs, Patience patience) {
    const uint64_t endMs = transcript.NowMs() + timeoutMs;
    while (true) {
        ShowLog();
        if (done()) return true;
        if (transcript.NowMs() >= endMs) return false;
        if (patience == Patience::kInterruptible && Interrupted()) return false;
        Sleep(kLookMs);
    }
}

bool ProviderSession::Check(const ByteString& entryPoint, const ProviderResult& result) {
    if (result.Good()) return true;
    if (result.Threw()) {
        transcript.Failed(entryPoint + " threw \"" + result.thrown + "\"");
        failure = ExceptionVerdict(entryPoint, result.thrown);
    } else {
        transcript.Failed(entryPoint + " returned " + ResultText(result.code));
        failure = {ExitCode::kFailed, "FAILED: " + entryPoint + " returned " + ResultText(result.code) + ".", {}};
    }
    return false;
}

void ProviderSession::ShowLog(bool ended) {
    reader.Append(tap.Read());
    while (const std::optional<LogRecord> record = reader.Next()) ShowRecord(*record);
    if (!ended) return;
    if (const std::optional<LogRecord> record = reader.Rest()) ShowRecord(*record);
}

void ProviderSession::ShowRecord(const LogRecord& record) {
    const uint64_t atMs = std::min(loadedAtMs + record.elapsedMs, transcript.NowMs());
    if (const std::optional<CstaRecord> message = CstaRecordIn(record.text)) return ShowMessage(*message, atMs);
    if (IsConnectionFailure(record)) connectionFailed = true;
    if (tlsFailure.reason.empty()) tlsFailure = TlsFailureIn(record);
    const ByteString note = NoteText(record);
    if (!note.empty()) transcript.Note(note, atMs);
}

void ProviderSession::ShowMessage(const CstaRecord& message, uint64_t atMs) {
    const XmlNode tree(message.xml, true);
    exchange.Observe(message.sent, tree);
    transcript.Message(message, tree, atMs, showXml || (!message.sent && IsRefusal(tree)));
}

}  // namespace velmora::ctl
