#pragma once

// getaddrinfo and freeaddrinfo are the system's own.
#include <netdb.h>
#include <winsock2.h>
