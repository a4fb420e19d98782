// Written by scripts/make_built_in_certificates.

#include "crypto/built_in_certificates.h"

namespace velmora {

const std::string_view kBuiltInCaPem =
    "-----BEGIN CERTIFICATE-----\r\n"
    "MIIDkzCCAvygAwIBAgIIVkVMTU9SQTEwDQYJKoZIhvcNAQEFBQAwgYgxEDAOBgNV\r\n"
    "BAoMB1ZlbG1vcmExKzApBgNVBAsMIlZlbG1vcmEgVGVsZXBob255IFNlcnZpY2Ug\r\n"
    "UHJvdmlkZXIxRzBFBgNVBAMMPlZlbG1vcmEgQ2VydGlmaWNhdGlvbiBBdXRob3Jp\r\n"
    "dHkgb2YgVGVsZXBob255IFNlcnZpY2UgUHJvdmlkZXJzMB4XDTI2MDEwMTAwMDAw\r\n"
    "MFoXDTQ5MTIzMTIzNTk1OVowgYgxEDAOBgNVBAoMB1ZlbG1vcmExKzApBgNVBAsM\r\n"
    "IlZlbG1vcmEgVGVsZXBob255IFNlcnZpY2UgUHJvdmlkZXIxRzBFBgNVBAMMPlZl\r\n"
    "bG1vcmEgQ2VydGlmaWNhdGlvbiBBdXRob3JpdHkgb2YgVGVsZXBob255IFNlcnZp\r\n"
    "Y2UgUHJvdmlkZXJzMIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQDUm4xSZmHV\r\n"
    "vtp1wIktYA0Qz8/NwOocBE6BUrlDrCoSh4F3HE+V9FNAAh4YhzL6WJDB6LOMZlF0\r\n"
    "9a85Pf9T+SHY9XuZWfXBEmhLnkwkSByNFscGh5UMQueBc18Y7+Q9Y/mButlx0k5A\r\n"
    "hgzLcPEjfo9Ae0xjKd04FYPE7Hr3ShHvwwIDAQABo4IBAjCB/zAPBgNVHRMBAf8E\r\n"
    "BTADAQH/MA4GA1UdDwEB/wQEAwIBBjAdBgNVHQ4EFgQUrxYusBRETygvM3IL5eU6\r\n"
    "c36yXwQwgbwGA1UdIwSBtDCBsYAUrxYusBRETygvM3IL5eU6c36yXwShgY6kgYsw\r\n"
    "gYgxEDAOBgNVBAoMB1ZlbG1vcmExKzApBgNVBAsMIlZlbG1vcmEgVGVsZXBob255\r\n"
    "IFNlcnZpY2UgUHJvdmlkZXIxRzBFBgNVBAMMPlZlbG1vcmEgQ2VydGlmaWNhdGlv\r\n"
    "biBBdXRob3JpdHkgb2YgVGVsZXBob255IFNlcnZpY2UgUHJvdmlkZXJzgghWRUxN\r\n"
    "T1JBMTANBgkqhkiG9w0BAQUFAAOBgQDCwKSrpqi9FO6j208UTvF/6XAi8pbJj06Q\r\n"
    "/16jwi40nUe+agn2bsMjsPfBWERDGKW8/Xf61VBjcDGbrw658/nszqy/I3MDitlz\r\n"
    "ZwSwjRlrKIyjHlDOqBjHYW3t9u6E6NDaJ1ldLUfAinWotGSoNmpMpEQY7bhg/RDe\r\n"
    "6TNNOwtTcw==\r\n"
    "-----END CERTIFICATE-----\r\n";

const std::string_view kBuiltInDevicePem =
    "-----BEGIN CERTIFICATE-----\r\n"
    "MIIDgzCCAuygAwIBAgIIVkVMTU9SQTIwDQYJKoZIhvcNAQEFBQAwgYgxEDAOBgNV\r\n"
    "BAoMB1ZlbG1vcmExKzApBgNVBAsMIlZlbG1vcmEgVGVsZXBob255IFNlcnZpY2Ug\r\n"
    "UHJvdmlkZXIxRzBFBgNVBAMMPlZlbG1vcmEgQ2VydGlmaWNhdGlvbiBBdXRob3Jp\r\n"
    "dHkgb2YgVGVsZXBob255IFNlcnZpY2UgUHJvdmlkZXJzMB4XDTI2MDEwMTAwMDAw\r\n"
    "MFoXDTQ5MTIzMTIzNTk1OVowYjEQMA4GA1UECgwHVmVsbW9yYTErMCkGA1UECwwi\r\n"
    "VmVsbW9yYSBUZWxlcGhvbnkgU2VydmljZSBQcm92aWRlcjEhMB8GA1UEAwwYVmVs\r\n"
    "bW9yYSBUZWxlcGhvbnkgRGV2aWNlMIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKB\r\n"
    "gQCkxGWSpEy8s5ATO2SyRLC1H2MmIdhNZheWGpBZIg68U8pP0zWho9AvxtIER8yc\r\n"
    "5erbv7WYxdyqER7duNGZ08baPaR9yZAG/tJWdk+KjP3QMjfEUwcz6djBp+ldiqWC\r\n"
    "0kNgae10gBPAGgVR3EPL/w9TP6tC/KJu//kFMF/fe9ZihQIDAQABo4IBGTCCARUw\r\n"
    "CQYDVR0TBAIwADALBgNVHQ8EBAMCBaAwHQYDVR0lBBYwFAYIKwYBBQUHAwEGCCsG\r\n"
    "AQUFBwMCMB0GA1UdDgQWBBQAU59aA7FAJG6hYRSpjtJTV0UypDCBvAYDVR0jBIG0\r\n"
    "MIGxgBSvFi6wFERPKC8zcgvl5TpzfrJfBKGBjqSBizCBiDEQMA4GA1UECgwHVmVs\r\n"
    "bW9yYTErMCkGA1UECwwiVmVsbW9yYSBUZWxlcGhvbnkgU2VydmljZSBQcm92aWRl\r\n"
    "cjFHMEUGA1UEAww+VmVsbW9yYSBDZXJ0aWZpY2F0aW9uIEF1dGhvcml0eSBvZiBU\r\n"
    "ZWxlcGhvbnkgU2VydmljZSBQcm92aWRlcnOCCFZFTE1PUkExMA0GCSqGSIb3DQEB\r\n"
    "BQUAA4GBAA81Zt+c4vOsxGyoHE0eVEgn4SVAPtlwPajYupcRzLXLjEyAiTXonH76\r\n"
    "LIFbd6teCOf5ThwIjdHNux7XEzfJIORNSdB7LEssq6uu9DRfh20esnJmfYk/vRID\r\n"
    "oqG8WfJ2XhFkiLlHwhO78cIkZ8NJDTJA1p55lIjESZ+crMRAUtxC\r\n"
    "-----END CERTIFICATE-----\r\n";

}  // namespace velmora
