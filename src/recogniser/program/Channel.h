#pragma once

#include "recognition/Frames.h"

#include <deque>
#include <optional>

namespace dorix::recogniser {

/// The stream to and from the program. One thread. Its end is this process's: where the program is gone or
/// says what is no frame, nothing returns.
class Channel {
 public:
    /// Does not own the descriptor.
    explicit Channel(int fd) : fd_(fd) {}

    /// Waits for the next frame.
    Frame next();

    /// Whether the program has dropped an utterance, by what has come of its frames until now. Those before
    /// are let go of then.
    bool isDropped();

    /// Waits until it is sent.
    void send(const Frame& frame);

 private:
    enum class Wait { no, yes };

    /// Takes in what has come, and waits for something to come.
    void receive(Wait wait);

    const int fd_;
    FrameReader reader_;
    std::deque<Frame> inbox_;
};

}  // namespace dorix::recogniser
