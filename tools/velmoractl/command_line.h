#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora::ctl {

// The words behind a command's name, sorted into options ("--tsp PATH", "--tsp=PATH", "--help") and the rest.

struct OptionRule {
    std::string_view name;  // with its dashes
    bool takesValue = false;
};

struct Arguments {
    std::vector<ByteString> words;             // those that are no options, in order
    std::map<ByteString, ByteString> options;  // by name, with its dashes; a switch has an empty value
    ByteString error;                          // what is wrong, as a sentence; empty when nothing is

    bool Has(const ByteString& option) const { return options.contains(option); }
};

// Only words that begin with "--" are options, so "-1" is a value; everything behind a bare "--" is a word. An option
// that no rule knows, one that lacks its value and a value for a switch are errors; "-h" stands for "--help".
Arguments ParseArguments(std::span<const ByteString> commandLine, std::span<const OptionRule> rules);

// A whole, unsigned decimal number of at most limit; none for anything else.
std::optional<uint32_t> ParseWholeNumber(std::string_view text, uint32_t limit);

}  // namespace velmora::ctl
