#include "linux/x11/SelectionContents.h"

#include <algorithm>

namespace dorix {

namespace {
constexpr char separator = '\t';
}

void SelectionContents::put(xcb_atom_t target, SelectionData data) {
    auto shared = std::make_shared<const SelectionData>(std::move(data));
    const auto known = std::ranges::find(entries_, target, &Entry::first);
    if (known == entries_.end()) {
        entries_.emplace_back(target, std::move(shared));
    } else {
        known->second = std::move(shared);
    }
}

std::shared_ptr<const SelectionData> SelectionContents::find(xcb_atom_t target) const {
    const auto known = std::ranges::find(entries_, target, &Entry::first);
    return known == entries_.end() ? nullptr : known->second;
}

std::string pasteboardType(const TargetName& name) {
    if (name.type == name.target && name.format == 8) return name.target;
    return name.target + separator + name.type + separator + std::to_string(name.format);
}

TargetName parsePasteboardType(std::string_view type) {
    const auto formatAt = type.rfind(separator);
    const auto typeAt = formatAt == std::string_view::npos || formatAt == 0
                            ? std::string_view::npos
                            : type.rfind(separator, formatAt - 1);
    const auto plain = TargetName{std::string(type), std::string(type), 8};
    if (typeAt == std::string_view::npos) return plain;
    const auto format = type.substr(formatAt + 1);
    if (format != "8" && format != "16" && format != "32") return plain;
    const int bits = format == "8" ? 8 : format == "16" ? 16 : 32;
    return {std::string(type.substr(0, typeAt)), std::string(type.substr(typeAt + 1, formatAt - typeAt - 1)),
            static_cast<std::uint8_t>(bits)};
}

std::optional<std::string> latin1FromUtf8(std::string_view text) {
    std::string latin1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x80) {
            latin1 += text[i];
            continue;
        }
        // U+0080 to U+00FF are the two-byte sequences that begin with C2 and C3.
        const bool fits = (byte == 0xC2 || byte == 0xC3) && i + 1 < text.size();
        const auto next = fits ? static_cast<unsigned char>(text[++i]) : 0U;
        if ((next & 0xC0U) != 0x80U) return std::nullopt;
        latin1 += static_cast<char>((byte & 0x03U) << 6U | (next & 0x3FU));
    }
    return latin1;
}

std::string utf8FromLatin1(std::string_view text) {
    std::string utf8;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            utf8 += c;
        } else {
            utf8 += static_cast<char>(0xC0U | byte >> 6U);
            utf8 += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return utf8;
}

}  // namespace dorix
