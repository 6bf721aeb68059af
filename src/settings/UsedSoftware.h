#pragma once

#include <span>
#include <string_view>

namespace dorix {

/// What others have made and the program, its recogniser and its service are linked with, load or draw with.
struct UsedSoftware {
    std::string_view name;
    std::string_view licence;  // its SPDX identifier
};

std::span<const UsedSoftware> usedSoftware();

}  // namespace dorix
