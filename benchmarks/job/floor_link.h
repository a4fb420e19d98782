#pragma once

namespace velmora {

// The floor's link to the PBX: the script is played over one socket, with the threads and the hand-over between them
// that the provider has.

// Takes the script from a file; before the provider's start, and not part of what is measured.
void LoadScript(const char* path);

// Connects, sends what comes first and starts the threads.
void StartLink(const char* address, const char* port);

// Sends the next request of the script.
void SendNextRequest();

void StopLink();

}  // namespace velmora
