#include "packaging/setup_actions/installer_session.h"

#include <msiquery.h>

namespace velmora::setup {
namespace {

void SendMessage(MSIHANDLE installation, INSTALLMESSAGE kind, const ByteString& text) {
    const MSIHANDLE record = MsiCreateRecord(1);
    // The text is a field and not the template, in which brackets would be replaced.
    MsiRecordSetStringA(record, 0, "[1]");
    MsiRecordSetStringA(record, 1, text.c_str());
    MsiProcessMessage(installation, kind, record);
    MsiCloseHandle(record);
}

}  // namespace

ByteString ReadProperty(MSIHANDLE installation, const ByteString& name) {
    char none[] = "";
    DWORD characters = 0;
    if (MsiGetPropertyA(installation, name.c_str(), none, &characters) != ERROR_MORE_DATA) return {};
    // Counted in UTF-16 units by some releases of Windows: two bytes for each are enough.
    ByteString value(static_cast<size_t>(characters) * 2 + 1, '\0');
    characters = static_cast<DWORD>(value.size());
    if (MsiGetPropertyA(installation, name.c_str(), value.data(), &characters) != ERROR_SUCCESS) return {};
    value.resize(value.find('\0'));
    return value;
}

void WriteProperty(MSIHANDLE installation, const ByteString& name, const ByteString& value) {
    MsiSetPropertyA(installation, name.c_str(), value.c_str());
}

void LogLine(MSIHANDLE installation, const ByteString& line) {
    SendMessage(installation, INSTALLMESSAGE_INFO, "Velmora: " + line);
}

void ShowError(MSIHANDLE installation, const ByteString& sentence) {
    SendMessage(installation, INSTALLMESSAGE_ERROR, "Velmora: " + sentence);
}

}  // namespace velmora::setup
