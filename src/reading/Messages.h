#pragma once

#include "reading/DocumentKind.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What the program and its reader tell each other over a stream of bytes, one answer for each order, in
/// turn. Both are of one build and one computer.
struct ReadOrder {
    std::filesystem::path file;  // any bytes but NUL
    DocumentKind kind = DocumentKind::plain;
    std::size_t limit = 0;  // characters
    bool isIdle = false;    // only with what the processor and the disk have to spare

    bool operator==(const ReadOrder&) const = default;
};

/// Likewise, but for the text in a picture.
struct PictureOrder {
    std::string picture;                 // a JPEG of longestPicture bytes at most
    std::vector<std::string> languages;  // of the text ("es-ES", "en"), the likeliest first
    std::size_t limit = 0;               // characters

    bool operator==(const PictureOrder&) const = default;
};

inline constexpr std::size_t longestPicture = 16UZ << 20U;  // bytes

struct ReadAnswer {
    enum class Outcome : std::uint8_t {
        text = 1,
        noText = 2,      // this document has none that can be read
        unreadable = 3,  // why it was not read says nothing about the document
        late = 4,        // likewise: nothing came of it in time
    };

    Outcome outcome = Outcome::noText;
    std::string words;  // the text in UTF-8, or for the log why it was not read

    bool operator==(const ReadAnswer&) const = default;
};

/// Of a text no more than this many bytes are taken for `limit` characters.
constexpr std::size_t mostBytes(std::size_t limit) {
    constexpr std::size_t most = 32UZ << 20U;
    return limit > most / 16 ? most : 16 * limit;
}

/// A message's bytes.
std::string encoded(const ReadOrder& order);
std::string encoded(const PictureOrder& order);
std::string encoded(const ReadAnswer& answer);
/// None when the message's body is none.
std::optional<ReadOrder> readOrderIn(std::string_view body);
std::optional<PictureOrder> pictureOrderIn(std::string_view body);
std::optional<ReadAnswer> readAnswerIn(std::string_view body);

/// Cuts a stream of bytes into the bodies of messages. The other side may send anything.
class MessageReader {
 public:
    /// Longer ones are none.
    explicit MessageReader(std::size_t longestBody) : longestBody_(longestBody) {}

    void take(std::string_view bytes) { bytes_.append(bytes); }

    /// The next whole message.
    std::optional<std::string> next();

    /// Whether something came that is no message; nothing can be read any more then.
    bool isBroken() const { return isBroken_; }

 private:
    const std::size_t longestBody_;
    std::string bytes_;
    bool isBroken_ = false;
};

}  // namespace dorix
