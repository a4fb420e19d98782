#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "crypto/cpu_features.h"

namespace velmora {
namespace {

// What Linux says of the first processor.
std::set<std::string> flagsOfLinux() {
    std::ifstream file("/proc/cpuinfo");
    std::string line;
    while (std::getline(file, line) && line.rfind("flags", 0) != 0) {
    }
    std::istringstream words(line);
    std::set<std::string> flags;
    for (std::string word; words >> word;) flags.insert(word);
    return flags;
}

TEST(CpuDetection, FindsWhatLinuxFinds) {
    const std::set<std::string> flags = flagsOfLinux();
    if (flags.empty()) GTEST_SKIP() << "this system does not tell in /proc/cpuinfo";
    const CpuFeatures features = detectCpuFeatures();
    EXPECT_EQ(features.aes, flags.count("aes") == 1);
    EXPECT_EQ(features.vaes, flags.count("aes") + flags.count("vaes") + flags.count("avx2") == 3);
    EXPECT_EQ(features.sha, flags.count("sha_ni") == 1);
    EXPECT_EQ(features.ifma, flags.count("avx512f") + flags.count("avx512ifma") == 2);
}

}  // namespace
}  // namespace velmora
