#include "tools/velmoractl/provider_list.h"

#include "config/ascii_case.h"
#include "tools/velmoractl/command_line.h"

namespace velmora::ctl {
namespace {

constexpr std::string_view kFileNameStart = "providerfilename";
constexpr uint32_t kHighestIndex = 0xFFFFFFFE;

std::string_view WithoutFolder(std::string_view path) {
    return path.substr(path.find_last_of("\\/") + 1);
}

}  // namespace

std::vector<uint32_t> ProviderIds(const ProviderKey& key, std::string_view fileName) {
    const auto count = key.numbers.find("numproviders");
    if (count == key.numbers.end()) return {};

    // By what is there, not by NumProviders, which may hold anything; in the order of the numbers, not of their texts.
    std::map<uint32_t, uint32_t> idByIndex;
    for (const auto& [name, path] : key.texts) {
        if (!name.starts_with(kFileNameStart) || LowerCase(WithoutFolder(path)) != LowerCase(fileName)) continue;
        const ByteString index = name.substr(kFileNameStart.size());
        const std::optional<uint32_t> number = ParseWholeNumber(index, kHighestIndex);
        const auto id = key.numbers.find("providerid" + index);
        if (number && *number < count->second && id != key.numbers.end()) idByIndex[*number] = id->second;
    }
    std::vector<uint32_t> ids;
    ids.reserve(idByIndex.size());
    for (const auto& [index, id] : idByIndex) ids.push_back(id);
    return ids;
}

}  // namespace velmora::ctl
