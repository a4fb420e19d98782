#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/job/job_run.h"
#include "benchmarks/job/rehearsal.h"
#include "benchmarks/ratio_line.h"
#include "tests/support/tls_identity.h"

// The provider's job under Wine beside the floor: the bare system calls for the same bytes. In turns, each job in a
// process of its own; a figure is the one that a tenth of them stay below.
//
// The floor is a DLL of its own. It plays what the provider has sent in a first run, and the PBX, which is this
// program, checks in every run that it got just that. Encrypted, the floor plays the bytes of a TLS client and spins
// for the time that TLS costs the best one of tls_bench; what TLS costs the PBX is in both.

namespace velmora {
namespace {

constexpr int kCaseColumns = 58;
constexpr int kTurns = 60;
constexpr char kUsage[] =
    "usage: job_bench --wine SCRIPT --windows FOLDER --tls-costs FILE --folder FOLDER [OPTION...]\n"
    "  --wine SCRIPT                runs a Windows program\n"
    "  --windows FOLDER             holds job_host.exe, job_floor.dll and velmora.tsp\n"
    "  --tls-costs FILE             what tls_bench --tsv has printed\n"
    "  --folder FOLDER              for files that the run needs\n"
    "  --tsv                        prints the lines for ./bench\n"
    "  --benchmark_repetitions=N    turns\n";

struct Options {
    std::string wine;
    std::string windows;
    std::string tlsCosts;
    std::string folder;
    TableOptions table;
};

// The figures of both contenders under a unit and a case.
struct Samples {
    std::vector<double> ours;
    std::vector<double> floor;
};

// Near the least of many runs: what else the machine does only ever adds.
double Figure(const std::vector<double>& values) {
    return Quantile(values, 0.1);
}

class JobBench {
public:
    explicit JobBench(Options chosen) : options(std::move(chosen)) { UseTlsIdentity("rsa2048"); }

    void Run() {
        try {
            Measure();
        } catch (...) {
            ForgetQuietly();
            throw;
        }
        ForgetSettings(pbx, Setup(true, false, 0));
        Print();
    }

private:
    void Measure() {
        Rehearse();
        const int turns = options.table.repetitions == 0 ? kTurns : options.table.repetitions;
        for (int turn = 0; turn < turns; ++turn) {
            for (const int logLevel : {0, 5}) {
                for (const bool encrypted : {false, true}) {
                    RunBoth(turn, encrypted, logLevel);
                }
            }
        }
    }

    // After an error, which is the one to be told.
    void ForgetQuietly() {
        try {
            ForgetSettings(pbx, Setup(true, false, 0));
        } catch (const std::exception&) {
            // Wine does not run, so it has stored nothing.
        }
    }

    // The provider's requests are recorded, and the scripts made of them.
    void Rehearse() {
        requests = RunJob(pbx, Setup(true, false, 0)).requests;
        Write(ScriptPath(false), ScriptInTheClear(requests));
        Write(ScriptPath(true), EncryptedScript(requests, kDomain, ReadTlsCosts(options.tlsCosts)));
    }

    // The order changes from turn to turn.
    void RunBoth(int turn, bool encrypted, int logLevel) {
        for (const bool isOurs : {turn % 2 == 0, turn % 2 != 0}) {
            const JobFigures figures = RunJob(pbx, Setup(isOurs, encrypted, logLevel));
            if (figures.requests != requests) throw std::runtime_error("the PBX has got other requests");
            Enter(isOurs, encrypted, logLevel, figures);
        }
    }

