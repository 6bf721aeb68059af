#include "base/Sha256.h"

#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <fstream>
#include <new>
#include <vector>

namespace dorix {

namespace {
constexpr std::size_t pieceSize = 256UZ * 1024;  // bytes read at once
}  // namespace

void Sha256::Free::operator()(evp_md_ctx_st* context) const { EVP_MD_CTX_free(context); }

Sha256::Sha256() : context_(EVP_MD_CTX_new()) {
    if (!context_ || EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1) throw std::bad_alloc();
}

void Sha256::update(std::string_view bytes) {
    if (EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) != 1) throw std::bad_alloc();
}

std::string Sha256::hex() const {
    const std::unique_ptr<EVP_MD_CTX, Free> copy(EVP_MD_CTX_new());
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    if (!copy || EVP_MD_CTX_copy_ex(copy.get(), context_.get()) != 1 ||
        EVP_DigestFinal_ex(copy.get(), digest.data(), &size) != 1) {
        throw std::bad_alloc();
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    for (unsigned int i = 0; i < size; ++i) hex.append({digits[digest[i] >> 4U], digits[digest[i] & 0xFU]});
    return hex;
}

std::expected<std::string, std::error_code> sha256OfFile(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return std::unexpected(error ? error : std::make_error_code(std::errc::not_supported));
    }
    std::ifstream stream(file, std::ios::binary);
    Sha256 sum;
    std::vector<char> piece(pieceSize);
    while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())) || stream.gcount() > 0) {
        sum.update({piece.data(), static_cast<std::size_t>(stream.gcount())});
    }
    if (!stream.eof()) return std::unexpected(std::make_error_code(std::errc::io_error));
    return sum.hex();
}

}  // namespace dorix
