#pragma once

namespace velmora {

// What each measured unit has to reach: the ratio of our time to that of the best peer in the same run, less being
// better. At "good" a unit may rest for now; "moonshot" is the goal.
struct Target {
    const char* unit;
    const char* caseName;  // bytes, RSA bits, or a named bundle
    double good;
    double moonshot;
};

inline constexpr Target kTargets[] = {
    {"md5", "64", 1.15, 0.95},
    {"md5", "1024", 1.1, 0.96},
    {"md5", "16384", 1.1, 0.96},
    {"md5", "1048576", 1.1, 0.96},
    {"sha1", "64", 1.2, 0.95},
    {"sha1", "1024", 1.15, 1},
    {"sha1", "16384", 1.15, 1},
    {"sha1", "1048576", 1.15, 1},
    {"hmac-md5", "413", 1.15, 0.9},
    {"hmac-md5", "16397", 1.15, 0.97},
    {"hmac-sha1", "413", 1.2, 0.95},
    {"hmac-sha1", "16397", 1.2, 1},
    {"prf", "104", 1, 0.55},
    {"aes128-cbc-enc", "448", 1.2, 1},
    {"aes128-cbc-enc", "16384", 1.1, 0.93},
    {"aes128-cbc-dec", "448", 2, 1.2},
    {"aes128-cbc-dec", "16384", 1.3, 0.7},
    {"aes256-cbc-enc", "448", 1.2, 1},
    {"aes256-cbc-enc", "16384", 1.1, 0.93},
    {"aes256-cbc-dec", "448", 2, 1.2},
    {"aes256-cbc-dec", "16384", 1.3, 0.7},
    {"rc4", "448", 1.1, 0.95},
    {"rc4", "16384", 1.1, 0.9},
    {"rsa-public", "1024", 2.4, 0.8},
    {"rsa-public", "2048", 2.6, 0.55},
    {"rsa-public", "4096", 2.8, 0.4},
    {"rsa-private", "1024", 2.2, 1.3},
    {"rsa-private", "2048", 3.5, 1.2},
    {"rsa-private", "4096", 2.5, 0.6},
    {"xml", "session", 1.5, 1},
    {"xml", "answers", 1.3, 0.9},
    {"xml", "events", 2.2, 1.4},
    {"xml", "lists", 3.2, 1.8},
    {"tls-handshake-client", "rsa1024 aes128-sha", 1, 0.5},
    {"tls-handshake-client", "rsa2048 aes128-sha", 1, 0.5},
    {"tls-handshake-server", "rsa1024 aes128-sha", 1.5, 0.8},
    {"tls-handshake-server", "rsa2048 aes128-sha", 2.8, 1.2},
    {"tls-resume-client", "rsa2048 aes128-sha", 1, 0.5},
    {"tls-resume-server", "rsa2048 aes128-sha", 1, 0.5},
    {"tls-protect", "aes128-sha 400", 1.3, 0.95},
    {"tls-protect", "aes128-sha 16384", 1.8, 1.1},
    {"tls-protect", "aes256-sha 400", 1.3, 0.95},
    {"tls-protect", "aes256-sha 16384", 1.8, 1.1},
    {"tls-protect", "rc4-sha 400", 1.05, 0.87},
    {"tls-protect", "rc4-sha 16384", 1.05, 0.87},
    {"tls-protect", "rc4-md5 400", 1.05, 0.87},
    {"tls-protect", "rc4-md5 16384", 1.05, 0.87},
    {"tls-unprotect", "aes128-sha 400", 0.9, 0.65},
    {"tls-unprotect", "aes128-sha 16384", 1.1, 0.85},
    {"tls-unprotect", "aes256-sha 400", 0.9, 0.65},
    {"tls-unprotect", "aes256-sha 16384", 1.1, 0.85},
    {"tls-unprotect", "rc4-sha 400", 1.05, 0.87},
    {"tls-unprotect", "rc4-sha 16384", 1.05, 0.87},
    {"tls-unprotect", "rc4-md5 400", 1.05, 0.87},
    {"tls-unprotect", "rc4-md5 16384", 1.05, 0.87},
};

}  // namespace velmora
