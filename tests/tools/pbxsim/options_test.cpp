#include "tools/pbxsim/options.h"

#include <gtest/gtest.h>

namespace velmora::pbxsim {
namespace {

using Arguments = std::vector<ByteString>;

ByteString FaultOf(const Arguments& arguments) {
    return ParseCommandLine(arguments).fault;
}

TEST(CommandLine, HasADefaultForEverything) {
    const CommandLine commandLine = ParseCommandLine({});
    EXPECT_EQ(commandLine.fault, "");
    EXPECT_EQ(commandLine.options.bindAddress, "127.0.0.1");
    EXPECT_EQ(commandLine.options.port, 5050);
    EXPECT_EQ(commandLine.options.behaviour.sessionSeconds, 1800);
    EXPECT_EQ(commandLine.options.behaviour.answerDelayMs, 0);
    EXPECT_EQ(commandLine.options.splitBytes, 0);
    EXPECT_FALSE(commandLine.options.tls);
    EXPECT_FALSE(commandLine.options.once);
}

TEST(CommandLine, ReadsEveryOption) {
    const CommandLine commandLine = ParseCommandLine({"--port",
                                                      "5060",
                                                      "--bind",
                                                      "::1",
                                                      "--user",
                                                      "40",
                                                      "--password",
                                                      "p=q",
                                                      "--domain",
                                                      "example.com",
                                                      "--session-duration",
                                                      "60",
                                                      "--answer-delay",
                                                      "250",
                                                      "--tls",
                                                      "--cert",
                                                      "c.der",
                                                      "--key",
                                                      "k.der",
                                                      "--tls-refuse",
                                                      "--split",
                                                      "3",
                                                      "--reject-login",
                                                      "--error-on-makecall",
                                                      "--events",
                                                      "--silent",
                                                      "--once",
                                                      "--quiet"});
    ASSERT_EQ(commandLine.fault, "");
    const Options& options = commandLine.options;
    EXPECT_EQ(options.port, 5060);
    EXPECT_EQ(options.bindAddress, "::1");
    EXPECT_EQ(options.behaviour.user, "40");
    EXPECT_EQ(options.behaviour.password, "p=q");
    EXPECT_EQ(options.behaviour.domain, "example.com");
    EXPECT_EQ(options.behaviour.sessionSeconds, 60);
    EXPECT_EQ(options.behaviour.answerDelayMs, 250);
    EXPECT_TRUE(options.tls);
    EXPECT_EQ(options.certificateFile, "c.der");
    EXPECT_EQ(options.keyFile, "k.der");
    EXPECT_TRUE(options.refuseTls);
    EXPECT_EQ(options.splitBytes, 3);
    EXPECT_TRUE(options.behaviour.rejectLogin);
    EXPECT_TRUE(options.behaviour.errorOnMakeCall);
    EXPECT_TRUE(options.behaviour.events);
    EXPECT_TRUE(options.behaviour.silent);
    EXPECT_TRUE(options.once);
    EXPECT_TRUE(options.quiet);
}

TEST(CommandLine, TakesAValueJoinedByAnEqualsSign) {
    const CommandLine commandLine = ParseCommandLine({"--port=0", "--password=a=b", "--user="});
    ASSERT_EQ(commandLine.fault, "");
    EXPECT_EQ(commandLine.options.port, 0);
    EXPECT_EQ(commandLine.options.behaviour.password, "a=b");
    EXPECT_EQ(commandLine.options.behaviour.user, "");
}

TEST(CommandLine, LetsTheLastOfTwoCount) {
    EXPECT_EQ(ParseCommandLine({"--port", "1", "--port", "2"}).options.port, 2);
}

TEST(CommandLine, TakesNumbersUpToTheirLimits) {
    EXPECT_EQ(ParseCommandLine({"--port", "65535"}).options.port, 65535);
    EXPECT_EQ(FaultOf({"--port", "65536"}), "--port takes a number from 0 to 65535, not \"65536\"");
    EXPECT_EQ(FaultOf({"--port", "-1"}), "--port takes a number from 0 to 65535, not \"-1\"");
    EXPECT_EQ(ParseCommandLine({"--session-duration", "0"}).options.behaviour.sessionSeconds, 0);
    EXPECT_EQ(ParseCommandLine({"--session-duration", "2592000"}).fault, "");
    EXPECT_NE(FaultOf({"--session-duration", "2592001"}), "");
    EXPECT_EQ(ParseCommandLine({"--split", "1"}).options.splitBytes, 1);
    EXPECT_EQ(FaultOf({"--split", "0"}), "--split takes a number from 1 to 65535, not \"0\"");
}

TEST(CommandLine, TakesNothingForANumberThatIsNotOne) {
    for (const char* text : {"", "abc", "50x", " 50", "5 0", "0x50", "99999999999999999999", "+5"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(FaultOf({"--port", text}), "--port takes a number from 0 to 65535, not \"" + ByteString(text) + "\"");
    }
}

TEST(CommandLine, SaysWhatIsMissingOrTooMuch) {
    EXPECT_EQ(FaultOf({"--port"}), "--port takes a number from 0 to 65535");
    EXPECT_EQ(FaultOf({"--user"}), "--user needs a value after it");
    EXPECT_EQ(FaultOf({"--once=yes"}), "--once takes no value");
    EXPECT_EQ(FaultOf({"--prot", "5050"}), "there is no option \"--prot\"");
    EXPECT_EQ(FaultOf({"5050"}), "there is no option \"5050\"");
    EXPECT_EQ(FaultOf({""}), "there is no option \"\"");
}

TEST(CommandLine, TakesCertificateAndKeyOnlyTogetherAndWithTls) {
    EXPECT_EQ(FaultOf({"--tls", "--cert", "c", "--key", "k"}), "");
    EXPECT_EQ(FaultOf({"--key", "k", "--cert", "c", "--tls"}), "");
    EXPECT_EQ(FaultOf({"--tls", "--cert", "c"}), "--cert needs --key with it, the certificate's private key");
    EXPECT_EQ(FaultOf({"--tls", "--key", "k"}), "--key needs --cert with it, the key's certificate");
    EXPECT_EQ(FaultOf({"--cert", "c", "--key", "k"}), "--cert and --key need --tls with them");
    EXPECT_EQ(FaultOf({"--cert", "c"}), "--cert needs --key with it, the certificate's private key");
    EXPECT_EQ(FaultOf({"--tls-refuse"}), "--tls-refuse needs --tls with it");
    EXPECT_EQ(FaultOf({"--tls-refuse", "--tls"}), "");
}

TEST(CommandLine, StopsAtTheFirstFault) {
    EXPECT_EQ(FaultOf({"--port", "x", "--nonsense"}), "--port takes a number from 0 to 65535, not \"x\"");
}

TEST(CommandLine, AsksForHelpInTheWaysOfBothWorlds) {
    for (const char* argument : {"--help", "-h", "/?"}) {
        SCOPED_TRACE(argument);
        EXPECT_TRUE(ParseCommandLine({argument}).options.help);
    }
    EXPECT_TRUE(ParseCommandLine({"--version"}).options.version);
}

TEST(HelpText, NamesEveryOptionInEightyColumns) {
    const ByteString help = HelpText();
    for (const char* option : {"--port",         "--bind",         "--user",
                               "--password",     "--domain",       "--session-duration",
                               "--answer-delay", "--reject-login", "--error-on-makecall",
                               "--events",       "--split",        "--tls",
                               "--cert",         "--key",          "--tls-refuse",
                               "--silent",       "--once",         "--quiet",
                               "--help",         "--version"}) {
        EXPECT_NE(help.find(option), ByteString::npos) << option;
    }
    size_t start = 0;
    while (start < help.size()) {
        const size_t end = help.find('\n', start);
        ASSERT_NE(end, ByteString::npos) << "the last line does not end";
        EXPECT_LT(end - start, 80U) << help.substr(start, end - start);
        start = end + 1;
    }
}

}  // namespace
}  // namespace velmora::pbxsim
