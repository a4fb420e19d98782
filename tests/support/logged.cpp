#include "tests/support/logged.h"

#include <cstddef>
#include <limits>
#include <string_view>

#include "config/settings.h"
#include "tests/support/log_file_fake.h"

namespace velmora {

std::vector<ByteString> Logged(int32_t loglevel, const std::function<void()>& action) {
    constexpr std::string_view kTimeEnd = "]:";
    constexpr std::string_view kLineEnd = "\r\n";
    const Settings before = settings;
    settings.logfile = "trace.log";
    settings.loglevel = loglevel;
    settings.loglength = std::numeric_limits<int32_t>::max();
    size_t position = WrittenLog().size();
    action();
    settings = before;

    const ByteString written = WrittenLog();
    std::vector<ByteString> records;
    while (position < written.size()) {
        const size_t start = written.find(kTimeEnd, position) + kTimeEnd.size();
        const size_t end = written.find(kLineEnd, start);
        records.push_back(written.substr(start, end - start));
        position = end + kLineEnd.size();
    }
    return records;
}

}  // namespace velmora
