#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "benchmarks/job/pbx.h"
#include "config/byte_string.h"

namespace velmora {

inline constexpr char kDomain[] = "pbx.velmora.example";

// One job, in a process of its own: load, start, calls, a flood of events, shutdown.
struct JobSetup {
    std::string wine;     // the script that runs Wine
    std::string program;  // job_host.exe
    std::string dll;      // the provider or the floor
    std::string script;   // the floor's; empty for the provider
    std::string logFile;
    bool encrypted = false;
    int logLevel = 0;
};

// Times in microseconds.
struct JobFigures {
    double load = 0;
    double init = 0;
    double login = 0;      // from the start of init until the login is at the PBX
    double sessionUp = 0;  // likewise until the MonitorStart is
    std::vector<double> makeCall;
    std::vector<double> makeCallAtPbx;  // from the start of the call until its MakeCall is there; the next likewise
    std::vector<double> closeCallAtPbx;
    std::vector<double> answer;  // from the PBX's send until the request that answers it is there
    std::vector<double> event;   // of a flood, each
    double handles = 0;          // at rest, more than before the load; the next likewise
    double privateKb = 0;
    double shutdown = 0;
    std::vector<Request> requests;  // all that the PBX has got
};

JobFigures RunJob(Pbx& pbx, const JobSetup& setup);

// Takes the settings out of the registry again.
void ForgetSettings(Pbx& pbx, const JobSetup& setup);

}  // namespace velmora
