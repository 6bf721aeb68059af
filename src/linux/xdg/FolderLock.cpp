#include "linux/xdg/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace dorix {

namespace {
constexpr std::chrono::milliseconds patience{1000};
constexpr std::chrono::milliseconds pause{5};
}  // namespace

FolderLock::FolderLock(const std::filesystem::path& folder)
    : fd_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (fd_ < 0) return;
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (::flock(fd_, LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR) &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(pause);
    }
}

FolderLock::~FolderLock() {
    if (fd_ >= 0) ::close(fd_);
}

}  // namespace dorix
