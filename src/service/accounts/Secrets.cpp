#include "service/accounts/Secrets.h"

#include <openssl/crypto.h>
#include <openssl/rand.h>
#include <openssl/sha.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <vector>

namespace dorix::service {

namespace {

std::string hexOf(std::span<const unsigned char> bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    for (const auto byte : bytes) hex.append({digits[byte >> 4U], digits[byte & 0xFU]});
    return hex;
}

void fillAtRandom(std::span<unsigned char> bytes) {
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
        throw std::runtime_error("the system has no random numbers");
    }
}

}  // namespace

std::string randomHex(std::size_t bytes) {
    std::vector<unsigned char> random(bytes);
    fillAtRandom(random);
    return hexOf(random);
}

std::string randomCode() {
    constexpr std::uint32_t codes = 1'000'000;
    // The largest multiple that fits: what lies above it would make some codes likelier.
    constexpr std::uint32_t fair = UINT32_MAX - UINT32_MAX % codes;
    std::uint32_t number = fair;
    while (number >= fair) {
        std::array<unsigned char, sizeof number> random{};
        fillAtRandom(random);
        std::memcpy(&number, random.data(), random.size());
    }
    const auto digits = std::to_string(number % codes);
    return std::string(6 - digits.size(), '0') + digits;
}

std::string hashOf(std::string_view secret) {
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    SHA256(reinterpret_cast<const unsigned char*>(secret.data()), secret.size(), digest.data());
    return hexOf(digest);
}

bool isSameSecret(std::string_view one, std::string_view other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

}  // namespace dorix::service
