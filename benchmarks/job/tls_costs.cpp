#include "benchmarks/job/tls_costs.h"

#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace velmora {
namespace {

// The best peer's nanoseconds: the fourth column of the lines of tls_bench.
class PeerTimes {
public:
    explicit PeerTimes(const std::string& path) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            std::istringstream columns(line);
            std::string unit;
            std::string caseName;
            std::string ours;
            std::string peer;
            std::getline(columns, unit, '\t');
            std::getline(columns, caseName, '\t');
            std::getline(columns, ours, '\t');
            std::getline(columns, peer, '\t');
            times[{unit, caseName}] = peer;
        }
    }

    double Of(const std::string& unit, const std::string& caseName) const {
        const auto found = times.find({unit, caseName});
        if (found == times.end()) throw std::runtime_error("tls_bench has not measured " + unit + " " + caseName);
        return std::stod(found->second);
    }

private:
    std::map<std::pair<std::string, std::string>, std::string> times;  // by unit and case
};

// The line through two measured lengths.
void FitRecords(const PeerTimes& times, const std::string& unit, double& recordNs, double& byteNs) {
    constexpr double kShort = 400;
    constexpr double kLong = 16384;
    const double shortNs = times.Of(unit, "aes128-sha 400");
    byteNs = (times.Of(unit, "aes128-sha 16384") - shortNs) / (kLong - kShort);
    recordNs = shortNs - byteNs * kShort;
}

}  // namespace

TlsCosts ReadTlsCosts(const std::string& path) {
    const PeerTimes times(path);
    TlsCosts costs;
    costs.handshakeNs = times.Of("tls-handshake-client", "rsa2048 aes128-sha");
    FitRecords(times, "tls-protect", costs.protectRecordNs, costs.protectByteNs);
    FitRecords(times, "tls-unprotect", costs.unprotectRecordNs, costs.unprotectByteNs);
    return costs;
}

}  // namespace velmora
