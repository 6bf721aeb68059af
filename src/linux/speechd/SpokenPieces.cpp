#include "linux/speechd/SpokenPieces.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace dorix {

namespace {

constexpr std::size_t longest = 400;  // bytes

bool isInsideCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Where a line that is too long is best cut: behind a sentence, between two words, or anywhere.
std::size_t cutOf(std::string_view line) {
    const auto head = line.substr(0, longest);
    std::size_t sentence = 0;
    for (const std::string_view end : {". ", "! ", "? ", "… ", ": ", "; "}) {
        const auto found = head.rfind(end);
        if (found != std::string_view::npos) sentence = std::max(sentence, found + end.size());
    }
    if (sentence > 0) return sentence;
    const auto blank = head.rfind(' ');
    if (blank != std::string_view::npos && blank > 0) return blank + 1;
    std::size_t cut = longest;
    while (cut > longest / 2 && isInsideCharacter(line[cut])) --cut;
    return cut;
}

std::string withoutCommands(std::string_view piece) {
    static const Regex controls(R"([\p{Cc}\p{Zl}\p{Zp}])");
    return controls.replaceAll(piece, " ");
}

}  // namespace

std::optional<std::string> SpokenPieces::next() {
    while (!rest_.empty()) {
        const auto line = rest_.substr(0, rest_.find_first_of("\r\n"));
        const auto size = line.size() > longest ? cutOf(line) : line.size();
        auto piece = withoutCommands(line.substr(0, size));
        rest_.remove_prefix(size == line.size() ? std::min(size + 1, rest_.size()) : size);
        if (!text::trim(piece).empty()) return piece;
    }
    return std::nullopt;
}

}  // namespace dorix
