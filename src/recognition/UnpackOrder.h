#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// Which files to take out of an archive, which is other people's bytes. Each stands in a folder "lib" of it.
struct UnpackOrder {
    std::filesystem::path archive;
    std::filesystem::path folder;    // where they go to
    std::vector<std::string> files;  // their names
    std::uint64_t largest = 0;       // of all together, in bytes

    bool operator==(const UnpackOrder&) const = default;
};

std::string encoded(const UnpackOrder& order);
/// None when the text is no order.
std::optional<UnpackOrder> unpackOrderIn(std::string_view text);

}  // namespace dorix
