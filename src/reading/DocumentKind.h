#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace dorix {

/// How a document is read.
enum class DocumentKind : std::uint8_t {
    pdf = 1,
    rich = 2,    // which format of a word processor it has, its first bytes say
    bundle = 3,  // a folder with such a document in it
    plain = 4,   // nothing but text
};

/// By the extension, in lower case and without its dot; none for what is not read. Any thread.
std::optional<DocumentKind> documentKind(std::string_view extension);

}  // namespace dorix
