#include "memory/embedding/CharacterMap.h"

#include "base/text/Pieces.h"
#include "memory/embedding/CodePoints.h"

#include <cstring>

namespace dorix {

namespace {

constexpr std::size_t wholeCharacter = 6;  // bytes from which a character is taken apart
constexpr std::size_t longestText = 64;    // bytes in place of a character; Unicode's longest has 33

// What a unit of a double array says (Darts-clone, "darts.h").
bool hasLeaf(std::uint32_t unit) { return ((unit >> 8U) & 1U) == 1; }
std::uint32_t value(std::uint32_t unit) { return unit & 0x7FFF'FFFFU; }
std::uint32_t label(std::uint32_t unit) { return unit & 0x8000'00FFU; }
std::uint32_t offset(std::uint32_t unit) { return (unit >> 10U) << ((unit & (1U << 9U)) >> 6U); }

}  // namespace

std::expected<CharacterMap, std::string> CharacterMap::parse(std::string_view bytes) {
    std::uint32_t size = 0;
    if (bytes.size() < sizeof(size)) return std::unexpected("no character map");
    std::memcpy(&size, bytes.data(), sizeof(size));
    bytes.remove_prefix(sizeof(size));
    if (size == 0 || size % sizeof(std::uint32_t) != 0 || size > bytes.size())
        return std::unexpected("a character map that is cut off");
    CharacterMap map;
    map.units_.resize(size / sizeof(std::uint32_t));
    std::memcpy(map.units_.data(), bytes.data(), size);
    map.texts_ = bytes.substr(size);
    return map;
}

std::optional<std::string_view> CharacterMap::replacement(std::string_view key) const {
    auto node = offset(units_[0]);
    for (const char c : key) {
        const auto byte = static_cast<unsigned char>(c);
        node ^= byte;
        if (byte == 0 || node >= units_.size() || label(units_[node]) != byte) return std::nullopt;
        const auto unit = units_[node];
        node ^= offset(unit);
        if (!hasLeaf(unit)) continue;
        if (node >= units_.size() || value(units_[node]) > texts_.size()) return std::nullopt;
        const auto rest = std::string_view(texts_).substr(value(units_[node]));
        const auto text = rest.substr(0, rest.find('\0'));
        return text.size() > longestText ? std::nullopt : std::optional(text);
    }
    return std::nullopt;
}

std::string CharacterMap::normalised(std::string_view text) const {
    std::string result;
    result.reserve(text.size());
    const auto bounds = text::characterBounds(text);
    for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
        auto character = text.substr(bounds[i], bounds[i + 1] - bounds[i]);
        if (character.size() < wholeCharacter) {
            if (const auto whole = replacement(character)) {
                result += *whole;
                continue;
            }
        }
        while (!character.empty()) {
            const auto point = character.substr(0, codePointLength(character));
            result += replacement(point).value_or(point);
            character.remove_prefix(point.size());
        }
    }
    return result;
}

}  // namespace dorix
