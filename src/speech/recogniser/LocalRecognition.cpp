#include "speech/recogniser/LocalRecognition.h"

#include "base/Error.h"
#include "base/async/TaskScope.h"
#include "speech/recogniser/SpokenUtterance.h"

#include <utility>

namespace dorix {

namespace {

constexpr AudioFormat soundFormat{Recogniser::sampleRate, 1};

/// One transcription; it waits for its turn while others are under way.
class RecogniserAnalyzer final : public SpeechAnalyzer {
 public:
    RecogniserAnalyzer(Executor& main, std::shared_ptr<Recogniser> recogniser, ModelRequest model)
        : recogniser_(std::move(recogniser)),
          utterance_(std::make_shared<SpokenUtterance>(std::move(model))),
          tasks_(main) {}
    ~RecogniserAnalyzer() override {
        utterance_->drop();
        if (isStarted_) recogniser_->changed();
    }

    Task<void> start(AsyncStream<AnalyzerInput> input) override {
        isStarted_ = true;
        recogniser_->transcribe(utterance_);
        tasks_.spawn(take(std::move(input)));
        co_return;
    }

    AsyncStream<TranscriptionResult> results() override { return utterance_->results(); }

    Task<void> finalizeAndFinishThroughEndOfInput() override {
        if (!isStarted_) utterance_->fail(nullptr);
        const auto finished = utterance_->finished();
        co_await finished;
    }

 private:
    Task<void> take(AsyncStream<AnalyzerInput> input) {
        while (const auto heard = co_await input.next()) {
            utterance_->hear(heard->samples);
            recogniser_->changed();
        }
        utterance_->end();
        recogniser_->changed();
    }

    const std::shared_ptr<Recogniser> recogniser_;
    const std::shared_ptr<SpokenUtterance> utterance_;
    bool isStarted_ = false;
    TaskScope tasks_;
};

}  // namespace

LocalRecognition::LocalRecognition(Executor& main, HelperProcesses& processes, ChooseModel chooseModel,
                                   ChooseModel otherwise)
    : main_(main),
      chooseModel_(std::move(chooseModel)),
      recogniser_(std::make_shared<Recogniser>(main, processes)) {
    if (!otherwise) return;
    recogniser_->replacement = [otherwise = std::move(otherwise)](const ModelRequest& failed) {
        return otherwise(failed.language);
    };
}

LocalRecognition::~LocalRecognition() = default;

std::optional<std::string> LocalRecognition::supportedLocale(const std::string& equivalentTo) const {
    auto model = chooseModel_(equivalentTo);
    if (!model) return std::nullopt;
    auto locale = model->language;
    chosen_.insert_or_assign(locale, *std::move(model));
    return locale;
}

std::optional<ModelRequest> LocalRecognition::chosen(const std::string& locale) const {
    const auto found = chosen_.find(locale);
    return found == chosen_.end() ? chooseModel_(locale) : found->second;
}

SpeechRecognition::AssetStatus LocalRecognition::assetStatus(const std::string& locale) const {
    return chosen(locale) ? AssetStatus::installed : AssetStatus::unsupported;
}

Task<void> LocalRecognition::downloadAndInstall(std::string, Progress) {
    // Never asked for: a language is served by a model that is installed, or not at all.
    throw MessageError("recogniser: no model");
    co_return;
}

Task<std::optional<AudioFormat>> LocalRecognition::bestAvailableAudioFormat(std::string locale) {
    const auto recogniser = recogniser_;
    for (auto model = chosen(locale); model;) {
        try {
            co_await recogniser->load(*model);
            chosen_.insert_or_assign(locale, *model);
            co_return soundFormat;
        } catch (const MessageError&) {
            // The log has why. There may be another one now.
            auto other = recogniser->replacement(*model);
            model = other == model ? std::nullopt : std::move(other);
        }
    }
    co_return std::nullopt;
}

std::optional<AudioFormat> LocalRecognition::knownFormat(const std::string&) const { return soundFormat; }

std::unique_ptr<SpeechAnalyzer> LocalRecognition::makeAnalyzer(const std::string& locale) {
    const auto model = chosen(locale);
    if (!model) return nullptr;
    return std::make_unique<RecogniserAnalyzer>(main_, recogniser_, *model);
}

}  // namespace dorix
