#pragma once

#include <windows.h>

#include <msi.h>

// The installer's own steps, as custom actions of velmora.wxs. Each returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE to
// stop and undo the installation.

extern "C" {

// Immediate. Checks the settings given as properties, and hands them to StoreSettings, and what they replace to
// RestoreSettings. The property PASSWORD is empty afterwards.
UINT __stdcall PlanSettings(MSIHANDLE installation);

// Deferred, and as RestoreSettings for the roll-back: makes the changes that PlanSettings has planned.
UINT __stdcall StoreSettings(MSIHANDLE installation);

// On commit: deletes all settings. It cannot be undone, so it waits until nothing can fail any more.
UINT __stdcall RemoveSettings(MSIHANDLE installation);

// Deferred: tells TAPI of the provider. The installation fails with it.
UINT __stdcall RegisterProvider(MSIHANDLE installation);

// Deferred, and for the roll-back of RegisterProvider: makes TAPI forget the provider. Nothing fails with it, since a
// product must go even from a PC whose telephony service does not work.
UINT __stdcall UnregisterProvider(MSIHANDLE installation);

}  // extern "C"
