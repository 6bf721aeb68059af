#include "linux/curl/DownloadFile.h"

#include "platform/HttpClient.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace dorix {

namespace {
[[noreturn]] void failed(int error) {
    throw HttpError(HttpError::Kind::disk, std::generic_category().message(error));
}
}  // namespace

DownloadFile::DownloadFile(const std::filesystem::path& file, std::uint64_t start)
    : fd_(::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600)) {
    struct stat status{};
    if (!fd_ || ::fstat(fd_.get(), &status) != 0) failed(errno);
    if (!S_ISREG(status.st_mode)) failed(EINVAL);
    // A hole would stand for bytes that never came.
    if (static_cast<std::uint64_t>(status.st_size) < start) failed(ESPIPE);
    if (::ftruncate(fd_.get(), static_cast<off_t>(start)) != 0) failed(errno);
    if (::lseek(fd_.get(), 0, SEEK_END) < 0) failed(errno);
}

void DownloadFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(fd_.get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) failed(errno);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void DownloadFile::sync() {
    if (::fsync(fd_.get()) != 0) failed(errno);
}

}  // namespace dorix
