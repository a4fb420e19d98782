#include "benchmarks/job/host_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace velmora {
namespace {

constexpr int kEndMs = 5000;  // for a process to end by itself

// The end to read from and the end to write to.
std::pair<Descriptor, Descriptor> MakePipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

}  // namespace

HostProcess::HostProcess(Pbx& servedPbx, const std::string& wine, const std::string& program) : pbx(servedPbx) {
    auto [commandsRead, commandsWrite] = MakePipe();
    auto [answersRead, answersWrite] = MakePipe();
    process = fork();
    if (process < 0) throw std::runtime_error("no process");
    if (process == 0) {
        dup2(commandsRead.Get(), STDIN_FILENO);
        dup2(answersWrite.Get(), STDOUT_FILENO);
        execl(wine.c_str(), wine.c_str(), program.c_str(), nullptr);
        _exit(127);
    }
    commands = std::move(commandsWrite);
    answers = std::move(answersRead);
}

HostProcess::~HostProcess() {
    commands = Descriptor();  // the end of its input
    for (int waitedMs = 0; waitpid(process, nullptr, WNOHANG) == 0; ++waitedMs) {
        if (waitedMs == kEndMs) kill(process, SIGKILL);
        usleep(1000);
    }
}

std::string HostProcess::Command(const std::string& command) {
    const std::string line = command + "\n";
    if (write(commands.Get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        throw std::runtime_error("job_host.exe does not run");
    }
    std::string answer;
    while (!answer.ends_with('\n')) {
        pbx.WaitForInput(answers.Get());
        char bytes[256];
        const ssize_t count = read(answers.Get(), bytes, sizeof bytes);
        if (count <= 0) throw std::runtime_error("job_host.exe has ended at: " + command);
        answer.append(bytes, static_cast<size_t>(count));
    }
    if (answer.starts_with("failed")) throw std::runtime_error("job_host.exe fails at: " + command);
    return answer;
}

int64_t HostProcess::Number(const std::string& command) {
    return std::stoll(Command(command));
}

TimedCall HostProcess::Time(const std::string& command) {
    TimedCall call;
    std::istringstream(Command(command)) >> call.start >> call.end;
    return call;
}

bool HostProcess::IsIdle() const {
    const std::filesystem::directory_iterator tasks("/proc/" + std::to_string(process) + "/task");
    return std::all_of(begin(tasks), end(tasks), [](const std::filesystem::directory_entry& task) {
        // The state is the letter behind the name, which is in parentheses.
        std::ifstream file(task.path() / "stat");
        std::string line;
        std::getline(file, line);
        const size_t nameEnd = line.rfind(')');
        return nameEnd != std::string::npos && line[nameEnd + 2] == 'S';
    });
}

void HostProcess::WaitUntilIdle() const {
    while (!IsIdle()) usleep(100);
}

size_t HostProcess::PrivateKb() const {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string field;
    while (status >> field) {
        if (field != "RssAnon:") continue;
        size_t kilobytes = 0;
        status >> kilobytes;
        return kilobytes;
    }
    throw std::runtime_error("no RssAnon of job_host.exe");
}

}  // namespace velmora
