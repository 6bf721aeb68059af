#pragma once

#include "base/async/Completion.h"

#include <memory>
#include <optional>
#include <utility>

namespace dorix {

/// Lets tasks use something one at a time, in the order in which they ask. A task that is destroyed while it
/// waits lets the next one in early. Executor's thread only.
class Turns {
 public:
    /// Held for as long as it is one's turn.
    class Turn {
     public:
        explicit Turn(Completion<void> ended) : ended_(std::move(ended)) {}
        ~Turn() { ended_.complete(); }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

     private:
        const Completion<void> ended_;
    };

    /// Waits for all who asked before; a stop request does not cut that short.
    Task<std::unique_ptr<Turn>> next() {
        const auto before = std::exchange(last_, Completion<void>());
        auto turn = std::make_unique<Turn>(*last_);
        if (before) co_await before->throughStop();
        co_return turn;
    }

 private:
    std::optional<Completion<void>> last_;
};

}  // namespace dorix
