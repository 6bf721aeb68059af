#include "recogniser/sherpa/StreamingEngine.h"

#include <malloc.h>

#include <string_view>
#include <utility>
#include <vector>

namespace dorix::recogniser {

namespace {

constexpr float pauseBetweenSegments = 1.2F;  // seconds
constexpr float never = 1e9F;                 // seconds

using sherpa::OnlineRecognizerConfig;

SherpaHandle<sherpa::OnlineRecognizer> load(const ModelRequest& model, const SherpaParameters& parameters,
                                            const SherpaLibrary& library) {
    const std::string encoder = model.file("encoder");
    const std::string decoder = model.file("decoder");
    const std::string joiner = model.file("joiner");
    const std::string tokens = model.file("tokens");
    OnlineRecognizerConfig config{};
    config.features = {Engine::sampleRate, 80};
    config.model.transducer = {encoder.c_str(), decoder.c_str(), joiner.c_str()};
    config.model.tokens = tokens.c_str();
    // More would keep the processor busy while they wait for each other.
    config.model.threads = 1;
    config.model.provider = "cpu";
    config.model.type = parameters.modelType.c_str();
    config.decodingMethod = "greedy_search";
    config.endpointDetection = 1;
    config.silenceBeforeWords = never;
    config.silenceAfterWords = pauseBetweenSegments;
    config.longestUtterance = never;
    config.blankPenalty = parameters.blankPenalty;
    const auto& functions = library.functions();
    return {SherpaLibrary::call(functions.CreateOnlineRecognizer, &config),
            functions.DestroyOnlineRecognizer};
}

/// Tokens that begin a word carry a mark, or the blank that it stands for.
bool beginsWord(std::string_view token) { return token.starts_with(' ') || token.starts_with("\u2581"); }

}  // namespace

StreamingEngine::StreamingEngine(const ModelRequest& model, SherpaParameters parameters,
                                 const SherpaLibrary& library)
    : library_(library),
      parameters_(std::move(parameters)),
      language_(model.language),
      recognizer_(load(model, parameters_, library_)) {
    // What loading took besides would stay with the process, as much again as the model.
    ::malloc_trim(0);
}

StreamingEngine::~StreamingEngine() {
    stream_.reset();
    recognizer_.reset();
    ::malloc_trim(0);
}

void StreamingEngine::begin(Results& results) {
    const auto& functions = library_.functions();
    results_ = &results;
    before_.clear();
    told_.clear();
    stream_ = {SherpaLibrary::call(functions.CreateOnlineStream, recognizer_.get()),
               functions.DestroyOnlineStream};
    // Models of one language pass it by.
    SherpaLibrary::call(functions.OnlineStreamSetOption, stream_.get(), "language", language_.c_str());
}

void StreamingEngine::accept(std::span<const float> samples) {
    const auto& functions = library_.functions();
    SherpaLibrary::call(functions.OnlineStreamAcceptWaveform, stream_.get(), sampleRate, samples.data(),
                        static_cast<std::int32_t>(samples.size()));
    if (!decode()) return;
    takeText();
    if (told_.empty()) return;
    if (SherpaLibrary::call(functions.OnlineStreamIsEndpoint, recognizer_.get(), stream_.get()) == 0) return;
    before_ = told_;
    SherpaLibrary::call(functions.OnlineStreamReset, recognizer_.get(), stream_.get());
}

void StreamingEngine::finish() {
    const auto& functions = library_.functions();
    // Sound is worked on a chunk at a time, and the last one is never full by itself.
    const std::vector<float> silence(static_cast<std::size_t>(parameters_.paddingSeconds * sampleRate));
    SherpaLibrary::call(functions.OnlineStreamAcceptWaveform, stream_.get(), sampleRate, silence.data(),
                        static_cast<std::int32_t>(silence.size()));
    SherpaLibrary::call(functions.OnlineStreamInputFinished, stream_.get());
    decode();
    takeText();
    if (!told_.empty()) results_->final(told_);
    abandon();
}

void StreamingEngine::abandon() noexcept {
    stream_.reset();
    results_ = nullptr;
}

/// Whether anything could be understood that was not before.
bool StreamingEngine::decode() {
    const auto& functions = library_.functions();
    bool isAnything = false;
    while (SherpaLibrary::call(functions.IsOnlineStreamReady, recognizer_.get(), stream_.get()) != 0) {
        SherpaLibrary::call(functions.DecodeOnlineStream, recognizer_.get(), stream_.get());
        isAnything = true;
    }
    return isAnything;
}

void StreamingEngine::takeText() {
    const auto& functions = library_.functions();
    const SherpaHandle<sherpa::OnlineResult> result(
        SherpaLibrary::call(functions.GetOnlineStreamResult, recognizer_.get(), stream_.get()),
        functions.DestroyOnlineRecognizerResult);
    const std::string segment = result->text == nullptr ? "" : result->text;
    if (segment.empty()) return;
    const bool isNewWord =
        result->count < 1 || result->tokenList == nullptr || beginsWord(result->tokenList[0]);
    // A segment may begin inside a word, or with the sign that ends the sentence before.
    if (isNewWord && !before_.empty()) {
        results_->final(std::exchange(before_, {}));
        told_.clear();
    }
    auto text = before_ + segment;
    if (text == told_) return;
    told_ = std::move(text);
    results_->partial(told_);
}

}  // namespace dorix::recogniser
