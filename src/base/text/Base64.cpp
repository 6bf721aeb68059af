#include "base/text/Base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace dorix::text {

std::string base64(std::string_view bytes) {
    // In turns, as the library counts in int; a multiple of three needs no padding in between.
    constexpr std::size_t turn = 3UZ * 1024 * 1024;
    std::string encoded;
    encoded.reserve((bytes.size() + 2) / 3 * 4);
    std::vector<unsigned char> room(std::min(bytes.size(), turn) / 3 * 4 + 5);
    while (!bytes.empty()) {
        const auto piece = bytes.substr(0, turn);
        const auto length = EVP_EncodeBlock(room.data(), reinterpret_cast<const unsigned char*>(piece.data()),
                                            static_cast<int>(piece.size()));
        encoded.append(room.begin(), room.begin() + length);
        bytes.remove_prefix(piece.size());
    }
    return encoded;
}

std::optional<std::string> fromBase64(std::string_view text) {
    constexpr std::size_t turn = 4UZ * 1024 * 1024;
    if (text.size() % 4 != 0) return std::nullopt;
    const auto padding = text.size() - std::min(text.find_last_not_of('=') + 1, text.size());
    if (padding > 2) return std::nullopt;
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::vector<unsigned char> room(std::min(text.size(), turn) / 4 * 3 + 1);
    while (!text.empty()) {
        const auto piece = text.substr(0, turn);
        const auto length = EVP_DecodeBlock(room.data(), reinterpret_cast<const unsigned char*>(piece.data()),
                                            static_cast<int>(piece.size()));
        if (length < 0) return std::nullopt;
        bytes.append(room.begin(), room.begin() + length);
        text.remove_prefix(piece.size());
    }
    bytes.resize(bytes.size() - std::min(padding, bytes.size()));
    return bytes;
}

}  // namespace dorix::text
