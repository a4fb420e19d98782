#pragma once

namespace velmora::ctl {

// What velmoractl returns to its caller, one number for each outcome that a script may want to tell apart.
enum class ExitCode {
    kDone = 0,
    kFailed = 1,             // a provider call returned an error that has no number of its own
    kUsage = 2,              // the command line is wrong
    kNotLoaded = 3,          // the provider cannot be loaded
    kBadSettings = 4,        // a setting is wrong, or a value for one was refused
    kNoConnection = 5,       // the PBX cannot be reached
    kNoLogin = 6,            // the PBX refused the login, or did not answer it
    kCallRefused = 7,        // the PBX or the provider refused the call
    kCallNotAnswered = 8,    // the PBX did not answer the call request
    kNotVisible = 9,         // the trace log could not be read, so the outcome is not known
    kRegistry = 10,          // the registry cannot be read, or not be written
    kNoEncryption = 11,      // the PBX is reached, but not with TLS
    kNotResolved = 12,       // the PBX's host name has no address
    kNotMonitored = 13,      // the PBX refused to monitor the user's device, or did not answer
    kNotCleared = 14,        // the PBX refused to clear the call, or did not answer
    kNotAdministrator = 15,  // this needs the rights of an administrator
    kNotInstalled = 16,      // velmora.tsp is not in System32
    kNot64Bit = 17,          // what is there under its name is no 64-bit library
    kNotRegistered = 18,     // TAPI does not know the provider
    kNoTelephony = 19,       // the telephony service is not there, or is disabled
    kTapiRefused = 20,       // TAPI did not add or remove the provider
};

}  // namespace velmora::ctl
