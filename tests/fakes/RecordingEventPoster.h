#pragma once

#include "platform/InputEvents.h"

#include <functional>
#include <vector>

namespace dorix {

/// Keeps what is posted; `onPost` plays the application that gets it.
class RecordingEventPoster final : public EventPoster {
 public:
    struct Posted {
        std::uint16_t keyCode = 0;
        Direction direction = Direction::down;
        std::uint64_t flags = 0;
        bool operator==(const Posted&) const = default;
    };

    std::vector<Posted> posted;
    std::function<void(const Posted&)> onPost;

    void postKeyboardEvent(std::uint16_t keyCode, Direction direction, std::uint64_t flags) override {
        posted.push_back({keyCode, direction, flags});
        if (onPost) onPost(posted.back());
    }
};

}  // namespace dorix
