#include "service/ai/Picture.h"

#include <array>
#include <cstddef>

namespace dorix::service {

namespace {

using Bytes = std::string;

constexpr std::uint8_t notInAlphabet = 0xFF;

constexpr auto base64Values = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(notInAlphabet);
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        values[static_cast<unsigned char>(alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}();

/// In the standard alphabet, padded (RFC 4648, chapter 4).
std::optional<Bytes> decodedBase64(std::string_view base64) {
    if (base64.empty() || base64.size() % 4 != 0) return std::nullopt;
    const auto padding = base64.ends_with("==") ? 2U : base64.ends_with('=') ? 1U : 0U;
    Bytes bytes;
    bytes.reserve(base64.size() / 4 * 3);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char c : base64.substr(0, base64.size() - padding)) {
        const auto value = base64Values[static_cast<unsigned char>(c)];
        if (value == notInAlphabet) return std::nullopt;
        bits = (bits << 6U) | value;
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>((bits >> count) & 0xFFU);
    }
    return bytes;
}

std::uint32_t bigEndian(std::string_view bytes) {
    std::uint32_t value = 0;
    for (const char c : bytes) value = (value << 8U) | static_cast<unsigned char>(c);
    return value;
}

/// Whether it begins as a PNG file does and says how large it is.
bool isPng(std::string_view file) {
    using namespace std::string_view_literals;
    constexpr auto head = "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"sv;
    return file.starts_with(head) && file.size() >= head.size() + 8 &&
           bigEndian(file.substr(head.size(), 4)) > 0 && bigEndian(file.substr(head.size() + 4, 4)) > 0;
}

bool isStartOfFrame(unsigned char marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Whether it is a row of JPEG segments up to the one that says how large the picture is.
bool isJpeg(std::string_view file) {
    if (!file.starts_with("\xFF\xD8")) return false;
    std::size_t at = 2;
    while (at + 9 <= file.size() && file[at] == '\xFF') {
        const auto marker = static_cast<unsigned char>(file[at + 1]);
        if (marker == 0xFF) {  // a filler
            ++at;
            continue;
        }
        if (isStartOfFrame(marker)) {
            return bigEndian(file.substr(at + 5, 2)) > 0 && bigEndian(file.substr(at + 7, 2)) > 0;
        }
        const auto length = bigEndian(file.substr(at + 2, 2));
        if (length < 2 || marker == 0xD9 || marker == 0xDA) return false;
        at += 2 + length;
    }
    return false;
}

}  // namespace

std::string Picture::dataUrl() const {
    return (format == Format::jpeg ? "data:image/jpeg;base64," : "data:image/png;base64,") + base64;
}

std::optional<Picture> pictureFromBase64(std::string base64) {
    const auto file = decodedBase64(base64);
    if (!file) return std::nullopt;
    if (isJpeg(*file)) return Picture{.format = Picture::Format::jpeg, .base64 = std::move(base64)};
    if (isPng(*file)) return Picture{.format = Picture::Format::png, .base64 = std::move(base64)};
    return std::nullopt;
}

}  // namespace dorix::service
