#include "Command.h"
#include "SoundFile.h"
#include "base/Error.h"
#include "base/async/Sleep.h"
#include "base/async/TaskScope.h"
#include "linux/loop/PollLoop.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "linux/xdg/Environment.h"
#include "speech/AudioTap.h"
#include "speech/BufferClock.h"
#include "speech/SpokenText.h"
#include "speech/recogniser/LocalRecognition.h"
#include "speech/recogniser/ModelChoice.h"

#include <algorithm>
#include <future>
#include <memory>
#include <utility>

namespace dorix::lab {

namespace {

constexpr double bufferSeconds = 0.02;  // as a microphone delivers

struct Order {
    SoundFile sound;
    std::string language;
    SpeechModel model;
    bool isRealtime = false;
};

/// What is told of an utterance.
struct Told {
    std::vector<std::string> partials;
    std::string text;
};

/// The program's recogniser with the installed models. It stays loaded from one line to the next, as it does
/// from one dictation to the next.
class Transcriber {
 public:
    ~Transcriber() { loop_.stop(); }

    std::vector<SpeechModel> models() const { return models_.installed(); }

    /// Waits for it. Throws what the recogniser throws.
    Json transcribe(Order order) {
        std::promise<Json> promise;
        auto answer = promise.get_future();
        loop_.post([this, &order, &promise] { tasks_.spawn(answerTo(std::move(order), promise)); });
        return answer.get();
    }

 private:
    Task<void> answerTo(Order order, std::promise<Json>& promise) {
        try {
            promise.set_value(co_await run(std::move(order)));
        } catch (...) {
            promise.set_exception(std::current_exception());
        }
    }

    Task<Json> run(Order order) {
        choices_.set({{languageCode(order.language), order.model.id}});
        const auto locale = recognition_.supportedLocale(order.language).value_or(order.language);
        const auto format = co_await recognition_.bestAvailableAudioFormat(locale);
        if (!format) throw MessageError("the model " + order.model.id + " cannot be loaded");
        const auto analyzer = recognition_.makeAnalyzer(locale);
        const AsyncStream<AnalyzerInput> input;
        const auto reading = tasks_.spawn(read(analyzer->results()));
        co_await analyzer->start(input);
        co_await speak(order, *format, input);
        const double silentSince = loop_.now();
        co_await analyzer->finalizeAndFinishThroughEndOfInput();
        const auto told = co_await reading;
        co_return {{"text", told.text},
                   {"engine", storedName(order.model.engine)},
                   {"model", order.model.id},
                   {"partials", told.partials},
                   {"seconds", loop_.now() - silentSince}};
    }

    Task<Told> read(AsyncStream<TranscriptionResult> results) {
        Told told;
        while (auto result = co_await results.next()) {
            if (!result->isFinal) told.partials.push_back(result->text);
            told.text = std::move(result->text);
        }
        co_return told;
    }

    /// Into the recogniser as a microphone would, in real time or all at once.
    Task<void> speak(const Order& order, AudioFormat format, AsyncStream<AnalyzerInput> input) {
        const auto& sound = order.sound;
        AudioTap tap(sound.format, format, loop_, clock_, input, [](float) {});
        const auto step = static_cast<std::size_t>(sound.format.sampleRate * bufferSeconds) *
                          static_cast<std::size_t>(sound.format.channelCount);
        const double start = loop_.now();
        for (std::size_t at = 0; at < sound.samples.size(); at += step) {
            const auto left = std::span(sound.samples).subspan(at);
            const double until = start + static_cast<double>(at / step + 1) * bufferSeconds;
            if (order.isRealtime) co_await sleep(std::max(0.0, until - loop_.now()));
            tap({left.first(std::min(step, left.size())), sound.format});
        }
        // What the converter holds back comes with what follows.
        if (sound.format != format) tap({std::vector<float>(step), sound.format});
        input.finish();
    }

    PollLoop loop_;
    LinuxHelperProcesses processes_{loop_, DORIX_PROGRAM};
    Observable<SpeechModelChoices> choices_;
    const std::filesystem::path data_ = xdgDataHome() / "DORIX";
    const SpeechModels models_{data_ / "models", packagedSpeechModels(), choices_};
    LocalRecognition recognition_{loop_, processes_, modelChoice(models_, data_ / "engines")};
    BufferClock clock_{loop_.now()};
    TaskScope tasks_{loop_};
};

/// The best of those that the line allows.
SpeechModel chosenModel(std::vector<SpeechModel> models, const Json& input, const std::string& language) {
    const auto engine = optionalString(input, "engine");
    const auto id = optionalString(input, "model");
    const auto isAllowed = [&](const SpeechModel& model) {
        return model.serves(language) &&
               engine.value_or(std::string(storedName(model.engine))) == storedName(model.engine) &&
               id.value_or(model.id) == model.id;
    };
    const auto found = std::ranges::find_if(models, isAllowed);
    if (found == models.end())
        throw BadInput("no such model is installed for the language \"" + language + '"');
    return std::move(*found);
}

Json transcribe(Transcriber& transcriber, const Json& input) {
    const auto language = requiredString(input, "language");
    return transcriber.transcribe({.sound = readSoundFile(requiredString(input, "file")),
                                   .language = language,
                                   .model = chosenModel(transcriber.models(), input, language),
                                   .isRealtime = optionalBoolean(input, "realtime").value_or(false)});
}

Json models(const Transcriber& transcriber) {
    Json found = Json::array();
    for (const auto& model : transcriber.models()) {
        found.push_back({{"id", model.id},
                         {"engine", storedName(model.engine)},
                         {"kind", storedName(model.kind)},
                         {"languages", model.languages}});
    }
    return {{"models", found}};
}

/// What the system detected; nothing where it detected nothing.
std::optional<LanguageHypothesis> detectedLanguage(const Json& input) {
    const auto found = input.find("detected");
    if (found == input.end() || found->is_null()) return std::nullopt;
    return LanguageHypothesis{requiredString(*found, "code"), requiredNumber(*found, "confidence")};
}

/// How a text would be read aloud on a system with these voices.
Json speak(const Json& input) {
    std::vector<SpeechSynthesisVoice> voices;
    for (const auto& voice : input.value("voices", Json::array())) {
        voices.push_back(
            {.name = requiredString(voice, "name"),
             .identifier = requiredString(voice, "name"),
             .language = requiredString(voice, "language"),
             .quality = voice.contains("quality") ? static_cast<int>(requiredInteger(voice, "quality")) : 1});
    }
    const auto language = languageFor(detectedLanguage(input), requiredString(input, "language"),
                                      optionalString(input, "appLanguage").value_or("es"));
    const auto voice = voiceFor(voices, language);
    return {{"text", spokenText(requiredString(input, "text"))},
            {"language", language},
            {"voice", voice ? Json(voice->name) : Json()}};
}

}  // namespace

std::vector<Command> speechCommands() {
    const auto transcriber = std::make_shared<Transcriber>();
    return {
        {"transcribe", R"({"file","language","engine"?,"model"?,"realtime"?})",
         R"({"text","engine","model","partials","seconds"}: from the last sound to the text)",
         [transcriber](const Json& input) { return transcribe(*transcriber, input); }},
        {"models", "{}", R"({"models"})", [transcriber](const Json&) { return models(*transcriber); }},
        {"speak",
         R"({"text","language","appLanguage","voices":[{"name","language","quality"}...],"detected":{"code","confidence"}|null})",
         R"({"text","language","voice"|null})", speak},
    };
}

}  // namespace dorix::lab
