#pragma once

#include <cstddef>
#include <cstdint>

// What each target defines, under the name and in the form that libFuzzer calls: runs one input. It returns 0, and
// nothing that it leaves behind may change what the next input does.
//
// NOLINTNEXTLINE(readability-identifier-naming): libFuzzer's name
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes);
