#pragma once

#include "config/byte_string.h"

namespace velmora::ctl {

// Where files are on this PC.

// Folders, each with a backslash at its end.
ByteString FolderOfThisProgram();
ByteString SystemFolder();  // System32: the 64-bit one, since this program has 64 bits

// A path from the root on; the path as it is when the system makes nothing of it.
ByteString FullPath(const ByteString& path);

bool FileExists(const ByteString& path);

}  // namespace velmora::ctl
