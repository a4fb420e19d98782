#pragma once

#include <windows.h>

namespace velmora {

// Gives a loaded module the system as it is in its worst moments, so that what happens once in a million times happens
// in every round:
//
// - Now and then a thread loses its turn, or goes on only some milliseconds later, when it has just given a lock back
//   or is about to take memory, with or without a lock.
// - Connections take in little: a send soon waits until the peer has read, and may send only a part of a long request.
// - Sleeps end after some milliseconds; the module's long ones would only make a round long.
//
// For the calls of that module alone, until it is unloaded.
void MakeSystemAdverse(HMODULE module);

// From now on the calling thread strays further in that module: long enough to be overtaken by the PBX's answer.
void LetThisThreadStrayFar();

}  // namespace velmora
