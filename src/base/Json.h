#pragma once

#include <nlohmann/json.hpp>

namespace dorix {

using Json = nlohmann::json;

}  // namespace dorix
