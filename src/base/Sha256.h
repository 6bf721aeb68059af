#pragma once

#include <expected>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

struct evp_md_ctx_st;

namespace dorix {

/// The SHA-256 of bytes that come one after the other. One thread at a time. Throws std::bad_alloc only.
class Sha256 {
 public:
    Sha256();

    void update(std::string_view bytes);

    /// Of all bytes so far, in lower-case hex; more may come.
    std::string hex() const;

 private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Free> context_;
};

/// Of a whole file, in hex. Blocks on the disk.
std::expected<std::string, std::error_code> sha256OfFile(const std::filesystem::path& file);

}  // namespace dorix
