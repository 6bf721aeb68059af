#include "reader/archive/ZipParts.h"

#include "base/Error.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cstddef>
#include <memory>

namespace dorix::reader {

namespace {

constexpr std::size_t blockSize = 64UZ * 1024;
constexpr int mostEntries = 10'000;
constexpr std::uint64_t mostBytes = 64ULL << 20U;
// XML is packed to a tenth, much of the same to a hundredth; what little there is may be all the same.
constexpr std::uint64_t largestRatio = 300;
constexpr std::uint64_t alwaysAllowed = 4ULL << 20U;

[[noreturn]] void fail(const std::string& why) { throw MessageError("archive: " + why); }

struct CloseArchive {
    void operator()(archive* opened) const { archive_read_free(opened); }
};
using Archive = std::unique_ptr<archive, CloseArchive>;

Archive open(int fd) {
    Archive opened(archive_read_new());
    if (!opened) fail("no memory");
    archive_read_support_format_zip_seekable(opened.get());
    if (archive_read_open_fd(opened.get(), fd, blockSize) != ARCHIVE_OK) fail("damaged");
    return opened;
}

/// What the entry holds, `room` bytes at most.
std::string bytesOf(archive* opened, std::uint64_t room) {
    std::string bytes;
    std::string block(blockSize, '\0');
    while (true) {
        const auto count = archive_read_data(opened, block.data(), block.size());
        if (count < 0) fail("damaged");
        if (count == 0) return bytes;
        bytes.append(block, 0, static_cast<std::size_t>(count));
        if (bytes.size() > room) fail("too large");
    }
}

}  // namespace

std::map<std::string, std::string> zipParts(int fd, std::uint64_t size,
                                            const std::function<bool(std::string_view)>& isWanted) {
    const auto opened = open(fd);
    std::map<std::string, std::string> parts;
    std::uint64_t room = std::min(mostBytes, alwaysAllowed + largestRatio * size);
    archive_entry* entry = nullptr;
    int entries = 0;
    int result = ARCHIVE_OK;
    // It warns of names that this process has no letters for.
    while ((result = archive_read_next_header(opened.get(), &entry)) == ARCHIVE_OK ||
           result == ARCHIVE_WARN) {
        if (++entries > mostEntries) fail("too large");
        const char* const path = archive_entry_pathname(entry);
        if (path == nullptr || parts.contains(path) || !isWanted(path)) continue;
        auto bytes = bytesOf(opened.get(), room);
        room -= bytes.size();
        parts.emplace(path, std::move(bytes));
    }
    if (result != ARCHIVE_EOF) fail("damaged");
    return parts;
}

}  // namespace dorix::reader
