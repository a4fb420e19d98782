#include "tools/velmoractl/file_places.h"

#include <windows.h>

namespace velmora::ctl {

ByteString FolderOfThisProgram() {
    char path[MAX_PATH];
    const DWORD length = GetModuleFileNameA(nullptr, path, MAX_PATH);
    const ByteString program(path, length);
    return program.substr(0, program.find_last_of("\\/") + 1);
}

ByteString SystemFolder() {
    char path[MAX_PATH];
    const UINT length = GetSystemDirectoryA(path, MAX_PATH);
    return ByteString(path, length) + "\\";
}

ByteString FullPath(const ByteString& path) {
    char full[MAX_PATH];
    const DWORD length = GetFullPathNameA(path.c_str(), MAX_PATH, full, nullptr);
    return length > 0 && length < MAX_PATH ? ByteString(full, length) : path;
}

bool FileExists(const ByteString& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace velmora::ctl
