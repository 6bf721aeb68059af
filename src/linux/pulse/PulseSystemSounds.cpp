#include "linux/pulse/PulseSystemSounds.h"

#include "linux/pulse/PulseConnection.h"
#include "linux/pulse/embedded/popSound.h"
#include "linux/pulse/embedded/tinkSound.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace dorix {

namespace {

constexpr pa_sample_spec spec{.format = PA_SAMPLE_S16LE, .rate = 44'100, .channels = 1};
constexpr std::size_t headerSize = 44;  // of a wave file of this format
constexpr std::uint32_t latency = 30;   // milliseconds

std::span<const unsigned char> soundFile(std::string_view name) {
    if (name == "Tink") return embedded::tinkSound;
    if (name == "Pop") return embedded::popSound;
    return {};
}

/// The samples, scaled here: a stream's own volume may move the volume of the whole device.
std::vector<std::uint8_t> samplesAt(double volume, std::span<const unsigned char> file) {
    std::vector<std::uint8_t> result;
    if (file.size() <= headerSize) return result;
    const auto samples = file.subspan(headerSize);
    result.reserve(samples.size());
    for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
        const auto sample = static_cast<std::int16_t>(samples[i] | samples[i + 1] << 8);
        const auto scaled = static_cast<std::uint16_t>(std::lround(sample * std::clamp(volume, 0.0, 1.0)));
        result.push_back(static_cast<std::uint8_t>(scaled & 0xFFU));
        result.push_back(static_cast<std::uint8_t>(scaled >> 8U));
    }
    return result;
}

}  // namespace

/// A sound on its way to the server. Made and destroyed under the connection's lock.
class PulseSystemSounds::Playback {
 public:
    Playback(pa_context* context, const std::string& name, std::vector<std::uint8_t> samples)
        : samples_(std::move(samples)) {
        const std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> properties(pa_proplist_new(),
                                                                                   pa_proplist_free);
        pa_proplist_sets(properties.get(), PA_PROP_MEDIA_ROLE, "event");
        stream_ = pa_stream_new_with_proplist(context, name.c_str(), &spec, nullptr, properties.get());
        if (!stream_) return;
        pa_stream_set_state_callback(stream_, stateChanged, this);
        pa_buffer_attr buffering{};
        buffering.maxlength = static_cast<std::uint32_t>(samples_.size());
        buffering.tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(latency * PA_USEC_PER_MSEC, &spec));
        // What the server likes; it starts when it has that much, which is less than any sound.
        buffering.prebuf = buffering.minreq = static_cast<std::uint32_t>(-1);
        pa_stream_connect_playback(stream_, nullptr, &buffering, PA_STREAM_ADJUST_LATENCY, nullptr, nullptr);
    }
    ~Playback() {
        if (!stream_) return;
        pa_stream_set_state_callback(stream_, nullptr, nullptr);
        pa_stream_disconnect(stream_);
        pa_stream_unref(stream_);
    }
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

 private:
    static void stateChanged(pa_stream* stream, void* self) {
        if (pa_stream_get_state(stream) != PA_STREAM_READY) return;
        const auto& samples = static_cast<Playback*>(self)->samples_;
        pa_stream_write(stream, samples.data(), samples.size(), nullptr, 0, PA_SEEK_RELATIVE);
        // A stream that stays would keep the device from going to sleep.
        const auto heard = [](pa_stream* finished, int, void*) { pa_stream_disconnect(finished); };
        if (auto* draining = pa_stream_drain(stream, heard, nullptr)) pa_operation_unref(draining);
    }

    const std::vector<std::uint8_t> samples_;
    pa_stream* stream_ = nullptr;
};

PulseSystemSounds::PulseSystemSounds(std::shared_ptr<PulseConnection> connection)
    : connection_(std::move(connection)) {}

PulseSystemSounds::~PulseSystemSounds() {
    const PulseConnection::Lock lock(*connection_);
    playbacks_.clear();
}

void PulseSystemSounds::play(std::string_view name, double volume) {
    auto samples = samplesAt(volume, soundFile(name));
    if (samples.empty()) return;
    connection_->retryNow();
    if (!connection_->isReady()) return;
    const PulseConnection::Lock lock(*connection_);
    auto& playback = playbacks_[std::string(name)];
    playback.reset();
    if (auto* context = connection_->readyContext())
        playback = std::make_unique<Playback>(context, std::string(name), std::move(samples));
}

}  // namespace dorix
