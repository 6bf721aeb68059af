#pragma once

#include "base/async/Completion.h"
#include "base/async/Task.h"
#include "base/async/Timer.h"
#include "platform/HelperProcess.h"
#include "recognition/Frames.h"
#include "recognition/ModelRequest.h"
#include "speech/recogniser/RecogniserLink.h"
#include "speech/recogniser/SpokenUtterance.h"

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace dorix {

/// The recogniser's process: started when it is needed, started again when it dies or falls silent over an
/// utterance, and gone when nobody has needed it for ten minutes. Utterances are put through it one after the
/// other. Main executor.
class Recogniser {
 public:
    /// Of the sound that it takes: mono, this many samples a second.
    static constexpr int sampleRate = 16000;

    /// `processes` must outlive it.
    Recogniser(Executor& main, HelperProcesses& processes);
    ~Recogniser();
    Recogniser(const Recogniser&) = delete;
    Recogniser& operator=(const Recogniser&) = delete;

    /// Returns when the model is loaded, or at once when another one is still at work: the model is loaded
    /// when its turn comes. Throws a MessageError when it cannot be.
    Task<void> load(ModelRequest model);

    /// Puts an utterance through, when those before are. Its results end, whatever happens: with an error
    /// when two recognisers in a row failed on it, or when its model cannot be loaded, and it has no other.
    void transcribe(std::shared_ptr<SpokenUtterance> utterance);
    /// More of its sound is there, or it has been dropped.
    void changed() { advance(); }

    /// Called when a model cannot be loaded, and will not be at another try.
    std::function<void(const ModelRequest&)> onRefused = [](const ModelRequest&) {};

    /// Called when a server has failed on an utterance, and why, for the user to read.
    std::function<void(const std::string& why)> onServerFailed = [](const std::string&) {};

    /// What an utterance goes to on which a model, or a server, failed; none where there is nothing else.
    std::function<std::optional<ModelRequest>(const ModelRequest& failed)> replacement =
        [](const ModelRequest&) { return std::nullopt; };

    /// Lets go of the model in that folder, of which the process may have files open, when it is through with
    /// what is under way.
    void letGo(const std::filesystem::path& folder);

    bool isRunning() const { return link_ != nullptr; }

 private:
    void launch(const ModelRequest& model);
    void advance();
    void rest();
    void dropUnwanted();
    void stopWork();
    void sendSound(SpokenUtterance& utterance);
    void takeFrame(const Frame& frame);
    void takeFrameOf(SpokenUtterance& utterance, const Frame& frame);
    void ready();
    void refused(const std::string& why);
    void lost(const std::string& how);
    void ended();
    void giveUp(const std::string& why);
    bool takeReplacement(SpokenUtterance& utterance);
    void watch();

    Executor& main_;
    HelperProcesses& processes_;
    std::deque<std::shared_ptr<SpokenUtterance>> queue_;  // the first is the one that the process is at
    std::optional<Completion<void>> loading_;             // somebody waits for
    int failedStarts_ = 0;
    bool isReady_ = false;
    bool isUnwanted_ = false;   // the model, as soon as nobody uses it
    bool hasBegun_ = false;     // the first of the queue
    bool hasFinished_ = false;  // all its sound is sent
    int stale_ = 0;             // utterances that were dropped, and of which the process has not told the end
    Timer idle_;
    std::unique_ptr<RecogniserLink> link_;
};

}  // namespace dorix
