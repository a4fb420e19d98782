#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "benchmarks/job/descriptor.h"
#include "benchmarks/job/pbx.h"

namespace velmora {

// From start to end, on the clock of CounterNow.
struct TimedCall {
    int64_t start = 0;
    int64_t end = 0;
};

// job_host.exe under Wine. While it carries out a command the PBX is served. A command that fails throws
// std::runtime_error.
class HostProcess {
public:
    // Starts program by the script that runs Wine.
    HostProcess(Pbx& servedPbx, const std::string& wine, const std::string& program);

    // Ends it if it still runs.
    ~HostProcess();

    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    int64_t Number(const std::string& command);
    TimedCall Time(const std::string& command);

    // Returns when all its threads wait for something.
    void WaitUntilIdle() const;

    // Memory that it has for itself alone: pages with no file behind them.
    size_t PrivateKb() const;

private:
    bool IsIdle() const;
    std::string Command(const std::string& command);

    Pbx& pbx;
    pid_t process = -1;
    Descriptor commands;
    Descriptor answers;
};

}  // namespace velmora
