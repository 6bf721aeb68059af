#include "linux/pocketsphinx/PocketsphinxRecognition.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/Completion.h"
#include "base/text/Text.h"
#include "linux/pocketsphinx/PocketsphinxDecoder.h"
#include "linux/pocketsphinx/PocketsphinxWorker.h"

#include <cstdlib>
#include <exception>
#include <utility>

namespace dorix {

namespace {
constexpr auto servedLocale = "en-US";

/// "en", "en-GB", "en_AU": the one model serves them all.
bool isEnglish(const std::string& language) {
    const auto folded = text::lowercase(language);
    return folded == "en" || folded.starts_with("en-") || folded.starts_with("en_");
}

/// One transcription by the worker's decoder; it waits there for its turn while others are under way. A
/// decoder that cannot be loaded or fails ends the results with a MessageError.
class PocketsphinxAnalyzer final : public SpeechAnalyzer {
 public:
    explicit PocketsphinxAnalyzer(std::shared_ptr<PocketsphinxWorker> worker) : worker_(std::move(worker)) {}
    ~PocketsphinxAnalyzer() override {
        session_->isDropped = true;
        // Wakes the worker when it waits for more sound.
        if (input_) input_->finish();
    }

    Task<void> start(AsyncStream<AnalyzerInput> input) override {
        input_ = input;
        worker_->transcribe(session_, std::move(input));
        co_return;
    }

    AsyncStream<TranscriptionResult> results() override { return session_->results; }

    Task<void> finalizeAndFinishThroughEndOfInput() override {
        if (!input_) session_->results.finish();
        if (!input_) co_return;
        const auto finished = session_->finished;
        co_await finished;
    }

 private:
    const std::shared_ptr<PocketsphinxWorker> worker_;
    const std::shared_ptr<PocketsphinxWorker::Session> session_ =
        std::make_shared<PocketsphinxWorker::Session>();
    std::optional<AsyncStream<AnalyzerInput>> input_;
};
}  // namespace

PocketsphinxRecognition::PocketsphinxRecognition(std::filesystem::path models)
    : models_(std::move(models)), worker_(std::make_shared<PocketsphinxWorker>(models_)) {}

PocketsphinxRecognition::~PocketsphinxRecognition() = default;

std::filesystem::path PocketsphinxRecognition::defaultModelFolder() {
    // Read at start-up, when nobody changes the environment.
    const char* chosen = std::getenv("DORIX_POCKETSPHINX_MODELS");  // NOLINT(concurrency-mt-unsafe)
    return chosen && *chosen != '\0' ? chosen : DORIX_POCKETSPHINX_MODELDIR;
}

std::optional<std::string> PocketsphinxRecognition::supportedLocale(const std::string& equivalentTo) const {
    if (!isEnglish(equivalentTo) || !PocketsphinxDecoder::hasModel(models_)) return std::nullopt;
    return servedLocale;
}

SpeechRecognition::AssetStatus PocketsphinxRecognition::assetStatus(const std::string& locale) const {
    return supportedLocale(locale) ? AssetStatus::installed : AssetStatus::unsupported;
}

Task<void> PocketsphinxRecognition::downloadAndInstall(std::string, Progress) {
    // Never asked for: a model is installed with its package or not supported.
    throw MessageError("pocketsphinx: no model");
    co_return;
}

Task<std::optional<AudioFormat>> PocketsphinxRecognition::bestAvailableAudioFormat(std::string locale) {
    if (!supportedLocale(locale)) co_return std::nullopt;
    const auto worker = worker_;
    try {
        // Not behind a transcription that is under way, when there is nothing to load.
        if (!worker->isLoaded()) {
            co_await runOn(worker->executor(), [&loading = *worker] { loading.decoder(); });
        }
    } catch (const MessageError& error) {
        logLine("no se pudo cargar el reconocedor: " + error.localizedDescription());
        co_return std::nullopt;
    }
    co_return PocketsphinxDecoder::format;
}

std::unique_ptr<SpeechAnalyzer> PocketsphinxRecognition::makeAnalyzer(const std::string& locale) {
    if (!supportedLocale(locale)) return nullptr;
    return std::make_unique<PocketsphinxAnalyzer>(worker_);
}

}  // namespace dorix
