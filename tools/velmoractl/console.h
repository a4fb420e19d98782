#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora::ctl {

// The console: text out, a secret in. Text is UTF-8 or of the ANSI code page (settings are stored in that); on a real
// console it comes out right in either, into a file or a pipe it goes as it is.

// Ink for a word; without effect unless the output is a console that knows colours (and NO_COLOR is not set).
enum class Ink { kPlain, kGood, kBad, kFaint };

// Writes to the standard output at once.
void Print(std::string_view text, Ink ink = Ink::kPlain);

// Writes a line to the standard error output.
void PrintErrorLine(std::string_view text);

// One line of the standard input, without its line end, in the ANSI code page. On a console the prompt is shown and
// what is typed is not. False when the input ends before anything is read.
bool ReadSecret(std::string_view prompt, ByteString& secret);

// Whether a person types the standard input.
bool IsInputConsole();

}  // namespace velmora::ctl
