#pragma once

#include "base/Error.h"
#include "base/async/Task.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// Nothing came of a document in time: what it lies on may not answer.
class DocumentLate final : public MessageError {
 public:
    using MessageError::MessageError;
};

/// Reads the text of documents. Main executor.
class DocumentReader {
 public:
    virtual ~DocumentReader() = default;

    /// Whether files with this extension, in lower case and without its dot, can be read.
    virtual bool reads(std::string_view extension) const = 0;
    /// The first `limit` characters, read off the main executor; of characters that take more than 16 bytes,
    /// perhaps fewer. Nothing when it cannot be read. Throws Error when that says nothing about the document,
    /// and it is to be tried again some time: what reads it is missing, or, as DocumentLate, its disk does
    /// not answer.
    virtual Task<std::optional<std::string>> text(std::filesystem::path file, std::size_t limit) = 0;
};

/// Where no document can be read.
class NoDocumentReader final : public DocumentReader {
 public:
    bool reads(std::string_view) const override { return false; }
    Task<std::optional<std::string>> text(std::filesystem::path, std::size_t) override {
        co_return std::nullopt;
    }
};

}  // namespace dorix
