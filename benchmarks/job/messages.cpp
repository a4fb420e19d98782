#include "benchmarks/job/messages.h"

#include "csta/framing.h"
#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

// ECMA-323, "Delivered": a call rings.
constexpr char kDelivered[] =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<csta:DeliveredEvent xmlns:csta="http://www.ecma-international.org/standards/ecma-323/csta/ed5">
  <csta:monitorCrossRefID>1</csta:monitorCrossRefID>
  <csta:connection>
    <csta:callID>C-4711</csta:callID>
    <csta:deviceID>40@pbx.velmora.example</csta:deviceID>
  </csta:connection>
  <csta:alertingDevice>
    <csta:deviceIdentifier>40@pbx.velmora.example</csta:deviceIdentifier>
  </csta:alertingDevice>
  <csta:callingDevice>
    <csta:deviceIdentifier>0049301234567</csta:deviceIdentifier>
  </csta:callingDevice>
  <csta:calledDevice>
    <csta:deviceIdentifier>40@pbx.velmora.example</csta:deviceIdentifier>
  </csta:calledDevice>
  <csta:lastRedirectionDevice>
    <csta:notRequired/>
  </csta:lastRedirectionDevice>
  <csta:localConnectionInfo>alerting</csta:localConnectionInfo>
  <csta:cause>newCall</csta:cause>
</csta:DeliveredEvent>
)";

}  // namespace

ByteString SessionAcceptedFrame() {
    return EncodeFrame(1, SessionAccepted("S-4711", "1800"));
}

ByteString CallMadeFrame(uint32_t invokeId) {
    return EncodeFrame(invokeId, CallMade("C-4711", "40@pbx.velmora.example"));
}

ByteString EventFrame() {
    return EncodeFrame(0, kDelivered);
}

}  // namespace velmora
