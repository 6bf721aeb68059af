#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What the program and its recogniser tell each other, over a stream of bytes: docs/recogniser-protocol.md.
struct Frame {
    enum class Kind : std::uint8_t {
        // From the program:
        open = 1,    // the model to load, a ModelRequest; once, first of all
        unpack = 6,  // in its place, an UnpackOrder; nothing else is asked then
        begin = 2,   // an utterance begins
        audio = 3,   // more of its sound
        finish = 4,  // that was all of its sound
        drop = 5,    // its words are not wanted
        // From the recogniser:
        ready = 65,     // the model is loaded
        refused = 66,   // it cannot be, and why; trying again is of no use
        heard = 67,     // how much of the utterance's sound has been worked on
        partial = 68,   // what is understood since the last final text; replaces the partial before
        final = 69,     // text that stands
        done = 70,      // the last word of the utterance is told
        unpacked = 71,  // the files are there; an archive that is none is refused
    };

    Kind kind = Kind::open;
    std::string body;

    bool operator==(const Frame&) const = default;
};

/// The bytes of a frame.
std::string encoded(const Frame& frame);
/// Those of Frame::Kind::audio, 32-bit floating-point samples.
std::string encodedAudio(std::span<const float> samples);
/// The samples of such a frame's body; none when they are not whole.
std::optional<std::vector<float>> samplesIn(std::string_view body);

/// A count of samples as the body of Frame::Kind::heard; none when the body is not one.
std::string encodedCount(std::uint64_t count);
std::optional<std::uint64_t> countIn(std::string_view body);

/// Cuts a stream of bytes into frames. The other side may send anything.
class FrameReader {
 public:
    /// Of the text of a long dictation, and of the sound that is sent at once, a frame needs much less.
    static constexpr std::size_t largestBody = 1UZ << 20U;

    void take(std::string_view bytes);

    /// The next whole frame.
    std::optional<Frame> next();

    /// Whether something came that is no frame; nothing can be read any more then.
    bool isBroken() const { return isBroken_; }

 private:
    std::string bytes_;
    std::size_t begin_ = 0;  // of what has not been read
    bool isBroken_ = false;
};

}  // namespace dorix
