// pbxsim.exe as its user meets it: started as a process, talked to over loopback, its output read through a pipe.

#include <gtest/gtest.h>

#include "csta/framing.h"
#include "tests/support/child_process.h"
#include "tests/support/tls_identity.h"
#include "tests/tools/pbxsim/requests.h"
#include "tls/tls_connection.h"
#include "tools/pbxsim/sockets.h"
#include "xml/xml_node.h"

namespace velmora::pbxsim {
namespace {

constexpr DWORD kDeadlineMs = 30000;
constexpr DWORD kStuckMs = 5000;  // a PBX that still reads makes room for more well within this
const ByteString kDevice = "40@example.com";

// A running PBX on a free port.
class RunningPbx {
public:
    explicit RunningPbx(const ByteString& arguments) : program("pbxsim.exe", "--port 0 " + arguments) {
        const ByteString announcement = program.ReadLine().value_or("");
        const ByteString start = "pbxsim: listening on 127.0.0.1:";
        EXPECT_EQ(announcement.substr(0, start.size()), start);
        if (announcement.size() > start.size()) port = announcement.substr(start.size());
    }

    ChildProcess program;
    ByteString port = "0";
};

// A provider's end of the link.
class Link {
public:
    explicit Link(const RunningPbx& pbx) : socket(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<u_short>(std::stoi(pbx.port)));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(socket.Handle(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
        SetTimeout(SO_RCVTIMEO, kDeadlineMs);
        SetTimeout(SO_SNDTIMEO, kDeadlineMs);
    }

    void SetTimeout(int which, DWORD milliseconds) {
        setsockopt(socket.Handle(), SOL_SOCKET, which, reinterpret_cast<const char*>(&milliseconds),
                   sizeof(milliseconds));
    }

    // Speaks TLS from now on. The ClientHello leaves with the first request.
    void Encrypt() {
        tls.emplace();
        tls->verifyCertificates = false;
        tls->StartClientHandshake();
    }

    const TlsConnection& Tls() const { return *tls; }

    bool SendBytes(const ByteString& plaintext) {
        const ByteString bytes = tls ? tls->Send(plaintext) : plaintext;
        return send(socket.Handle(), bytes.data(), static_cast<int>(bytes.size()), 0) == static_cast<int>(bytes.size());
    }

    // The next frame; none when the PBX hangs up first, or nothing comes in time.
    std::optional<Frame> Receive() {
        while (true) {
            if (std::optional<Frame> frame = cutter.Next()) return frame;
            char bytes[1024];
            const int count = recv(socket.Handle(), bytes, sizeof(bytes), 0);
            if (count <= 0) return {};
            Take(ByteString(bytes, static_cast<size_t>(count)));
        }
    }

    // The XML that answers a request.
    ByteString Ask(const ByteString& xml) {
        ++lastInvokeId;
        EXPECT_TRUE(SendBytes(EncodeFrame(lastInvokeId, xml)));
        const std::optional<Frame> answer = Receive();
        EXPECT_TRUE(answer) << xml;
        if (!answer) return {};
        EXPECT_EQ(answer->invokeId, lastInvokeId);
        return ByteString(answer->xml);
    }

    // Asks, and gives how many bytes of the answer came first.
    int FirstPieceOfAnswer(const ByteString& xml) {
        EXPECT_TRUE(SendBytes(EncodeFrame(++lastInvokeId, xml)));
        char bytes[1024];
        const int count = recv(socket.Handle(), bytes, sizeof(bytes), 0);
        EXPECT_GT(count, 0);
        if (count > 0) Take(ByteString(bytes, static_cast<size_t>(count)));
        EXPECT_TRUE(Receive());
        return count;
    }

    // Waits until the PBX hangs up; false when it sends something more, or does neither in time.
    bool HasEnded() {
        char byte;
        const int count = recv(socket.Handle(), &byte, 1, 0);
        return count == 0 || (count < 0 && WSAGetLastError() == WSAECONNRESET);
    }

    // Says that nothing more will be sent.
    void FinishSending() { shutdown(socket.Handle(), SD_SEND); }

    // Sends the same bytes over and over, most bytes in all, until the PBX takes none for a while; the count it took.
    size_t SendUntilStuck(const ByteString& bytes, size_t most) {
        SetTimeout(SO_SNDTIMEO, kStuckMs);
        size_t total = 0;
        while (total < most) {
            const size_t start = total % bytes.size();
            const int count = send(socket.Handle(), bytes.data() + start, static_cast<int>(bytes.size() - start), 0);
            if (count <= 0) break;
            total += static_cast<size_t>(count);
        }
        return total;
    }

private:
    void Take(const ByteString& bytes) {
        if (!tls) return cutter.Append(bytes);
        cutter.Append(tls->Feed(bytes));
        SendBytes({});
    }

    Socket socket;
    std::optional<TlsConnection> tls;
    FrameCutter cutter;
    uint32_t lastInvokeId = 0;
};

ByteString IdentityPath(const ByteString& name) {
    return ByteString(VELMORA_IDENTITIES) + "/" + name + ".der";
}

ByteString NameOf(std::string_view xml) {
    return XmlNode(xml, true).localName;
}

ByteString TextAt(const ByteString& xml, const ByteString& path) {
    return XmlNode(xml, true).textAt(path);
}

class PbxsimTest : public testing::Test {
protected:
    const Winsock winsock;
};

// Logs in, monitors, places a call and clears it.
void TakeThroughACall(Link& link) {
    EXPECT_EQ(NameOf(link.Ask(Login())), "StartApplicationSessionPosResponse");
    EXPECT_EQ(NameOf(link.Ask(MonitorStart(kDevice))), "MonitorStartResponse");
    const ByteString made = link.Ask(MakeCall(kDevice, "100"));
    EXPECT_EQ(NameOf(made), "MakeCallResponse");
    EXPECT_EQ(NameOf(link.Ask(ClearConnection(TextAt(made, "callingDevice/callID"), kDevice))),
              "ClearConnectionResponse");
}

TEST_F(PbxsimTest, ServesACallAndPrintsEveryMessage) {
    RunningPbx pbx("--user 40 --password secret --domain example.com --once");
    {
        Link link(pbx);
        TakeThroughACall(link);
    }
    const ByteString expected[] = {
        " 1 -- connected from 127.0.0.1:",
        " 1 <- StartApplicationSession  #1  user 40, domain example.com",
        " 1 -> StartApplicationSessionPosResponse  #1  session 1, for 1800 s",
        " 1 <- MonitorStart  #2  device 40@example.com",
        " 1 -> MonitorStartResponse  #2  monitor 1",
        " 1 <- MakeCall  #3  from 40@example.com, to 100",
        " 1 -> MakeCallResponse  #3  call 1, device 40@example.com",
        " 1 <- ClearConnection  #4  call 1, device 40@example.com",
        " 1 -> ClearConnectionResponse  #4",
        " 1 -- gone",
    };
    for (const ByteString& text : expected) {
        const ByteString line = pbx.program.ReadLine().value_or("nothing");
        const size_t timeLength = ByteString("12:00:01.234 ").size();
        ASSERT_GT(line.size(), timeLength) << text;
        for (const size_t colon : {size_t{2}, size_t{5}}) EXPECT_EQ(line[colon], ':') << line;
        EXPECT_EQ(line[8], '.') << line;
        EXPECT_EQ(line.substr(timeLength, text.size()), text);
    }
    EXPECT_EQ(pbx.program.ReadLine(), std::nullopt);
    EXPECT_EQ(pbx.program.ExitCode(), DWORD{0});
}

TEST_F(PbxsimTest, RefusesAWrongPasswordWithoutPrintingIt) {
    RunningPbx pbx("--password secret --once");
    {
        Link link(pbx);
        EXPECT_EQ(NameOf(link.Ask(Login("40", "wrong-word"))), "StartApplicationSessionNegResponse");
    }
    bool refused = false;
    while (const std::optional<ByteString> line = pbx.program.ReadLine()) {
        EXPECT_EQ(line->find("secret"), ByteString::npos) << *line;
        EXPECT_EQ(line->find("wrong-word"), ByteString::npos) << *line;
        refused = refused || line->find("(wrong password)") != ByteString::npos;
    }
    EXPECT_TRUE(refused);
}

TEST_F(PbxsimTest, ServesTheSameCallInPiecesOfOneByte) {
    RunningPbx pbx("--split 1 --once");
    {
        Link link(pbx);
        TakeThroughACall(link);
    }
    EXPECT_EQ(pbx.program.ExitCode(), DWORD{0});
}

TEST_F(PbxsimTest, SendsEachPieceByItself) {
    RunningPbx pbx("--split 7 --quiet");
    Link link(pbx);
    // Pieces can meet on the way while this end is not running; sooner or later the first one arrives alone.
    bool alone = false;
    for (int attempt = 0; attempt < 1000 && !alone; ++attempt) alone = link.FirstPieceOfAnswer("<a/>") == 7;
    EXPECT_TRUE(alone);
}

TEST_F(PbxsimTest, ServesSeveralClientsAtOnce) {
    RunningPbx pbx("");
    Link first(pbx);
    Link second(pbx);
    Link third(pbx);
    const ByteString session = TextAt(first.Ask(Login()), "sessionID");
    EXPECT_NE(TextAt(third.Ask(Login()), "sessionID"), session);
    TakeThroughACall(second);
    EXPECT_EQ(NameOf(first.Ask(ResetTimer(session))), "ResetApplicationSessionTimerPosResponse");
}

TEST_F(PbxsimTest, SendsTheEventsOfACall) {
    RunningPbx pbx("--events");
    Link link(pbx);
    link.Ask(Login());
    link.Ask(MonitorStart(kDevice));
    link.Ask(MakeCall(kDevice, "100", "doNotPrompt"));
    for (const char* event : {"OriginatedEvent", "DeliveredEvent", "EstablishedEvent"}) {
        const std::optional<Frame> frame = link.Receive();
        ASSERT_TRUE(frame) << event;
        EXPECT_EQ(NameOf(frame->xml), event);
        EXPECT_EQ(frame->invokeId, 9999U);
    }
}

TEST_F(PbxsimTest, EndsASessionThatIsNotRenewed) {
    RunningPbx pbx("--session-duration 1");
    Link link(pbx);
    EXPECT_EQ(TextAt(link.Ask(Login()), "actualSessionDuration"), "1");
    const std::optional<Frame> last = link.Receive();
    ASSERT_TRUE(last);
    EXPECT_EQ(NameOf(last->xml), "ApplicationSessionTerminated");
    EXPECT_TRUE(link.HasEnded());
    EXPECT_NE(pbx.program.ReadLineWith("-- hanging up: its session has ended"), "");
}

TEST_F(PbxsimTest, WaitsBeforeEveryAnswer) {
    RunningPbx pbx("--answer-delay 400");
    Link link(pbx);
    const ULONGLONG askedMs = GetTickCount64();
    EXPECT_EQ(NameOf(link.Ask(Login())), "StartApplicationSessionPosResponse");
    // The counter's step, 16 ms, may fall on either end.
    EXPECT_GE(GetTickCount64() - askedMs, 400U - 16U);
}

TEST_F(PbxsimTest, AcceptsAndListensButSaysNothingWhenSilent) {
    RunningPbx pbx("--silent --once");
    Link link(pbx);
    EXPECT_TRUE(link.SendBytes(EncodeFrame(1, Login())));
    EXPECT_NE(pbx.program.ReadLineWith("<- StartApplicationSession"), "");
    link.FinishSending();
    EXPECT_TRUE(link.HasEnded());
    EXPECT_EQ(pbx.program.ExitCode(), DWORD{0});
}

TEST_F(PbxsimTest, HangsUpOnABadFrameAndGoesOnWithTheOthers) {
    RunningPbx pbx("");
    Link good(pbx);
    Link bad(pbx);
    good.Ask(Login());
    EXPECT_TRUE(bad.SendBytes(ByteString(100, '\0')));
    EXPECT_TRUE(bad.HasEnded());
    EXPECT_NE(pbx.program.ReadLineWith(" 2 -- hanging up: it sent a frame of 0 bytes"), "");
    EXPECT_EQ(NameOf(good.Ask(MonitorStart(kDevice))), "MonitorStartResponse");
}

TEST_F(PbxsimTest, IsNotHeldUpByAClientThatTakesNoAnswers) {
    RunningPbx pbx("--quiet");
    Link stubborn(pbx);
    ByteString requests;
    while (requests.size() < 60000) requests += EncodeFrame(1, "<a/>");
    // Its answers fill every buffer on their way back, some megabytes; from then on the PBX does not read from it.
    constexpr size_t kMoreThanBuffersHold = 32 << 20;
    EXPECT_LT(stubborn.SendUntilStuck(requests, kMoreThanBuffersHold), kMoreThanBuffersHold);

    Link other(pbx);
    TakeThroughACall(other);
}

TEST_F(PbxsimTest, PrintsOnlyWhereItListensWhenQuiet) {
    RunningPbx pbx("--quiet --once");
    {
        Link link(pbx);
        TakeThroughACall(link);
    }
    EXPECT_EQ(pbx.program.ReadLine(), std::nullopt);
    EXPECT_EQ(pbx.program.ExitCode(), DWORD{0});
}

TEST_F(PbxsimTest, ServesAnEncryptedCallAndSaysSo) {
    RunningPbx pbx("--tls --once");
    EXPECT_EQ(pbx.program.ReadLine(),
              "pbxsim: TLS with the \"pbxsim TEST certificate\", whose private key everyone has; give your own with "
              "--cert and --key");
    {
        Link link(pbx);
        link.Encrypt();
        TakeThroughACall(link);
        EXPECT_EQ(link.Tls().KeyExchangeCertificate().commonName, "pbxsim TEST certificate");
    }
    EXPECT_NE(pbx.program.ReadLineWith(" 1 -- connected from 127.0.0.1:"), "");
    for (const char* text : {" 1 -- encrypted: TLS 1.0, AES128-SHA, new session",
                             " 1 <- StartApplicationSession  #1  user 40, domain example.com"}) {
        const ByteString line = pbx.program.ReadLine().value_or("nothing");
        EXPECT_TRUE(line.ends_with(text)) << line;
    }
    EXPECT_NE(pbx.program.ReadLineWith("-> ClearConnectionResponse  #4"), "");
    EXPECT_EQ(pbx.program.ExitCode(), DWORD{0});
}

TEST_F(PbxsimTest, ShowsTheCertificateThatItIsGiven) {
    for (const ByteString name : {"rsa1024", "rsa2048", "rsa4096"}) {
        SCOPED_TRACE(name);
        RunningPbx pbx("--tls --cert " + IdentityPath(name) + " --key " + IdentityPath(name + "_key"));
        EXPECT_EQ(pbx.program.ReadLine(), "pbxsim: TLS with the certificate of \"pbx.velmora.example\"");
        Link link(pbx);
        link.Encrypt();
        TakeThroughACall(link);
        EXPECT_EQ(link.Tls().KeyExchangeCertificate().certificates,
                  (std::vector<ByteString>{LoadTlsIdentity(name).certificate}));
    }
}

TEST_F(PbxsimTest, ServesAnEncryptedCallInPiecesOfOneByte) {
    RunningPbx pbx("--tls --split 1 --quiet");
    Link link(pbx);
    link.Encrypt();
    TakeThroughACall(link);
}

TEST_F(PbxsimTest, RefusesEveryHandshakeWhenTold) {
    RunningPbx pbx("--tls --tls-refuse --once");
    Link link(pbx);
    link.Encrypt();
    EXPECT_TRUE(link.SendBytes(EncodeFrame(1, Login())));
    EXPECT_FALSE(link.Receive());
    EXPECT_TRUE(link.Tls().PeerAlertReceived());
    EXPECT_NE(pbx.program.ReadLineWith("-- hanging up: every TLS handshake is refused"), "");
    EXPECT_EQ(pbx.program.ExitCode(), DWORD{0});
}

TEST_F(PbxsimTest, HangsUpOnAPlainClientAndGoesOnWithTheOthers) {
    RunningPbx pbx("--tls");
    Link plain(pbx);
    Link encrypted(pbx);
    encrypted.Encrypt();
    EXPECT_TRUE(plain.SendBytes(EncodeFrame(1, Login())));
    EXPECT_TRUE(plain.HasEnded());
    EXPECT_NE(pbx.program.ReadLineWith(" 1 -- hanging up: it speaks plain CSTA, but this PBX speaks TLS"), "");
    TakeThroughACall(encrypted);
}

TEST_F(PbxsimTest, DoesNotStartWithACertificateThatIsNone) {
    const ByteString key = IdentityPath("rsa2048_key");
    ChildProcess swapped("pbxsim.exe", "--port 0 --tls --cert " + key + " --key " + key);
    EXPECT_EQ(swapped.ReadLine(), "pbxsim: " + key + " does not consist of certificates with RSA keys, in DER");
    EXPECT_EQ(swapped.ExitCode(), DWORD{1});
    ChildProcess missing("pbxsim.exe", "--port 0 --tls --cert nosuch.der --key " + key);
    EXPECT_EQ(missing.ReadLine(), "pbxsim: nosuch.der cannot be read: No such file or directory");
    EXPECT_EQ(missing.ExitCode(), DWORD{1});
}

TEST_F(PbxsimTest, FailsOnAPortThatIsInUse) {
    RunningPbx pbx("");
    ChildProcess second("pbxsim.exe", "--port " + pbx.port);
    EXPECT_EQ(second.ReadLine(), "pbxsim: cannot listen on 127.0.0.1, port " + pbx.port +
                                     ": the port is in use; choose another one with --port, or 0 for any free one");
    EXPECT_EQ(second.ExitCode(), DWORD{1});
}

TEST_F(PbxsimTest, FailsOnAnAddressThatIsNotItsOwn) {
    // 192.0.2.0/24 is set aside for documentation (RFC 5737).
    ChildProcess program("pbxsim.exe", "--port 0 --bind 192.0.2.1");
    EXPECT_EQ(program.ReadLine(),
              "pbxsim: cannot listen on 192.0.2.1, port 0: this machine does not have that address; "
              "give one of its own with --bind");
    EXPECT_EQ(program.ExitCode(), DWORD{1});
}

TEST_F(PbxsimTest, RefusesAWrongCommandLine) {
    ChildProcess program("pbxsim.exe", "--prot 5050");
    EXPECT_EQ(program.ReadLine(), "pbxsim: there is no option \"--prot\"; \"pbxsim --help\" lists the options");
    EXPECT_EQ(program.ExitCode(), DWORD{2});
}

TEST_F(PbxsimTest, PrintsItsHelp) {
    ChildProcess program("pbxsim.exe", "--help");
    EXPECT_NE(program.ReadLineWith("Usage: pbxsim"), "");
    EXPECT_EQ(program.ExitCode(), DWORD{0});
}

}  // namespace
}  // namespace velmora::pbxsim
