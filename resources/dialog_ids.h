#pragma once

// The configuration dialog and its controls, for the template and the code behind it.
#define VELMORA_DIALOG 101
#define VELMORA_USERNAME 1001
#define VELMORA_PASSWORD 1002
#define VELMORA_PASSWORD_AGAIN 1003
#define VELMORA_DOMAIN 1004
#define VELMORA_ADDRESS 1005
#define VELMORA_PORT 1006
#define VELMORA_VERSION_LABEL 1009
#define VELMORA_ENCRYPT 1010
#define VELMORA_AUTOORIGINATE 1011
