#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace dorix {

/// Owns an open file descriptor, or none.
class FileDescriptor {
 public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~FileDescriptor() {
        if (fd_ >= 0) ::close(fd_);
    }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

    /// For files that were written: closing can report a write that failed late.
    std::error_code close() {
        if (::close(std::exchange(fd_, -1)) == 0) return {};
        return {errno, std::generic_category()};
    }

 private:
    int fd_;
};

}  // namespace dorix
