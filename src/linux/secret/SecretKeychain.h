#pragma once

#include "base/async/SerialExecutor.h"
#include "linux/secret/SecretService.h"
#include "linux/secret/SecretsFile.h"
#include "platform/Keychain.h"

#include <filesystem>
#include <map>
#include <string>

namespace dorix {

/// Secrets with the session's Secret Service, and in a file of the user's own where that is missing, locked
/// or silent: what is in the file counts, and is handed to the service as soon as that takes it. A service
/// that goes while the program runs does not take away what it has given before. All of it happens on a
/// thread that starts with the first call, so that the main executor never waits for the bus or the disk.
/// Each call takes three seconds at most.
class SecretKeychain final : public Keychain {
 public:
    /// `service` is what the secrets are filed under.
    SecretKeychain(std::string service, std::filesystem::path file);
    /// Waits for what has been begun.
    ~SecretKeychain() override = default;
    SecretKeychain(const SecretKeychain&) = delete;
    SecretKeychain& operator=(const SecretKeychain&) = delete;

    Task<std::optional<std::string>> read(std::string account) override;
    Task<void> remove(std::string account) override;
    Task<void> save(std::string account, std::string value) override;

 private:
    // On the thread:
    std::optional<std::string> find(const std::string& account);
    void keep(const std::string& account, const Json& secret);
    void remember(const std::string& account, const std::optional<std::string>& secret);
    SecretService::Result<void> handOver(const std::string& account, const Json& secret);
    void tell(const std::string& reason);

    SecretService service_;
    SecretsFile file_;
    std::map<std::string, std::string> given_;  // by the service in this run, or to it
    std::string told_;                          // why a secret went to the file, as the log has it
    SerialExecutor thread_;                     // last: it ends before what it works on
};

}  // namespace dorix
