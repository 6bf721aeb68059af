#include "recogniser/server/ServerEngine.h"

#include "recogniser/server/ServerFailure.h"
#include "recogniser/server/WaveFile.h"
#include "recogniser/sound/Pauses.h"

namespace dorix::recogniser {

namespace {
// Ten minutes are 19 MB, and servers take 25.
constexpr std::size_t longestPart = 600UZ * Engine::sampleRate;
}  // namespace

ServerEngine::ServerEngine(const ModelRequest& model, ServerPatience patience)
    : model_(model), patience_(patience) {}

void ServerEngine::begin(Results& results) {
    results_ = &results;
    samples_.clear();
}

void ServerEngine::accept(std::span<const float> samples) {
    samples_.insert(samples_.end(), samples.begin(), samples.end());
    if (samples_.size() > longestPart)
        endPart(quietestPoint(std::span(samples_).first(longestPart), longestPart / 2));
}

void ServerEngine::finish() {
    endPart(samples_.size());
    abandon();
}

void ServerEngine::abandon() noexcept {
    samples_ = {};
    results_ = nullptr;
}

void ServerEngine::endPart(std::size_t size) {
    const auto part = std::span(samples_).first(size);
    // Of silence many models make sentences that nobody said.
    const auto text = isSilent(part) ? std::string() : understood(part);
    if (!text.empty()) results_->final(text);
    samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(size));
}

std::string ServerEngine::understood(std::span<const float> samples) const {
    // Made only here: what is wrong with an address or a key is told of an utterance.
    const TranscriptionCall call(model_.server, model_.language, patience_);
    const auto wave = waveFile(samples);
    const auto seconds = static_cast<double>(samples.size()) / sampleRate;
    try {
        return call.text(wave, seconds);
    } catch (const ServerFailure& failure) {
        if (!failure.isPassing()) throw;
    }
    return call.text(wave, seconds);
}

}  // namespace dorix::recogniser
