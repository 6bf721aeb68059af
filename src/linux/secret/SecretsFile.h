#pragma once

#include "base/Json.h"

#include <filesystem>
#include <optional>
#include <string>

namespace dorix {

/// What the Secret Service does not know yet, in a file that only the user can read: secrets to be kept
/// there, and accounts whose secret is to be removed there. Replaced as a whole, so that a crash leaves the
/// one or the other. Blocks on the disk. A damaged file is set aside and counts as empty; one that cannot be
/// read now says nothing and is not replaced. That, and one that cannot be written, is a line in the log.
/// One thread.
class SecretsFile {
 public:
    explicit SecretsFile(std::filesystem::path file) : file_(std::move(file)) {}

    /// A string or, for a secret that is to be removed, null; nothing where the service has the last word.
    std::optional<Json> pending(const std::string& account) const;
    void set(const std::string& account, const Json& secret);
    void drop(const std::string& account);

 private:
    std::optional<Json> read() const;
    bool setAside() const;
    void write(const Json& all) const;

    const std::filesystem::path file_;
};

}  // namespace dorix
