#include "tools/pbxsim/options.h"

#include <charconv>
#include <optional>

#include "config/text_numbers.h"
#include "csta/framing.h"
#include "resources/version.h"

namespace velmora::pbxsim {
namespace {

struct Switch {
    const char* name;
    bool* target;
};

struct Text {
    const char* name;
    ByteString* target;
};

struct Number {
    const char* name;
    int32_t* target;
    int32_t least;
    int32_t most;
};

constexpr int32_t kMaxSessionSeconds = 30 * 24 * 3600;
constexpr int32_t kMaxDelayMs = 3600 * 1000;

// The decimal number that text consists of, if it is one from least to most.
std::optional<int32_t> ReadNumber(const ByteString& text, const Number& number) {
    int32_t value = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) return {};
    if (value < number.least || value > number.most) return {};
    return value;
}

// The arguments, worked off from the front.
class ArgumentReader {
public:
    explicit ArgumentReader(const std::vector<ByteString>& allArguments) : arguments(allArguments) {}

    // Goes to the next option; false at the end.
    bool Next() {
        if (position == arguments.size()) return false;
        const ByteString& argument = arguments[position++];
        const size_t equals = argument.find('=');
        name = argument.substr(0, equals);
        joined.reset();
        if (equals != ByteString::npos) joined = argument.substr(equals + 1);
        return true;
    }

    const ByteString& Name() const { return name; }
    bool HasJoinedValue() const { return joined.has_value(); }

    // The option's value; none when the arguments end before it.
    std::optional<ByteString> Value() {
        if (joined) return joined;
        if (position == arguments.size()) return {};
        return arguments[position++];
    }

private:
    const std::vector<ByteString>& arguments;
    size_t position = 0;
    ByteString name;
    std::optional<ByteString> joined;  // what stands behind "="
};

// Each stores the option that the reader stands at, and gives what is wrong with it; empty when nothing is.

ByteString TakeSwitch(const Switch& option, const ArgumentReader& reader) {
    if (reader.HasJoinedValue()) return reader.Name() + " takes no value";
    *option.target = true;
    return {};
}

ByteString TakeText(const Text& option, ArgumentReader& reader) {
    const std::optional<ByteString> value = reader.Value();
    if (!value) return reader.Name() + " needs a value after it";
    *option.target = *value;
    return {};
}

ByteString TakeNumber(const Number& option, ArgumentReader& reader) {
    const ByteString wanted = " takes a number from " + DecimalText(option.least) + " to " + DecimalText(option.most);
    const std::optional<ByteString> value = reader.Value();
    if (!value) return reader.Name() + wanted;
    const std::optional<int32_t> number = ReadNumber(*value, option);
    if (!number) return reader.Name() + wanted + ", not \"" + *value + "\"";
    *option.target = *number;
    return {};
}

ByteString TakeOption(Options& options, ArgumentReader& reader) {
    Behaviour& behaviour = options.behaviour;
    const Switch switches[] = {
        {"--reject-login", &behaviour.rejectLogin},
        {"--error-on-makecall", &behaviour.errorOnMakeCall},
        {"--events", &behaviour.events},
        {"--silent", &behaviour.silent},
        {"--tls", &options.tls},
        {"--tls-refuse", &options.refuseTls},
        {"--once", &options.once},
        {"--quiet", &options.quiet},
        {"--help", &options.help},
        {"-h", &options.help},
        {"/?", &options.help},
        {"--version", &options.version},
    };
    const Text texts[] = {
        {"--bind", &options.bindAddress}, {"--user", &behaviour.user},          {"--password", &behaviour.password},
        {"--domain", &behaviour.domain},  {"--cert", &options.certificateFile}, {"--key", &options.keyFile},
    };
    const Number numbers[] = {
        {"--port", &options.port, 0, 65535},
        {"--session-duration", &behaviour.sessionSeconds, 0, kMaxSessionSeconds},
        {"--answer-delay", &behaviour.answerDelayMs, 0, kMaxDelayMs},
        {"--split", &options.splitBytes, 1, kFrameMaxBytes},
    };
    for (const Switch& option : switches) {
        if (reader.Name() == option.name) return TakeSwitch(option, reader);
    }
    for (const Text& option : texts) {
        if (reader.Name() == option.name) return TakeText(option, reader);
    }
    for (const Number& option : numbers) {
        if (reader.Name() == option.name) return TakeNumber(option, reader);
    }
    return "there is no option \"" + reader.Name() + "\"";
}

// What is wrong with options that are each right by themselves; empty when nothing is.
ByteString CombinationFault(const Options& options) {
    const bool hasCertificate = !options.certificateFile.empty();
    const bool hasKey = !options.keyFile.empty();
    if (hasCertificate && !hasKey) return "--cert needs --key with it, the certificate's private key";
    if (hasKey && !hasCertificate) return "--key needs --cert with it, the key's certificate";
    if (options.tls) return {};
    if (hasCertificate) return "--cert and --key need --tls with them";
    if (options.refuseTls) return "--tls-refuse needs --tls with it";
    return {};
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<ByteString>& arguments) {
    CommandLine commandLine;
    ArgumentReader reader(arguments);
    while (commandLine.fault.empty() && reader.Next()) commandLine.fault = TakeOption(commandLine.options, reader);
    if (commandLine.fault.empty()) commandLine.fault = CombinationFault(commandLine.options);
    return commandLine;
}

ByteString HelpText() {
    return R"(pbxsim - a PBX on your own machine, to try the velmora service provider against

Waits for providers on a TCP port, answers their CSTA requests (ECMA-354 and
ECMA-323 in XML) and prints a line for every message.

Usage: pbxsim [OPTION]...

Where it listens:
  --port N              TCP port; 0 for any free one (default: 5050)
  --bind ADDRESS        local address; 0.0.0.0 for all (default: 127.0.0.1)

Encryption:
  --tls                 speak TLS 1.0 or SSL 3.0 on the port
  --cert FILE           the PBX's certificate, in DER; its chain may follow it
  --key FILE            the certificate's private key, an RSAPrivateKey in DER
  --tls-refuse          refuse every TLS handshake
Without --cert and --key the PBX shows a TEST certificate, whose private key
everyone has.

Who may log in (what is not given is not checked):
  --user NAME           the user name
  --password PASSWORD   the password
  --domain DOMAIN       the domain
  --reject-login        refuse every login

What it does:
  --session-duration S  end a session that is not renewed within S seconds;
                        0 for never (default: 1800)
  --answer-delay MS     wait MS milliseconds before every answer
  --error-on-makecall   refuse every call
  --events              send the events of a call: dialled, ringing, answered,
                        cleared
  --split BYTES         send everything in pieces of BYTES bytes
  --silent              accept connections, but never answer

The program:
  --once                end when the first client has gone
  --quiet               print no messages
  --help, --version     print this text, or the version, and end

Example: a PBX that knows the user 40
  pbxsim --user 40 --password secret --domain example.com
and the provider's settings for it:
  username 40, password secret, domain example.com,
  address 127.0.0.1, port 5050, encrypt 0
The same with encryption: add --tls, and set encrypt to 1.

Ctrl+C ends it. Exit code: 0 fine, 1 it could not start, 2 wrong command line.
)";
}

ByteString VersionText() {
    return "pbxsim " VELMORA_VERSION_TEXT "\n";
}

}  // namespace velmora::pbxsim
