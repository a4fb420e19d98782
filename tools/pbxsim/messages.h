#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora::pbxsim {

// The XML that the PBX sends: whole documents. Values come as they are and are escaped here.

// The five characters that XML predefines an entity for, replaced by it (XML 1.0, section 4.6); all else as it is.
ByteString EscapeXml(const ByteString& text);

// A call, named by the connection of the device that placed it.
struct Call {
    ByteString callId;
    ByteString callingDevice;
    ByteString calledDevice;  // the number dialled
};

// Application sessions, ECMA-354. An error is one of the standard's defined errors, like "invalidSessionID".
ByteString StartApplicationSessionPosResponse(const ByteString& sessionId, const ByteString& protocolVersion,
                                              int32_t seconds);
ByteString StartApplicationSessionNegResponse(const ByteString& error);
ByteString ResetApplicationSessionTimerPosResponse(int32_t seconds);
ByteString ResetApplicationSessionTimerNegResponse(const ByteString& error);
ByteString ApplicationSessionTerminated(const ByteString& sessionId, const ByteString& reason);

// The namespace of an edition of ECMA-323, 3 to 6; it also names the protocol version in a login.
ByteString CstaNamespace(int edition);

// Answers, ECMA-323; each in the namespace that the login agreed on.
ByteString MonitorStartResponse(const ByteString& cstaNamespace, const ByteString& crossRefId);
ByteString MakeCallResponse(const ByteString& cstaNamespace, const Call& call);
ByteString ClearConnectionResponse(const ByteString& cstaNamespace);
// operation is one of the standard's operation errors, like "invalidConnectionID".
ByteString CstaErrorCode(const ByteString& cstaNamespace, const ByteString& operation);

// Events of a call, ECMA-323, for the monitor crossRefId on the calling device.
using EventBuilder = ByteString (*)(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call);
// The calling phone asks its user to lift the handset.
ByteString ServiceInitiatedEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call);
// The number has been dialled.
ByteString OriginatedEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call);
// The called phone rings.
ByteString DeliveredEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call);
// The called phone has answered.
ByteString EstablishedEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call);
// The calling phone is out of the call.
ByteString ConnectionClearedEvent(const ByteString& cstaNamespace, const ByteString& crossRefId, const Call& call);

}  // namespace velmora::pbxsim
