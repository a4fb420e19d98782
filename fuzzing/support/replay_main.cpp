// Runs a target without libFuzzer, with any compiler: once for each file in the folders that it is given.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "fuzzing/support/fuzz_target.h"
#include "tests/support/file_bytes.h"

int main(int count, char** arguments) {
    std::vector<std::filesystem::path> files;
    for (int index = 1; index < count; ++index) {
        if (!std::filesystem::is_directory(arguments[index])) continue;  // no input is kept yet
        for (const auto& entry : std::filesystem::directory_iterator(arguments[index])) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        // Said before it runs, so that the last line names the input that ends the program.
        std::printf("%s\n", file.c_str());
        static_cast<void>(std::fflush(stdout));
        const velmora::ByteString input = velmora::FileBytes(file.string());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    }
    if (files.empty()) std::fprintf(stderr, "no input\n");
    return files.empty() ? 1 : 0;
}