    void Enter(bool isOurs, bool encrypted, int logLevel, const JobFigures& figures) {
        const std::string unit = encrypted ? "job-encrypted" : "job";
        const auto add = [&](const std::string& caseName, const std::vector<double>& values) {
            Samples& both = samples[{unit, caseName}];
            std::vector<double>& mine = isOurs ? both.ours : both.floor;
            mine.insert(mine.end(), values.begin(), values.end());
        };
        add("flood: one event, loglevel " + std::to_string(logLevel), figures.event);
        if (!encrypted) add("load", {figures.load});
        if (logLevel != 0) return;
        add("init: the call", {figures.init});
        add("init: login at the PBX", {figures.login});
        add("init: session up (MonitorStart at the PBX)", {figures.sessionUp});
        add("make call: the call", figures.makeCall);
        add("make call: MakeCall at the PBX", figures.makeCallAtPbx);
        add("answer: from the PBX's send to the provider's next request", figures.answer);
        add("close call: ClearConnection at the PBX", figures.closeCallAtPbx);
        add("handles at rest", {figures.handles});
        add("private KB at rest", {figures.privateKb});
        add("shutdown: the call", {figures.shutdown});
    }

    // In the order of targets.h.
    void Print() const {
        PrintHeading(options.table.form, kCaseColumns);
        for (const Target& target : kTargets) {
            const auto found = samples.find({target.unit, target.caseName});
            if (found == samples.end()) continue;
            const std::string& caseName = found->first.second;
            RatioLine line = {found->first.first,          caseName, Figure(found->second.ours),
                              Figure(found->second.floor), "floor",  "us"};
            if (caseName == "handles at rest") line.measure = "handles";
            if (caseName == "private KB at rest") line.measure = "KB";
            PrintRatioLine(line, options.table.form, kCaseColumns);
        }
        PrintRatioLine({"job", "size of the DLL", LibraryKb(), 0, "", "KB"}, options.table.form, kCaseColumns);
    }

    double LibraryKb() const {
        struct stat status = {};
        if (stat((options.windows + "/velmora.tsp").c_str(), &status) != 0) throw std::runtime_error("no velmora.tsp");
        return static_cast<double>(status.st_size) / 1024;
    }

    JobSetup Setup(bool isOurs, bool encrypted, int logLevel) const {
        JobSetup setup;
        setup.wine = options.wine;
        setup.program = options.windows + "/job_host.exe";
        setup.dll = options.windows + (isOurs ? "/velmora.tsp" : "/job_floor.dll");
        setup.script = isOurs ? "" : ScriptPath(encrypted);
        setup.logFile = options.folder + "/trace.log";
        setup.encrypted = encrypted;
        setup.logLevel = logLevel;
        return setup;
    }

    std::string ScriptPath(bool encrypted) const {
        return options.folder + (encrypted ? "/encrypted.script" : "/clear.script");
    }

    static void Write(const std::string& path, const ByteString& bytes) {
        std::ofstream file(path, std::ios::binary);
        file << bytes;
        if (!file.flush()) throw std::runtime_error("cannot write " + path);
    }

    Options options;
    Pbx pbx;
    std::vector<Request> requests;
    std::map<std::pair<std::string, std::string>, Samples> samples;  // by unit and case
};

// False for arguments that it does not know.
bool ParseOptions(const std::vector<std::string>& arguments, Options& options) {
    const std::map<std::string, std::string*> texts = {{"--wine", &options.wine},
                                                       {"--windows", &options.windows},
                                                       {"--tls-costs", &options.tlsCosts},
                                                       {"--folder", &options.folder}};
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (TakeOption(*argument, options.table)) continue;
        const auto found = texts.find(*argument);
        if (found == texts.end() || ++argument == arguments.end()) return false;
        *found->second = *argument;
    }
    return std::all_of(texts.begin(), texts.end(), [](const auto& text) { return !text.second->empty(); });
}

}  // namespace
}  // namespace velmora

int main(int argc, char** argv) {
    // A process that is gone is told by the write to it.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    try {
        velmora::Options options;
        if (!velmora::ParseOptions({argv + 1, argv + argc}, options)) {
            static_cast<void>(std::fputs(velmora::kUsage, stderr));
            return 2;
        }
        velmora::JobBench(options).Run();
    } catch (const std::exception& error) {
        static_cast<void>(std::fprintf(stderr, "job_bench: %s\n", error.what()));
        return 1;
    }
    return 0;
}
