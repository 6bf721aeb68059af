#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <vector>

namespace dorix {

/// The files below a folder that may be indexed: regular, not hidden, smaller than 25 MB, of a kind that can be
/// read, and none that is likely to hold a secret; 5,000 at most. What cannot be looked at is left out. Links
/// are not followed. `isLeftOut` says of a folder that nothing below it is to be touched. Blocks on the disk;
/// any thread.
std::vector<std::filesystem::path> crawl(
    const std::filesystem::path& folder,
    const std::function<bool(const std::filesystem::path&)>& isLeftOut = nullptr);

}  // namespace dorix
