#include "linux/xdg/AtomicFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

namespace dorix {

namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

std::error_code writeAll(int fd, std::string_view contents) {
    while (!contents.empty()) {
        const auto written = ::write(fd, contents.data(), contents.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return lastError();
        contents.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

/// Hands the pieces on in larger ones.
std::error_code writePieces(int fd, const FileReplacer::Source& source) {
    constexpr std::size_t enough = 64UZ * 1024;
    std::string waiting;
    std::error_code error;
    const bool complete = source([&](std::string_view piece) {
        waiting += piece;
        if (waiting.size() < enough) return true;
        error = writeAll(fd, waiting);
        waiting.clear();
        return !error;
    });
    if (error) return error;
    return complete ? writeAll(fd, waiting) : std::make_error_code(std::errc::operation_canceled);
}

std::error_code writeTemporary(std::string& path, const FileReplacer::Source& source) {
    FileDescriptor file(::mkostemp(path.data(), O_CLOEXEC));  // mode 0600
    if (!file) return lastError();
    auto error = writePieces(file.get(), source);
    if (!error && ::fsync(file.get()) != 0) error = lastError();
    if (const auto closing = file.close(); !error) error = closing;
    if (error) ::unlink(path.c_str());
    return error;
}

/// What is there and no regular file, or nothing is.
std::error_code whyNotRead(const std::filesystem::path& file) {
    struct stat status{};
    if (::stat(file.c_str(), &status) != 0) return lastError();
    if (S_ISREG(status.st_mode)) return {};
    return std::make_error_code(S_ISDIR(status.st_mode) ? std::errc::is_a_directory
                                                        : std::errc::not_supported);
}

void syncFolder(const std::filesystem::path& folder) {
    const FileDescriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd) ::fsync(fd.get());
}

}  // namespace

std::expected<std::string, std::error_code> readFile(const std::filesystem::path& file, std::size_t limit) {
    if (const auto error = whyNotRead(file)) return std::unexpected(error);
    const FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd) return std::unexpected(lastError());
    std::string contents;
    std::array<char, 16384> piece{};
    while (true) {
        const auto count = ::read(fd.get(), piece.data(), piece.size());
        if (count == 0) return contents;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::unexpected(lastError());
        contents.append(piece.data(), static_cast<std::size_t>(count));
        if (contents.size() > limit) return std::unexpected(std::make_error_code(std::errc::file_too_large));
    }
}

std::error_code replaceFile(const std::filesystem::path& file, std::string_view contents) {
    return AtomicFileReplacer().replace(file, [&](const auto& sink) { return sink(contents); });
}

std::error_code AtomicFileReplacer::replace(const std::filesystem::path& file, const Source& source) {
    std::error_code error;
    const auto target = std::filesystem::weakly_canonical(file, error);
    if (error) return error;
    std::filesystem::create_directories(target.parent_path(), error);
    if (error) return error;

    std::string temporary = target.string() + ".XXXXXX";
    error = writeTemporary(temporary, source);
    if (error) return error;
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
        error = lastError();
        ::unlink(temporary.c_str());
        return error;
    }
    syncFolder(target.parent_path());
    return {};
}

FileDescriptor lockFolder(const std::filesystem::path& folder) {
    constexpr std::chrono::milliseconds patience{1000};
    constexpr std::chrono::milliseconds pause{5};
    FileDescriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (lock && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR) &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(pause);
    }
    return lock;
}

}  // namespace dorix
