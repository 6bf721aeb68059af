#include "recognition/Frames.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace dorix {

namespace {

// Both sides run on one computer, from one build.
static_assert(std::endian::native == std::endian::little);

using Length = std::uint32_t;
constexpr std::size_t headSize = sizeof(Length) + sizeof(Frame::Kind);

constexpr std::array kinds{
    Frame::Kind::open,    Frame::Kind::begin,    Frame::Kind::audio, Frame::Kind::finish,  Frame::Kind::drop,
    Frame::Kind::unpack,  Frame::Kind::unpacked, Frame::Kind::ready, Frame::Kind::refused, Frame::Kind::heard,
    Frame::Kind::partial, Frame::Kind::final,    Frame::Kind::done};

template <typename T>
T valueIn(std::string_view bytes) {
    T value{};
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

template <typename T>
void append(std::string& bytes, const T& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string head(Frame::Kind kind, std::size_t bodySize) {
    std::string bytes;
    bytes.reserve(headSize + bodySize);
    append(bytes, static_cast<Length>(bodySize));
    append(bytes, kind);
    return bytes;
}

}  // namespace

std::string encoded(const Frame& frame) { return head(frame.kind, frame.body.size()) + frame.body; }

std::string encodedAudio(std::span<const float> samples) {
    auto bytes = head(Frame::Kind::audio, samples.size_bytes());
    bytes.append(reinterpret_cast<const char*>(samples.data()), samples.size_bytes());
    return bytes;
}

std::optional<std::vector<float>> samplesIn(std::string_view body) {
    if (body.size() % sizeof(float) != 0) return std::nullopt;
    std::vector<float> samples(body.size() / sizeof(float));
    if (!samples.empty()) std::memcpy(samples.data(), body.data(), body.size());
    return samples;
}

std::string encodedCount(std::uint64_t count) {
    std::string body;
    append(body, count);
    return body;
}

std::optional<std::uint64_t> countIn(std::string_view body) {
    if (body.size() != sizeof(std::uint64_t)) return std::nullopt;
    return valueIn<std::uint64_t>(body);
}

void FrameReader::take(std::string_view bytes) {
    if (isBroken_) return;
    bytes_.erase(0, begin_);
    begin_ = 0;
    bytes_.append(bytes);
}

std::optional<Frame> FrameReader::next() {
    const auto rest = std::string_view(bytes_).substr(begin_);
    if (isBroken_ || rest.size() < headSize) return std::nullopt;
    const auto length = valueIn<Length>(rest);
    const auto kind = valueIn<Frame::Kind>(rest.substr(sizeof(Length)));
    isBroken_ = length > largestBody || std::ranges::find(kinds, kind) == kinds.end();
    if (isBroken_ || rest.size() < headSize + length) return std::nullopt;
    begin_ += headSize + length;
    return Frame{kind, std::string(rest.substr(headSize, length))};
}

}  // namespace dorix
