#pragma once

#include <cstdint>
#include <functional>

#include "config/byte_string.h"
#include "tools/velmoractl/log_note.h"
#include "tools/velmoractl/log_tap.h"
#include "tools/velmoractl/pbx_exchange.h"
#include "tools/velmoractl/provider_host.h"
#include "tools/velmoractl/trace_log_reader.h"
#include "tools/velmoractl/transcript.h"
#include "tools/velmoractl/verdict.h"

namespace velmora::ctl {

// The provider in this process, taken through its life in the order in which the telephony service does it, with each
// step and each message to and from the PBX shown. Every step gives false when the run cannot go on; Failure then tells
// why.
//
// The provider itself reports nothing of what the PBX answers. It is learned from the trace log, which Initialise
// switches on for this run; without the right to do so, LogVisible is false and no answer is ever seen.
class ProviderSession {
public:
    ProviderSession(Transcript& shown, bool withXml) : transcript(shown), showXml(withXml) {}
    ProviderSession(const ProviderSession&) = delete;
    ProviderSession& operator=(const ProviderSession&) = delete;

    bool Load(const ByteString& path);
    bool NegotiateVersion(DWORD deviceId);  // INITIALIZE_NEGOTIATION before Initialise, then each device
    bool CountDevices();
    bool Initialise();
    bool ReadDevCaps(ByteString& bytes);      // a LINEDEVCAPS and its texts
    bool ReadAddressCaps(ByteString& bytes);  // a LINEADDRESSCAPS and its text
    bool OpenLine();
    bool MakeCall(const ByteString& dialled,
                  int32_t& code);  // false only when it throws; code is 0 when the call is taken
    bool CloseCall();
    bool CloseLine();
    // Ends the link to the PBX; shows the messages that came last. Without effect when Initialise has not been passed.
    bool Shutdown();

    // Shows what has come in until done gives true (then true), timeoutMs are over or Ctrl+C was pressed (then false).
    // What has to be waited for in any case is not cut short by Ctrl+C.
    enum class Patience { kInterruptible, kInAnyCase };
    bool WaitUntil(const std::function<bool()>& done, uint64_t timeoutMs, Patience patience = Patience::kInterruptible);

    bool LogVisible() const { return logVisible; }
    bool ConnectionFailed() const { return connectionFailed; }
    const TlsFailure& TlsFailureSeen() const { return tlsFailure; }  // the first one
    const PbxExchange& Exchange() const { return exchange; }
    const Verdict& Failure() const { return failure; }

private:
    bool Check(const ByteString& entryPoint, const ProviderResult& result);
    void ShowLog(bool ended = false);
    void ShowRecord(const LogRecord& record);
    void ShowMessage(const CstaRecord& message, uint64_t atMs);

    Transcript& transcript;
    bool showXml;
    ProviderHost provider;
    LogTap tap;
    TraceLogReader reader;
    PbxExchange exchange;
    Verdict failure;
    uint64_t loadedAtMs = 0;  // on the transcript's clock; the log's own time begins then
    bool logVisible = false;
    bool connectionFailed = false;
    TlsFailure tlsFailure;
    bool initialised = false;
    DWORD version = 0;  // of the interface, as negotiated
    HDRVLINE line = nullptr;
    HDRVCALL call = nullptr;
};

}  // namespace velmora::ctl
