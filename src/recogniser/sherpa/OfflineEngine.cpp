#include "recogniser/sherpa/OfflineEngine.h"

#include "base/text/Text.h"
#include "recogniser/sound/Pauses.h"

#include <malloc.h>

#include <chrono>
#include <utility>

namespace dorix::recogniser {

namespace {

/// Seconds, from any point on.
double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

SherpaHandle<sherpa::OfflineRecognizer> load(const ModelRequest& model, const SherpaParameters& parameters,
                                             const SherpaLibrary& library) {
    const std::string encoder = model.file("encoder");
    const std::string decoder = model.file("decoder");
    const std::string joiner = model.file("joiner");
    const std::string tokens = model.file("tokens");
    sherpa::OfflineRecognizerConfig config{};
    config.features = {Engine::sampleRate, 80};
    if (parameters.modelType == "whisper") {
        config.model.whisper = {.encoder = encoder.c_str(),
                                .decoder = decoder.c_str(),
                                .language = model.language.c_str(),
                                .task = "transcribe"};
    } else {
        config.model.transducer = {encoder.c_str(), decoder.c_str(), joiner.c_str()};
    }
    config.model.tokens = tokens.c_str();
    config.model.threads = 1;
    config.model.provider = "cpu";
    config.model.type = parameters.modelType.c_str();
    config.decodingMethod = "greedy_search";
    config.blankPenalty = parameters.blankPenalty;
    const auto& functions = library.functions();
    return {SherpaLibrary::call(functions.CreateOfflineRecognizer, &config),
            functions.DestroyOfflineRecognizer};
}

}  // namespace

OfflineEngine::OfflineEngine(const ModelRequest& model, SherpaParameters parameters,
                             const SherpaLibrary& library)
    : library_(library), parameters_(std::move(parameters)), recognizer_(load(model, parameters_, library_)) {
    ::malloc_trim(0);
}

OfflineEngine::~OfflineEngine() {
    recognizer_.reset();
    ::malloc_trim(0);
}

void OfflineEngine::begin(Results& results) {
    results_ = &results;
    samples_.clear();
    told_.clear();
    pace_.restart(now());
}

void OfflineEngine::accept(std::span<const float> samples) {
    samples_.insert(samples_.end(), samples.begin(), samples.end());
    const auto most = static_cast<std::size_t>(parameters_.longestPart * sampleRate);
    if (samples_.size() > most) {
        endPart(quietestPoint(std::span(samples_).first(most), most / 2));
    } else {
        tellPartial();
    }
}

void OfflineEngine::finish() {
    endPart(samples_.size());
    abandon();
}

void OfflineEngine::abandon() noexcept {
    samples_ = {};
    results_ = nullptr;
}

void OfflineEngine::tellPartial() {
    if (!pace_.isDue(now(), samples_.size())) return;
    auto text = decode(samples_);
    if (text == told_) return;
    told_ = std::move(text);
    results_->partial(told_);
}

void OfflineEngine::endPart(std::size_t size) {
    const auto text = size == 0 ? std::string() : decode(std::span(samples_).first(size));
    // An empty final one takes back what was told of words that turned out to be none.
    if (!text.empty() || !told_.empty()) results_->final(text);
    told_.clear();
    samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(size));
    pace_.restart(now());
}

std::string OfflineEngine::decode(std::span<const float> samples) {
    const auto begin = now();
    auto text = understood({samples.begin(), samples.end()});
    pace_.worked(begin, now(), samples.size());
    return text;
}

std::string OfflineEngine::understood(std::vector<float> samples) const {
    // Of silence these make sentences that nobody said.
    if (parameters_.modelType == "whisper" && isSilent(samples)) return {};
    samples.resize(samples.size() + static_cast<std::size_t>(parameters_.paddingSeconds * sampleRate));
    const auto& functions = library_.functions();
    const SherpaHandle<sherpa::OfflineStream> stream(
        SherpaLibrary::call(functions.CreateOfflineStream, recognizer_.get()),
        functions.DestroyOfflineStream);
    SherpaLibrary::call(functions.AcceptWaveformOffline, stream.get(), sampleRate, samples.data(),
                        static_cast<std::int32_t>(samples.size()));
    SherpaLibrary::call(functions.DecodeOfflineStream, recognizer_.get(), stream.get());
    const SherpaHandle<sherpa::OfflineResult> result(
        SherpaLibrary::call(functions.GetOfflineStreamResult, stream.get()),
        functions.DestroyOfflineRecognizerResult);
    return std::string(text::trim(result->text == nullptr ? "" : result->text));
}

}  // namespace dorix::recogniser
