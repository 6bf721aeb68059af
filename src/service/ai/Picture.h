#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace dorix::service {

/// A picture as it came and as it goes on to a model: in base64 without line breaks.
struct Picture {
    enum class Format : std::uint8_t { jpeg, png };

    Format format = Format::jpeg;
    std::string base64;

    /// As an address that holds its own content (RFC 2397).
    std::string dataUrl() const;

    bool operator==(const Picture&) const = default;
};

/// A picture of base64 that holds a JPEG or PNG file with a size; nothing for anything else. Only the head of
/// the file is looked at: its pixels are the model's business. Pure; any thread.
std::optional<Picture> pictureFromBase64(std::string base64);

}  // namespace dorix::service
