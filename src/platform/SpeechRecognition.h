#pragma once

#include "base/async/AsyncStream.h"
#include "base/async/Task.h"
#include "platform/AudioEngine.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// Sound on its way to a recogniser, in the analyser's format.
struct AnalyzerInput {
    std::vector<float> samples;

    bool operator==(const AnalyzerInput&) const = default;
};

struct TranscriptionResult {
    std::string text;
    /// Final text stands; other text is replaced by the next result.
    bool isFinal = false;

    bool operator==(const TranscriptionResult&) const = default;
};

/// One transcription, from its first sound to its last word. Main executor; the work is done elsewhere.
/// Destroying it drops what is under way without waiting for it.
class SpeechAnalyzer {
 public:
    virtual ~SpeechAnalyzer() = default;

    /// Begins to take sound from `input`; what waits there already is taken first. Throws an Error when the
    /// recogniser cannot start.
    virtual Task<void> start(AsyncStream<AnalyzerInput> input) = 0;

    /// What is heard, until the transcription has finished; its end carries an error when the recogniser
    /// failed.
    virtual AsyncStream<TranscriptionResult> results() = 0;

    /// Returns when all sound given so far is transcribed and `results` has ended. The input has been
    /// finished before.
    virtual Task<void> finalizeAndFinishThroughEndOfInput() = 0;
};

/// A recogniser on this computer. Several can stand behind it, each for its languages. Main executor.
class SpeechRecognition {
 public:
    enum class AssetStatus { unsupported, supported, downloading, installed };
    using Progress = std::function<void(double fractionCompleted)>;

    virtual ~SpeechRecognition() = default;

    /// The locale identifier that serves a language id ("en-GB" may be served by "en-US"); none when the
    /// language is not known.
    virtual std::optional<std::string> supportedLocale(const std::string& equivalentTo) const = 0;

    /// Whether the model of a supported locale is on this computer.
    virtual AssetStatus assetStatus(const std::string& locale) const = 0;

    /// Gets the model onto this computer and telling how far it is, on the main executor. Throws an Error.
    virtual Task<void> downloadAndInstall(std::string locale, Progress progress) = 0;

    /// The format that the recogniser wants its sound in; none when it cannot be used. Loads the model when
    /// it is not loaded; it then stays for the life of the process.
    virtual Task<std::optional<AudioFormat>> bestAvailableAudioFormat(std::string locale) = 0;

    /// The same format, where it is known before anything is loaded.
    virtual std::optional<AudioFormat> knownFormat(const std::string& /*locale*/) const {
        return std::nullopt;
    }

    virtual std::unique_ptr<SpeechAnalyzer> makeAnalyzer(const std::string& locale) = 0;
};

}  // namespace dorix
