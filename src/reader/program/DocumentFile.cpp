#include "reader/program/DocumentFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace dorix::reader {

namespace {

constexpr off_t sizeLimit = 25'000'000;
// The document of a bundle.
constexpr const char* textOfBundle = "TXT.rtf";

/// Not there, not ours to read, or no file: that is so until somebody changes it.
bool isOfTheDocument(int error) {
    constexpr std::array errors{ENOENT, ENOTDIR, EACCES, EPERM, ELOOP, ENAMETOOLONG, ENXIO};
    return std::ranges::find(errors, error) != errors.end();
}

FileDescriptor opened(int fd) {
    if (fd < 0 && !isOfTheDocument(errno)) throw NotNow(std::generic_category().message(errno));
    return FileDescriptor(fd);
}

/// The place alone, which has no effect on what is there.
FileDescriptor find(int folder, const char* path) {
    return opened(::openat(folder, path, O_PATH | O_NOFOLLOW | O_CLOEXEC));
}

bool isFolder(const FileDescriptor& place) {
    struct stat status{};
    return ::fstat(place.get(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isDocument(const FileDescriptor& place) {
    struct stat status{};
    return ::fstat(place.get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size < sizeLimit;
}

/// What is at that place, and not what has been put there since.
FileDescriptor openForReading(const FileDescriptor& place) {
    const auto path = "/proc/self/fd/" + std::to_string(place.get());
    constexpr int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    // When its user last read it is not for us to change.
    const int fd = ::open(path.c_str(), flags | O_NOATIME);
    if (fd >= 0 || errno != EPERM) return opened(fd);
    return opened(::open(path.c_str(), flags));
}

}  // namespace

FileDescriptor openDocument(const ReadOrder& order) {
    auto place = find(AT_FDCWD, order.file.c_str());
    if (place && order.kind == DocumentKind::bundle && isFolder(place))
        place = find(place.get(), textOfBundle);
    if (!place || !isDocument(place)) return FileDescriptor();
    return openForReading(place);
}

Format formatOf(const FileDescriptor& document, DocumentKind kind) {
    using namespace std::string_view_literals;
    if (kind == DocumentKind::pdf) return Format::pdf;
    if (kind == DocumentKind::plain) return Format::plain;
    constexpr std::array<std::pair<std::string_view, Format>, 3> beginnings{{
        {"PK\x03\x04"sv, Format::zip},
        {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, Format::compound},
        {"{\\rtf"sv, Format::rtf},
    }};
    std::array<char, 8> bytes{};
    const auto count = ::pread(document.get(), bytes.data(), bytes.size(), 0);
    if (count < 0) throw NotNow(std::generic_category().message(errno));
    const std::string_view beginning(bytes.data(), bytes.size());
    const auto* const found =
        std::ranges::find_if(beginnings, [&](const auto& one) { return beginning.starts_with(one.first); });
    return found == beginnings.end() ? Format::unknown : found->second;
}

}  // namespace dorix::reader
