#pragma once

#include "base/async/Task.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// Reads the text of documents. Main executor.
class DocumentReader {
 public:
    virtual ~DocumentReader() = default;

    /// Whether files with this extension, in lower case and without its dot, can be read.
    virtual bool reads(std::string_view extension) const = 0;
    /// The first `limit` characters, read off the main executor. Nothing when it cannot be read.
    virtual Task<std::optional<std::string>> text(std::filesystem::path file, std::size_t limit) = 0;
};

}  // namespace dorix
