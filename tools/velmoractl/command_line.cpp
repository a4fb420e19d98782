#include "tools/velmoractl/command_line.h"

#include <algorithm>
#include <charconv>

namespace velmora::ctl {
namespace {

constexpr std::string_view kHelp = "--help";

const OptionRule* FindRule(std::span<const OptionRule> rules, std::string_view name) {
    const auto found = std::ranges::find(rules, name, &OptionRule::name);
    return found == rules.end() ? nullptr : &*found;
}

}  // namespace

Arguments ParseArguments(std::span<const ByteString> commandLine, std::span<const OptionRule> rules) {
    Arguments arguments;
    for (size_t index = 0; index < commandLine.size(); ++index) {
        const ByteString& word = commandLine[index];
        if (word == "--") {
            const auto rest = commandLine.subspan(index + 1);
            arguments.words.insert(arguments.words.end(), rest.begin(), rest.end());
            break;
        }
        if (word == "-h") {
            arguments.options.emplace(kHelp, "");
            continue;
        }
        if (!word.starts_with("--")) {
            arguments.words.push_back(word);
            continue;
        }

        const size_t equals = word.find('=');
        const ByteString name = word.substr(0, equals);
        const bool hasValue = equals != ByteString::npos;
        const OptionRule* rule = FindRule(rules, name);
        if (rule == nullptr) {
            arguments.error = "There is no option " + name + ".";
        } else if (!rule->takesValue) {
            if (hasValue) arguments.error = "The option " + name + " takes no value.";
            arguments.options[name] = "";
        } else if (hasValue) {
            arguments.options[name] = word.substr(equals + 1);
        } else if (index + 1 < commandLine.size()) {
            arguments.options[name] = commandLine[++index];
        } else {
            arguments.error = "The option " + name + " needs a value.";
        }
        if (!arguments.error.empty()) break;
    }
    return arguments;
}

std::optional<uint32_t> ParseWholeNumber(std::string_view text, uint32_t limit) {
    uint32_t number = 0;
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end || number > limit) return {};
    return number;
}

}  // namespace velmora::ctl
