#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

namespace dorix {

/// A file whose bytes can be read as memory, and are read from the disk no sooner than that.
class MappedFile {
 public:
    virtual ~MappedFile() = default;

    virtual std::string_view bytes() const = 0;
};

/// Any thread; what it gives may be used on any. For files of our own only, which are put in place whole and
/// never written to afterwards: a file that becomes shorter while it is mapped ends the program that reads
/// there.
class FileMapper {
 public:
    virtual ~FileMapper() = default;

    /// Null where there is no such file, or nothing in it. Blocks on the disk for a moment.
    virtual std::unique_ptr<MappedFile> map(const std::filesystem::path& file) = 0;
};

/// Where no file can be mapped.
class UnavailableFileMapper final : public FileMapper {
 public:
    std::unique_ptr<MappedFile> map(const std::filesystem::path&) override { return nullptr; }
};

}  // namespace dorix
