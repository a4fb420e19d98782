#include "tools/velmoractl/install_report.h"

#include <algorithm>

#include "config/text_numbers.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/verdict_json.h"

namespace velmora::ctl {
namespace {

constexpr size_t kNameWidth = 10;

ByteString FileSentence(const InstallFacts& facts) {
    if (!facts.present) return facts.path + " is not there";
    ByteString sentence = facts.path + ", ";
    sentence += facts.version.empty() ? "without a version" : "version " + facts.version;
    if (!facts.header) return sentence + ", no program";
    return sentence + (facts.header->IsLibraryFor64Bit() ? ", 64-bit" : ", not a 64-bit library");
}

ByteString TapiSentence(const InstallFacts& facts) {
    if (facts.ids.empty()) return "does not know the provider";
    ByteString ids;
    for (const uint32_t id : facts.ids) ids += (ids.empty() ? "" : ", ") + DecimalText(id);
    return "knows the provider, with the permanent ID " + ids;
}

// In one word, and as a sentence.
struct ServiceWording {
    const char* word;
    const char* sentence;
};

ServiceWording WordingOf(ServiceState state) {
    switch (state) {
        case ServiceState::kMissing:
            return {"missing", "the telephony service (TapiSrv) is not there"};
        case ServiceState::kDisabled:
            return {"disabled", "the telephony service (TapiSrv) is disabled"};
        case ServiceState::kStopped:
            return {"stopped", "the telephony service is stopped; the first program that uses TAPI starts it"};
        case ServiceState::kRunning:
            return {"running", "the telephony service runs"};
        case ServiceState::kChanging:
            return {"changing", "the telephony service is starting or stopping"};
        default:
            return {"unknown", "this user may not ask for the state of the telephony service"};
    }
}

ByteString OnOrOff(const ByteString& flag) {
    if (flag == "1") return "on";
    return flag == "0" ? "off" : flag;
}

ByteString SettingsSentence(const InstallFacts& facts) {
    ByteString sentence = "address " + (facts.address.empty() ? "(not set)" : facts.address);
    sentence += ", port " + facts.port;
    sentence += ", user " + (facts.device.empty() ? "(not set)" : facts.device);
    return sentence + ", encrypt " + OnOrOff(facts.encrypt);
}

ByteString Line(const char* name, const ByteString& sentence) {
    return Padded(name, kNameWidth) + Printable(sentence) + "\n";
}

Verdict Failed(ExitCode code, const ByteString& problem, const ByteString& advice) {
    return {code, "FAILED: " + problem, advice};
}

ByteString FileJson(const InstallFacts& facts) {
    JsonObject json;
    json.AddText("path", facts.path).Add("present", JsonFlag(facts.present));
    if (facts.present) {
        json.AddText("version", facts.version)
            .Add("is64Bit", JsonFlag(facts.header && facts.header->IsLibraryFor64Bit()));
    }
    return json.Text();
}

ByteString TapiJson(const InstallFacts& facts) {
    std::vector<ByteString> ids(facts.ids.size());
    std::ranges::transform(facts.ids, ids.begin(), [](uint32_t id) { return JsonNumber(id); });
    return JsonObject().Add("registered", JsonFlag(!ids.empty())).Add("providerIds", JsonArray(ids)).Text();
}

ByteString SettingsJson(const InstallFacts& facts) {
    return JsonObject()
        .AddText("address", facts.address)
        .AddText("port", facts.port)
        .AddText("device", facts.device)
        .AddText("encrypt", facts.encrypt)
        .Text();
}

}  // namespace

Verdict JudgeInstall(const InstallFacts& facts) {
    if (!facts.present) {
        return Failed(ExitCode::kNotInstalled, facts.path + " is not there.",
                      "Use the installer, or put velmora.tsp beside velmoractl.exe and run as administrator: "
                      "velmoractl install --copy");
    }
    if (!facts.header || !facts.header->IsLibraryFor64Bit()) {
        return Failed(ExitCode::kNot64Bit,
                      facts.path + " is not a 64-bit library: the telephony service cannot load it.",
                      "Put the right velmora.tsp in its place.");
    }
    if (facts.ids.empty()) {
        return Failed(ExitCode::kNotRegistered, "TAPI does not know the provider.",
                      "Run as administrator: velmoractl install");
    }
    if (facts.service == ServiceState::kMissing || facts.service == ServiceState::kDisabled) {
        const bool disabled = facts.service == ServiceState::kDisabled;
        return Failed(ExitCode::kNoTelephony, ByteString(WordingOf(facts.service).sentence) + ".",
                      disabled ? "Run as administrator: sc config tapisrv start= demand"
                               : "Without it, Windows has no telephony at all.");
    }
    if (!facts.settingFault.empty()) {
        return Failed(ExitCode::kBadSettings, facts.settingFault, "Mend it with: " + facts.settingFix);
    }
    return {ExitCode::kDone, "OK: the provider is ready; velmoractl check looks at the way to the PBX.", {}};
}

ByteString InstallText(const InstallFacts& facts) {
    return Line("file", FileSentence(facts)) + Line("TAPI", TapiSentence(facts)) +
           Line("service", WordingOf(facts.service).sentence) + Line("settings", SettingsSentence(facts));
}

ByteString InstallJson(const InstallFacts& facts) {
    return VerdictJson(JudgeInstall(facts))
               .Add("file", FileJson(facts))
               .Add("tapi", TapiJson(facts))
               .AddText("service", WordingOf(facts.service).word)
               .Add("settings", SettingsJson(facts))
               .Text() +
           "\n";
}

}  // namespace velmora::ctl
