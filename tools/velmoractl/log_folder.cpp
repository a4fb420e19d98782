#include "tools/velmoractl/log_folder.h"

#include <windows.h>

#include <sddl.h>

namespace velmora::ctl {
namespace {

constexpr char kDataVariable[] = "ProgramData";
constexpr char kFolderName[] = "\\Velmora";
constexpr char kFileName[] = "\\trace.log";

// All rights for administrators and the system; for the service those to make, write and read files. Nothing is
// inherited from above (P), everything below inherits it (OICI).
constexpr char kAccessList[] = "D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)(A;OICI;0x1301bf;;;NS)";

}  // namespace

ByteString DefaultLogPath() {
    char data[MAX_PATH] = "C:";
    GetEnvironmentVariableA(kDataVariable, data, MAX_PATH);
    const ByteString folder = ByteString(data) + kFolderName;
    SECURITY_ATTRIBUTES security{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    if (ConvertStringSecurityDescriptorToSecurityDescriptorA(kAccessList, SDDL_REVISION_1,
                                                             &security.lpSecurityDescriptor, nullptr) != 0) {
        CreateDirectoryA(folder.c_str(), &security);
        LocalFree(security.lpSecurityDescriptor);
    }
    return folder + kFileName;
}

}  // namespace velmora::ctl
