#pragma once

#include <cstdint>

namespace dorix {

/// Sends key events into the system as if typed, to whatever has the focus. Main executor; does not wait for
/// the events to arrive.
class EventPoster {
 public:
    enum class Direction { down, up };

    virtual ~EventPoster() = default;

    /// One key event with these modifier flags. For the command flag the adapter presses what the application
    /// in front takes for its command chord (Ctrl, or Ctrl and Shift in a terminal). Modifiers that the user
    /// holds at that moment do not mix into it.
    virtual void postKeyboardEvent(std::uint16_t keyCode, Direction direction, std::uint64_t flags) = 0;
};

/// Events go nowhere.
class UnavailableEventPoster final : public EventPoster {
 public:
    void postKeyboardEvent(std::uint16_t, Direction, std::uint64_t) override {}
};

}  // namespace dorix
