#include "tools/velmoractl/trace_log_reader.h"

#include <charconv>
#include <string_view>

#include "tools/velmoractl/csta_record.h"

namespace velmora::ctl {
namespace {

constexpr std::string_view kLineEnd = "\r\r\n";

struct Head {
    uint64_t elapsedMs = 0;
    int32_t level = 0;
    size_t length = 0;  // up to the text; 0 when there is no head
};

// Walks over fixed characters and numbers; once something does not fit, it stays failed.
class HeadScanner {
public:
    explicit HeadScanner(std::string_view scanned) : text(scanned) {}

    void Expect(char character) {
        if (fits && position < text.size() && text[position] == character) {
            ++position;
        } else {
            fits = false;
        }
    }

    template <typename Number>
    Number Take() {
        Number number = 0;
        if (!fits) return 0;
        const char* end = text.data() + text.size();
        const std::from_chars_result result = std::from_chars(text.data() + position, end, number);
        fits = result.ec == std::errc();
        position = static_cast<size_t>(result.ptr - text.data());
        return number;
    }

    bool fits = true;
    size_t position = 0;

private:
    std::string_view text;
};

Head ReadHead(std::string_view text) {
    Head head;
    HeadScanner scanner(text);
    scanner.Expect('[');
    const auto hours = scanner.Take<uint64_t>();
    scanner.Expect(':');
    const auto minutes = scanner.Take<uint32_t>();
    scanner.Expect(':');
    const auto seconds = scanner.Take<uint32_t>();
    scanner.Expect(':');
    const auto milliseconds = scanner.Take<uint32_t>();
    scanner.Expect(']');
    scanner.Expect(':');
    head.level = scanner.Take<int32_t>();
    scanner.Expect(' ');
    if (!scanner.fits) return {};
    head.elapsedMs = ((hours * 60 + minutes) * 60 + seconds) * 1000 + milliseconds;
    head.length = scanner.position;
    return head;
}

// Where the first head at the start of a line stands, from position (the start of a line) on; npos when there is none.
size_t FindHead(std::string_view text, size_t position) {
    while (position < text.size()) {
        if (ReadHead(text.substr(position)).length != 0) return position;
        const size_t lineEnd = text.find('\n', position);
        if (lineEnd == std::string_view::npos) break;
        position = lineEnd + 1;
    }
    return std::string_view::npos;
}

// The file's text mode has made CR CR LF of each CR LF.
ByteString RestoreLineEnds(std::string_view text) {
    ByteString restored;
    for (size_t index = 0; index < text.size(); ++index) {
        if (text.substr(index).starts_with(kLineEnd)) continue;
        restored += text[index];
    }
    return restored;
}

}  // namespace

void TraceLogReader::Append(const ByteString& bytes) {
    // Room is made once a chunk, not once a record.
    buffer.erase(0, position);
    position = 0;
    buffer += bytes;
}

std::optional<LogRecord> TraceLogReader::Next() {
    if (!SkipToHead()) return {};
    const std::string_view held = std::string_view(buffer).substr(position);
    const size_t firstLineEnd = held.find('\n');
    if (firstLineEnd == std::string_view::npos) return {};
    const size_t nextHead = FindHead(held, firstLineEnd + 1);
    if (nextHead != std::string_view::npos) return Take(nextHead);

    if (!held.ends_with(kLineEnd)) return {};
    const std::optional<CstaRecord> message = CstaRecordIn(held.substr(ReadHead(held).length));
    if (message && !IsWholeMessage(message->xml)) return {};
    return Take(held.size());
}

std::optional<LogRecord> TraceLogReader::Rest() {
    if (!SkipToHead()) return {};
    return Take(buffer.size() - position);
}

bool TraceLogReader::SkipToHead() {
    const size_t head = FindHead(std::string_view(buffer).substr(position), 0);
    if (head == std::string_view::npos) return false;
    position += head;
    return true;
}

LogRecord TraceLogReader::Take(size_t recordBytes) {
    const std::string_view record = std::string_view(buffer).substr(position, recordBytes);
    position += recordBytes;
    const Head head = ReadHead(record);
    std::string_view text = record.substr(head.length);
    if (text.ends_with(kLineEnd)) text.remove_suffix(kLineEnd.size());
    return {head.elapsedMs, head.level, RestoreLineEnds(text)};
}

}  // namespace velmora::ctl
