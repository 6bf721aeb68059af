#include "linux/recent/RecentFileList.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// The desktop's list of recent files, which any program writes to, and titles, which any program makes up.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t limit = 20;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto files = dorix::parseRecentFiles(std::string(input), limit);
    if (files.size() > limit) std::abort();
    for (const auto& file : files) {
        if (!file.is_absolute()) std::abort();
        const auto found = dorix::fileNamedIn(file.filename().string(), files, "/home/ana");
        if (found && found->filename() != file.filename()) std::abort();
    }
    dorix::fileNamedIn(input, files, "/home/ana");
    return 0;
}
