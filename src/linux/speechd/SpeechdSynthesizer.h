#pragma once

#include "base/async/TaskScope.h"
#include "linux/speechd/SpeechdServer.h"
#include "linux/speechd/SsipConnection.h"
#include "platform/SpeechSynthesizer.h"

#include <memory>
#include <optional>
#include <vector>

namespace dorix {

/// Reads aloud by speech-dispatcher, through whatever speaks there. A connection lasts as long as what is
/// read, so that nothing is kept open at rest and nothing of one utterance is told of another. Main executor.
class SpeechdSynthesizer final : public SpeechSynthesizer {
 public:
    SpeechdSynthesizer(Executor& main, FdWatcher& watcher);

    /// Those of the user's own module first. What was listed counts for some minutes: to list them takes the
    /// server half a second.
    Task<std::vector<SpeechSynthesisVoice>> speechVoices() override;
    void speak(SpeechUtterance utterance) override;
    void stopSpeaking() override;

 private:
    using Voices = std::vector<SpeechSynthesisVoice>;

    Task<std::unique_ptr<SsipConnection>> connect();
    Task<std::unique_ptr<SsipConnection>> tryToConnect();
    Task<Voices> listedVoices();
    Task<void> read(SpeechUtterance utterance);
    Task<bool> readAloud(const SpeechUtterance& utterance);

    Executor& main_;
    FdWatcher& watcher_;
    SpeechdServer server_;
    std::optional<TaskHandle<Voices>> voices_;
    double voicesUntil_ = 0;          // by the executor's clock
    double leftAloneUntil_ = 0;       // likewise
    std::optional<double> cutOffAt_;  // likewise; the last one that was not read to its end
    bool isReading_ = false;
    TaskScope listings_;
    std::optional<TaskScope> reading_;  // with it goes the connection
};

}  // namespace dorix
