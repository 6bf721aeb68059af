#include "linux/pulse/PulseAudioEngine.h"

#include "base/Error.h"

#include <algorithm>
#include <string>
#include <utility>

namespace dorix {

namespace {
constexpr double longestFragment = 0.02;  // seconds: what the last words may lag behind when the stream stops

PulseAudioEngine& engineOf(void* userdata) { return *static_cast<PulseAudioEngine*>(userdata); }

MessageError pulseError(pa_context* context) {
    return MessageError(std::string("PulseAudio: ") +
                        pa_strerror(context ? pa_context_errno(context) : PA_ERR_CONNECTIONREFUSED));
}
}  // namespace

void PulseAudioEngine::CloseStream::operator()(pa_stream* stream) const {
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_moved_callback(stream, nullptr, nullptr);
    pa_stream_set_suspended_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
}

PulseAudioEngine::PulseAudioEngine(std::shared_ptr<PulseConnection> connection)
    : connection_(std::move(connection)),
      source_(connection_->source().value_or(PulseConnection::Source{})) {}

PulseAudioEngine::~PulseAudioEngine() { stop(); }

void PulseAudioEngine::installTap(std::size_t bufferSize, AudioFormat format, TapBlock block) {
    const PulseConnection::Lock lock(*connection_);
    bufferSize_ = bufferSize;
    format_ = format;
    tap_ = std::move(block);
}

void PulseAudioEngine::removeTap() {
    const PulseConnection::Lock lock(*connection_);
    tap_ = nullptr;
}

void PulseAudioEngine::onConfigurationChange(std::function<void()> observer) {
    reporter_->observer = std::move(observer);
}

void PulseAudioEngine::start() {
    if (stream_) return;
    if (!connection_->isReady()) throw pulseError(nullptr);
    const PulseConnection::Lock lock(*connection_);
    auto* context = connection_->readyContext();
    if (!context) throw pulseError(nullptr);
    wasReady_ = suspected_ = reported_ = false;
    openStream(context);
    refreshes_ = connection_->onRefresh([this] { sourcesRefreshed(); });
}

void PulseAudioEngine::openStream(pa_context* context) {
    const pa_sample_spec spec{.format = PA_SAMPLE_FLOAT32NE,
                              .rate = static_cast<std::uint32_t>(format_.sampleRate),
                              .channels = static_cast<std::uint8_t>(format_.channelCount)};
    const auto* channels = format_ == source_.format ? &source_.channels : nullptr;
    stream_.reset(pa_stream_new(context, "DORIX", &spec, channels));
    if (!stream_) throw pulseError(context);
    watchStream();
    const auto frames = std::min(static_cast<double>(bufferSize_), format_.sampleRate * longestFragment);
    const auto whatServerLikes = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr buffering{
        .maxlength = whatServerLikes,
        .tlength = whatServerLikes,
        .prebuf = whatServerLikes,
        .minreq = whatServerLikes,
        .fragsize = static_cast<std::uint32_t>(frames * static_cast<double>(pa_frame_size(&spec)))};
    // No device named: the server's default, or the one that the user has given this program in the mixer.
    const char* const device = source_.isChosen ? source_.name.c_str() : nullptr;
    if (pa_stream_connect_record(stream_.get(), device, &buffering, PA_STREAM_ADJUST_LATENCY) < 0) {
        stream_.reset();
        throw pulseError(context);
    }
}

void PulseAudioEngine::watchStream() {
    auto* stream = stream_.get();
    pa_stream_set_state_callback(stream, [](pa_stream*, void* self) { engineOf(self).stateChanged(); }, this);
    pa_stream_set_read_callback(
        stream, [](pa_stream*, std::size_t, void* self) { engineOf(self).read(); }, this);
    pa_stream_set_moved_callback(stream, [](pa_stream*, void* self) { engineOf(self).suspect(); }, this);
    const auto suspended = [](pa_stream* changed, void* self) {
        if (pa_stream_is_suspended(changed) == 1) engineOf(self).suspect();
    };
    pa_stream_set_suspended_callback(stream, suspended, this);
}

void PulseAudioEngine::stop() {
    if (!stream_) return;
    const PulseConnection::Lock lock(*connection_);
    refreshes_.reset();
    stream_.reset();
}

void PulseAudioEngine::stateChanged() {
    const auto state = pa_stream_get_state(stream_.get());
    if (state == PA_STREAM_READY) wasReady_ = true;
    if (state == PA_STREAM_FAILED || state == PA_STREAM_TERMINATED) suspect();
}

/// Something has happened to the stream. It is reported when the new state of things is known, so that
/// whoever opens the input anew finds the new device.
void PulseAudioEngine::suspect() {
    suspected_ = true;
    connection_->refresh();
}

void PulseAudioEngine::sourcesRefreshed() {
    // A stream that never was fails without a word: reopening at once would only fail again, and again.
    if (!wasReady_ || reported_) return;
    const auto current = connection_->source();
    const auto index = current ? current->index : PA_INVALID_INDEX;
    const bool replaced = index != source_.index && index != pa_stream_get_device_index(stream_.get());
    if (!suspected_ && !replaced) return;
    reported_ = true;
    connection_->main().post([weak = std::weak_ptr(reporter_)] {
        const auto reporter = weak.lock();
        if (!reporter) return;
        // A copy: the observer may replace itself, or destroy the engine.
        if (const auto observer = reporter->observer) observer();
    });
}

void PulseAudioEngine::read() {
    while (pa_stream_readable_size(stream_.get()) > 0) {
        const void* data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(stream_.get(), &data, &bytes) < 0 || bytes == 0) return;
        // No data but a size is a hole, which nobody can fill.
        if (data && tap_) tap_({{static_cast<const float*>(data), bytes / sizeof(float)}, format_});
        pa_stream_drop(stream_.get());
    }
}

PulseAudioEngineFactory::PulseAudioEngineFactory(Executor& main, std::string server)
    : connection_(std::make_shared<PulseConnection>(main, std::move(server), listInto(main, inputs_))) {}

PulseAudioEngineFactory::~PulseAudioEngineFactory() = default;

PulseConnection::Listed PulseAudioEngineFactory::listInto(Executor& main,
                                                          const std::shared_ptr<Inputs>& inputs) {
    return [&main, weak = std::weak_ptr(inputs)](const std::vector<PulseConnection::Source>& microphones) {
        std::vector<AudioInput> listed;
        for (const auto& source : microphones) listed.push_back({source.name, source.description});
        main.post([weak, listed = std::move(listed)] {
            if (const auto known = weak.lock()) known->set(listed);
        });
    };
}

std::unique_ptr<AudioEngine> PulseAudioEngineFactory::makeEngine() {
    connection_->retryNow();
    return std::make_unique<PulseAudioEngine>(connection_);
}

}  // namespace dorix
