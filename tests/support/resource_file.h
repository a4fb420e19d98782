#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace velmora {

// The resources of a DLL or program, read from its file without running any of it.
class ResourceFile {
public:
    explicit ResourceFile(const std::string& path);
    ~ResourceFile();

    ResourceFile(const ResourceFile&) = delete;
    ResourceFile& operator=(const ResourceFile&) = delete;

    // The bytes of one resource. Type and name are numbers, as of MAKEINTRESOURCE; one that is missing fails the test.
    std::string Bytes(WORD type, WORD name) const;

    // The numbers of all resources of a type; 0 for one that has a text as its name.
    std::vector<WORD> Names(WORD type) const;

private:
    HMODULE module;
};

}  // namespace velmora
