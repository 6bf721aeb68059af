#include "recogniser/unpack/Unpack.h"

#include "base/Error.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

namespace dorix::recogniser {

namespace {

constexpr std::size_t blockSize = 128UZ * 1024;
constexpr int mostEntries = 10'000;
constexpr std::int64_t mostBytes = 1LL << 30U;  // of everything in the archive, unpacked

[[noreturn]] void fail(const std::string& why) { throw MessageError("archive: " + why); }

struct CloseArchive {
    void operator()(archive* opened) const { archive_read_free(opened); }
};
using Archive = std::unique_ptr<archive, CloseArchive>;

std::string complaintOf(archive* opened) {
    const char* words = archive_error_string(opened);
    return words == nullptr ? "damaged" : words;
}

Archive open(const std::filesystem::path& file) {
    Archive opened(archive_read_new());
    if (!opened) fail("no memory");
    archive_read_support_filter_bzip2(opened.get());
    archive_read_support_format_tar(opened.get());
    if (archive_read_open_filename(opened.get(), file.c_str(), blockSize) != ARCHIVE_OK)
        fail(complaintOf(opened.get()));
    return opened;
}

/// The name of a file that stands in a folder "lib"; empty for any other.
std::string nameInLib(archive_entry* entry) {
    const char* path = archive_entry_pathname(entry);
    const std::string_view whole = path == nullptr ? "" : path;
    const auto slash = whole.rfind('/');
    if (slash == std::string_view::npos) return {};
    const auto folder = whole.substr(0, slash);
    const bool isLib = folder == "lib" || folder.ends_with("/lib");
    return isLib ? std::string(whole.substr(slash + 1)) : std::string();
}

bool isPlainFile(archive_entry* entry) {
    return archive_entry_filetype(entry) == AE_IFREG && archive_entry_hardlink(entry) == nullptr &&
           archive_entry_symlink(entry) == nullptr;
}

/// A file that is made, and was not there.
class NewFile {
 public:
    explicit NewFile(const std::filesystem::path& path)
        : fd_(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600)) {
        if (fd_ < 0) fail(std::generic_category().message(errno));
    }
    ~NewFile() { ::close(fd_); }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void write(std::string_view bytes) const {
        while (!bytes.empty()) {
            const auto written = ::write(fd_, bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) fail(std::generic_category().message(errno));
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }

 private:
    const int fd_;
};

/// Gives how many bytes there were; more than `room` fails.
std::uint64_t copyData(archive* opened, const NewFile& to, std::uint64_t room) {
    std::string block(blockSize, '\0');
    std::uint64_t copied = 0;
    while (true) {
        const auto count = archive_read_data(opened, block.data(), block.size());
        if (count < 0) fail(complaintOf(opened));
        if (count == 0) return copied;
        copied += static_cast<std::uint64_t>(count);
        if (copied > room) fail("too large");
        to.write(std::string_view(block).substr(0, static_cast<std::size_t>(count)));
    }
}

}  // namespace

void unpack(const UnpackOrder& order) {
    const auto opened = open(order.archive);
    std::set<std::string> missing(order.files.begin(), order.files.end());
    std::uint64_t room = order.largest;
    archive_entry* entry = nullptr;
    int result = ARCHIVE_OK;
    for (int entries = 0; (result = archive_read_next_header(opened.get(), &entry)) == ARCHIVE_OK;
         ++entries) {
        if (entries > mostEntries || archive_filter_bytes(opened.get(), 0) > mostBytes) fail("too large");
        const auto name = nameInLib(entry);
        if (std::ranges::find(order.files, name) == order.files.end()) continue;
        if (!isPlainFile(entry)) fail(name + " is no file");
        if (missing.erase(name) == 0) fail(name + " is there twice");
        room -= copyData(opened.get(), NewFile(order.folder / name), room);
    }
    if (result != ARCHIVE_EOF) fail(complaintOf(opened.get()));
    if (!missing.empty()) fail(*missing.begin() + " is missing");
}

}  // namespace dorix::recogniser
