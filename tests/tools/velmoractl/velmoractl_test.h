#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <optional>
#include <vector>

#include "config/byte_string.h"
#include "tests/support/child_process.h"
#include "tests/support/registry_scope.h"

namespace velmora::ctl {

inline constexpr char kUserPassword[] = "se-cret";

using Lines = std::vector<ByteString>;

// A program that has run to its end.
struct Ended {
    Lines lines;  // what it printed
    std::optional<DWORD> exitCode;

    ByteString LastLine() const { return lines.empty() ? ByteString() : lines.back(); }
    bool Printed(const ByteString& text) const;  // within a line
};

Ended ToEnd(ChildProcess& program);
Ended RunCtl(const ByteString& arguments, const ByteString& input = {});

// A running PBX on a free port.
class RunningPbx {
public:
    explicit RunningPbx(const ByteString& arguments);

    ChildProcess program;
    ByteString port = "0";
};

// A user's settings, and a PBX that knows the user.
class VelmoractlTest : public testing::Test {
protected:
    // The settings of a user whose PBX listens on a port.
    void StoreSettings(const ByteString& port);

    // Runs velmoractl with a PBX, which is started with more arguments.
    Ended RunOver(const ByteString& pbxArguments, const ByteString& arguments);

    bool PbxPrinted(const ByteString& text) const { return Ended{pbxLines, {}}.Printed(text); }

    RegistryScope registry;
    ByteString encrypt = "0";  // to be stored with the settings
    Lines pbxLines;
};

}  // namespace velmora::ctl
