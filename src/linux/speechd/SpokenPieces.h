#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// Cuts a text into pieces that a speech server takes one after the other, of some hundred bytes: a line, or
/// some sentences of a long one. They are one line each, with none of the control characters by which voices
/// are commanded.
class SpokenPieces {
 public:
    /// `text` outlives it.
    explicit SpokenPieces(std::string_view text) : rest_(text) {}

    /// Nothing at the end.
    std::optional<std::string> next();

 private:
    std::string_view rest_;
};

}  // namespace dorix
