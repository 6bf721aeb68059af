#pragma once

#include "recogniser/Engine.h"

#include <optional>

namespace dorix::recogniser {

/// What went wrong between us and a transcription server. Its words name neither the address nor the key.
class ServerFailure final : public Refusal {
 public:
    enum class Kind {
        badAddress,  // no web address
        keyInClear,  // a key is sent over TLS alone, but to this computer
        unreachable,
        untrusted,  // its certificate
        timedOut,
        badKey,
        unknownCall,  // or an unknown model
        tooLong,
        tooMany,
        refused,
        serverError,
        badAnswer,
    };

    explicit ServerFailure(Kind kind);

    /// That of an answer's HTTP status; none when it is a success.
    static std::optional<Kind> kindOfStatus(long status);

    Kind kind() const { return kind_; }
    /// Whether it may go well a moment later.
    bool isPassing() const;

 private:
    Kind kind_;
};

}  // namespace dorix::recogniser
