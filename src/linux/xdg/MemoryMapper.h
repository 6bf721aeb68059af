#pragma once

#include "platform/FileMapper.h"

namespace dorix {

/// Maps files for reading alone; the pages are private, and the kernel may take them back at any time.
class MemoryMapper final : public FileMapper {
 public:
    std::unique_ptr<MappedFile> map(const std::filesystem::path& file) override;
};

}  // namespace dorix
