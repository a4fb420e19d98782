#include "config/settings.h"

namespace velmora {

Settings settings;

}  // namespace velmora
