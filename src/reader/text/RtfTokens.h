#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace dorix::reader {

/// A piece of RTF.
struct RtfToken {
    enum class Kind {
        open,    // a group begins
        close,   // and ends
        word,    // a control word: `text` is its name
        symbol,  // one that is no letter: `text` is that
        byte,    // \'hh: `number` is the byte
        text,    // text as it stands, no line ends in it
        binary,  // bytes that mean nothing here
    };

    Kind kind = Kind::text;
    std::string_view text;
    std::optional<int> number;  // of a word, where it has one
};

/// Cuts RTF, or anything at all, into tokens. They point into the bytes.
class RtfTokens {
 public:
    explicit RtfTokens(std::string_view rtf) : rest_(rtf) {}

    /// None at the end.
    std::optional<RtfToken> next();

 private:
    RtfToken control();
    RtfToken word();
    RtfToken hexadecimal();
    RtfToken text();
    std::string_view take(std::size_t count);

    std::string_view rest_;
};

}  // namespace dorix::reader
