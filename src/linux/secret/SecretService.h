#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace dorix {

/// What programs of the session keep secrets with (org.freedesktop.secrets), asked through libsecret. Nobody
/// is asked to unlock anything. Every call blocks for some seconds at most; a service that could not be
/// reached or did not answer is left alone for a minute. The errors say, for the log, why it is of no use
/// now. One thread, always the same.
class SecretService {
 public:
    template <typename T>
    using Result = std::expected<T, std::string>;

    /// `service` is what our secrets are filed under, beside their accounts.
    explicit SecretService(std::string service);
    ~SecretService();
    SecretService(const SecretService&) = delete;
    SecretService& operator=(const SecretService&) = delete;

    /// Nothing when there is none.
    Result<std::optional<std::string>> read(const std::string& account);
    Result<void> save(const std::string& account, const std::string& value);
    Result<void> remove(const std::string& account);

    /// Whether there was none at the last call, rather than one that is locked or does not answer.
    bool isAbsent() const { return isAbsent_; }

 private:
    struct Connection;
    class Call;

    Result<void> run(const std::function<void(Call&)>& work);
    void connect(Call& call);

    const std::string service_;
    std::unique_ptr<Connection> connection_;  // made when it is needed
    double restsUntil_ = 0;                   // by the steady clock
    std::string whyItRests_;
    bool isAbsent_ = false;
};

}  // namespace dorix
