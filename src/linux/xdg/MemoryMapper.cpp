#include "linux/xdg/MemoryMapper.h"

#include "linux/loop/FileDescriptor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstddef>

namespace dorix {

namespace {

class Mapping final : public MappedFile {
 public:
    Mapping(void* start, std::size_t size) : start_(start), size_(size) {}
    ~Mapping() override { ::munmap(start_, size_); }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    std::string_view bytes() const override { return {static_cast<const char*>(start_), size_}; }

 private:
    void* const start_;
    const std::size_t size_;
};

}  // namespace

std::unique_ptr<MappedFile> MemoryMapper::map(const std::filesystem::path& file) {
    const FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status{};
    if (!fd || ::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0)
        return nullptr;
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const start = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd.get(), 0);
    if (start == MAP_FAILED) return nullptr;
    // Rows are read here and there; what lies around them is not wanted.
    ::madvise(start, size, MADV_RANDOM);
    return std::make_unique<Mapping>(start, size);
}

}  // namespace dorix
