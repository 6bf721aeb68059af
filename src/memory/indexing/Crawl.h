#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <vector>

namespace dorix {

/// What a crawl heeds beside its own rules; both may be null.
struct CrawlWatch {
    /// Whether nothing in a folder is to be touched.
    std::function<bool(const std::filesystem::path&)> isLeftOut;
    /// Asked at every entry; when it says no the crawl ends with what it has.
    std::function<bool()> goesOn;
};

/// The files below a folder that may be indexed: regular, not hidden, smaller than 25 MB, of a kind that can
/// be read, and none that is likely to hold a secret; 5,000 at most. What cannot be looked at is left out.
/// Links are not followed. Blocks on the disk; any thread.
std::vector<std::filesystem::path> crawl(const std::filesystem::path& folder, const CrawlWatch& watch = {});

/// How many files of a folder are found at most.
inline constexpr std::size_t mostFilesOfFolder = 5000;

}  // namespace dorix
