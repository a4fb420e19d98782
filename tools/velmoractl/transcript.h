#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

#include "config/byte_string.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/csta_record.h"
#include "tools/velmoractl/verdict.h"
#include "xml/xml_node.h"

namespace velmora::ctl {

// What a person sees while a command works with the provider: a line a step with the time since the start in seconds,
// the messages that went to and came from the PBX, and the verdict. With stepsShown false it is the verdict alone.
class Transcript {
public:
    explicit Transcript(bool stepsShown = true) : showSteps(stepsShown) {}

    // Milliseconds since the transcript began.
    uint64_t NowMs() const;

    void Headline(std::string_view text);
    void Ok(std::string_view step);      // it is done
    void Failed(std::string_view step);  // it went wrong
    void Note(std::string_view text) { Note(text, NowMs()); }
    void Note(std::string_view text, uint64_t atMs);

    // A message, read from its XML, which follows in full when it is wanted.
    void Message(const CstaRecord& message, const XmlNode& tree, uint64_t atMs, bool withXml);

    // The advice, and the verdict as the last line.
    void End(const Verdict& verdict) const;

private:
    void Line(uint64_t atMs, std::string_view mark, std::string_view text, Ink ink);

    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    bool showSteps;
    bool empty = true;     // nothing is shown yet
    uint64_t shownMs = 0;  // of the last line; the log's clock is coarser than ours, and time is never to run backwards
};

}  // namespace velmora::ctl
