#include "base/Version.h"

namespace dorix {

std::string_view version() { return DORIX_VERSION; }

}  // namespace dorix
