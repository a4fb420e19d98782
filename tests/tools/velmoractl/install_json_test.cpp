// The report of velmoractl status as a script reads it: by another's reader of JSON.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/velmoractl/install_report.h"

namespace velmora::ctl {
namespace {

TEST(InstallJson, HoldsEveryPart) {
    InstallFacts facts;
    facts.path = "C:\\Windows\\system32\\velmora.tsp";
    facts.present = true;
    facts.header = PeHeader{0x8664, true};
    facts.version = "2.0.3";
    facts.ids = {4, 7};
    facts.service = ServiceState::kStopped;
    facts.address = "pbx.example.com";
    facts.port = "5050";
    facts.device = "40@example.com";
    facts.encrypt = "0";
    const nlohmann::json json = nlohmann::json::parse(InstallJson(facts));
    EXPECT_EQ(json, nlohmann::json::parse(R"({
        "result": "ok", "exitCode": 0, "advice": "",
        "sentence": "OK: the provider is ready; velmoractl check looks at the way to the PBX.",
        "file": {"path": "C:\\Windows\\system32\\velmora.tsp", "present": true, "version": "2.0.3", "is64Bit": true},
        "tapi": {"registered": true, "providerIds": [4, 7]},
        "service": "stopped",
        "settings": {"address": "pbx.example.com", "port": "5050", "device": "40@example.com", "encrypt": "0"}})"));
}

TEST(InstallJson, SaysWhatIsMissing) {
    InstallFacts facts;
    facts.path = "C:\\velmora.tsp";
    facts.service = ServiceState::kMissing;
    const nlohmann::json json = nlohmann::json::parse(InstallJson(facts));
    EXPECT_EQ(json["result"], "failed");
    EXPECT_EQ(json["exitCode"], 16);
    EXPECT_EQ(json["file"], nlohmann::json::parse(R"({"path": "C:\\velmora.tsp", "present": false})"));
    EXPECT_EQ(json["tapi"], nlohmann::json::parse(R"({"registered": false, "providerIds": []})"));
    EXPECT_EQ(json["service"], "missing");
}

TEST(InstallJson, NamesEveryStateOfTheService) {
    InstallFacts facts;
    const struct {
        ServiceState state;
        const char* word;
    } kWords[] = {{ServiceState::kUnknown, "unknown"},   {ServiceState::kMissing, "missing"},
                  {ServiceState::kDisabled, "disabled"}, {ServiceState::kStopped, "stopped"},
                  {ServiceState::kRunning, "running"},   {ServiceState::kChanging, "changing"}};
    for (const auto& [state, word] : kWords) {
        facts.service = state;
        EXPECT_EQ(nlohmann::json::parse(InstallJson(facts))["service"], word);
    }
}

TEST(InstallJson, TellsAFileForAnotherProcessor) {
    InstallFacts facts;
    facts.present = true;
    facts.header = PeHeader{0x014C, true};
    EXPECT_EQ(nlohmann::json::parse(InstallJson(facts))["file"]["is64Bit"], false);
}

}  // namespace
}  // namespace velmora::ctl
