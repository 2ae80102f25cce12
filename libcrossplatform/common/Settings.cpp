#include <libcrossplatform/common/Settings.h>

namespace Veltra {

Settings::~Settings() = default;

}  // namespace Veltra
