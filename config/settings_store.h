#pragma once

#include "config/byte_string.h"

namespace velmora {

// The settings in the registry: string values in one key, numbers as decimal text, booleans as "1" and "0".

// The text of one value; empty when the key or the value cannot be read (the trace log says which, at level 1).
// A REG_MULTI_SZ gives all its bytes, NULs included; any other type gives those before the first NUL.
ByteString ReadSetting(const ByteString& name);

// Stores one value. A failure is only logged, at level 7, above the default threshold: the dialog often runs without
// the right to write here.
void WriteSetting(const ByteString& name, const ByteString& value);

// Reads every value into the settings. A missing text clears its field, a missing number keeps the field's value, and
// a missing guid is made anew (it is stored only by SaveSettings).
//
// A number that is none throws std::invalid_argument, one outside 32 bits std::out_of_range (see ParseInt); the values
// after it are then left unread.
void LoadSettings();

// Writes every setting; one that fails does not stop the others.
void SaveSettings();

// A random identifier of 36 lower-case characters in the layout 8-4-4-4-12, version 4 (RFC 4122, section 4.4). It is
// no secret: it comes from the C runtime's rand().
ByteString GenerateGuid();

}  // namespace velmora
