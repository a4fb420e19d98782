#pragma once

#include <windows.h>

#include <msi.h>

#include "config/byte_string.h"

namespace velmora::setup {

// The running installation, as Windows Installer shows it to a custom action.

// A property of the installation, empty when it is not set. A deferred action sees "CustomActionData" only.
ByteString ReadProperty(MSIHANDLE installation, const ByteString& name);
void WriteProperty(MSIHANDLE installation, const ByteString& name, const ByteString& value);

// A line for the installation's log.
void LogLine(MSIHANDLE installation, const ByteString& line);

// The same as an error, which is also shown unless the installation is silent.
void ShowError(MSIHANDLE installation, const ByteString& sentence);

}  // namespace velmora::setup
