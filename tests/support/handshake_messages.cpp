#include "tests/support/handshake_messages.h"

#include <gtest/gtest.h>

#include "config/text_numbers.h"

namespace velmora {
namespace {

unsigned ByteAt(std::string_view bytes, size_t position) {
    return static_cast<unsigned char>(bytes[position]);
}

size_t NumberIn(std::string_view bytes) {
    size_t number = 0;
    for (size_t position = 0; position < bytes.size(); ++position) number = number * 256 + ByteAt(bytes, position);
    return number;
}

ByteString Listed(const std::vector<unsigned>& numbers) {
    ByteString text;
    for (const unsigned number : numbers) text += (text.empty() ? "" : ",") + DecimalText(number);
    return text;
}

}  // namespace

ByteString Octets(std::initializer_list<unsigned> values) {
    ByteString bytes;
    for (const unsigned value : values) bytes += static_cast<char>(value);
    return bytes;
}

ByteString BigEndian(size_t number, size_t count) {
    ByteString bytes(count, '\0');
    for (size_t position = count; position-- > 0; number >>= 8) bytes[position] = static_cast<char>(number & 0xFF);
    return bytes;
}

ByteString Counted(size_t count, std::string_view bytes) {
    return BigEndian(bytes.size(), count).append(bytes);
}

ByteString RecordOf(unsigned type, std::string_view fragment, unsigned version) {
    return BigEndian(type, 1) + BigEndian(version, 2) + Counted(2, fragment);
}

ByteString MessageOf(unsigned type, std::string_view body) {
    return BigEndian(type, 1) + Counted(3, body);
}

ByteString ClientHelloFields::Body() const {
    return BigEndian(version, 2) + random + Counted(1, sessionId) + Counted(2, suites) + Counted(1, compressions) +
           rest;
}

ByteString ServerHelloFields::Body() const {
    return BigEndian(version, 2) + random + Counted(1, sessionId) + BigEndian(suite, 2) + BigEndian(compression, 1) +
           rest;
}

ByteString CertificateBody(const std::vector<ByteString>& certificates) {
    ByteString list;
    for (const ByteString& certificate : certificates) list += Counted(3, certificate);
    return Counted(3, list);
}

ByteString CertificateRequestBody(std::string_view types, const std::vector<ByteString>& authorities) {
    ByteString list;
    for (const ByteString& authority : authorities) list += Counted(2, authority);
    return Counted(1, types) + Counted(2, list);
}

std::vector<SeenRecord> RecordsIn(std::string_view stream) {
    std::vector<SeenRecord> records;
    while (stream.size() >= 5) {
        const size_t fragmentBytes = NumberIn(stream.substr(3, 2));
        if (stream.size() < 5 + fragmentBytes) break;
        records.push_back({ByteAt(stream, 0), static_cast<unsigned>(NumberIn(stream.substr(1, 2))),
                           ByteString(stream.substr(5, fragmentBytes))});
        stream.remove_prefix(5 + fragmentBytes);
    }
    EXPECT_EQ(stream.size(), 0U) << "no whole record at the end";
    return records;
}

std::vector<SeenMessage> MessagesIn(std::string_view bytes) {
    std::vector<SeenMessage> messages;
    while (bytes.size() >= 4) {
        const size_t bodyBytes = NumberIn(bytes.substr(1, 3));
        if (bytes.size() < 4 + bodyBytes) break;
        messages.push_back({ByteAt(bytes, 0), ByteString(bytes.substr(4, bodyBytes))});
        bytes.remove_prefix(4 + bodyBytes);
    }
    EXPECT_EQ(bytes.size(), 0U) << "no whole message at the end";
    return messages;
}

ByteString Outline(std::string_view stream) {
    ByteString outline;
    for (const SeenRecord& record : RecordsIn(stream)) {
        std::vector<unsigned> numbers;
        if (record.type == 22) {
            for (const SeenMessage& message : MessagesIn(record.fragment)) numbers.push_back(message.type);
        }
        if (record.type == 21) {
            for (size_t position = 0; position < record.fragment.size(); ++position) {
                numbers.push_back(ByteAt(record.fragment, position));
            }
        }
        outline += (outline.empty() ? "" : " ") + DecimalText(record.type);
        if (!numbers.empty()) outline += ":" + Listed(numbers);
    }
    return outline;
}

}  // namespace velmora
