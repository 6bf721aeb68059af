#pragma once

#include "base/Error.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace dorix {

/// Why a call of the cloud service gave no result.
class APIError final : public Error {
 public:
    enum class Kind : std::uint8_t {
        limited,      // refused for a usage limit
        server,       // refused for any other reason
        notLoggedIn,  // no session, or one that the service does not know any more
        offline,      // no answer at all
    };

    static APIError limited(std::string message) { return {Kind::limited, std::move(message)}; }
    static APIError server(std::string message) { return {Kind::server, std::move(message)}; }
    /// `limited` or `server` with no words of the service: its status tells.
    static APIError unexplained(Kind kind, int status) { return {kind, {}, status}; }
    static APIError notLoggedIn() { return {Kind::notLoggedIn, {}}; }
    static APIError offline() { return {Kind::offline, {}}; }

    Kind kind() const { return kind_; }
    std::string localizedDescription() const override;

    bool operator==(const APIError& other) const {
        return kind_ == other.kind_ && message_ == other.message_ && status_ == other.status_;
    }

 private:
    APIError(Kind kind, std::string message, std::optional<int> status = std::nullopt)
        : kind_(kind), message_(std::move(message)), status_(status) {}

    Kind kind_;
    std::string message_;        // the service's own, in the language that it was asked in, or one of ours
    std::optional<int> status_;  // where there is no message
};

/// The service answered with something else than what was asked for. The words hold nothing of the answer,
/// which may be secret.
class DecodingError final : public Error {
 public:
    std::string localizedDescription() const override;
};

}  // namespace dorix
