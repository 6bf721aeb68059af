#pragma once

#include "base/async/Timer.h"
#include "platform/HelperProcess.h"
#include "recognition/Frames.h"
#include "recognition/ModelRequest.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace dorix {

/// One recogniser's process with its model, from its start to its end, and a watch over its silence. Main
/// executor.
class RecogniserLink {
 public:
    static constexpr auto program = "dorix-recogniser";

    /// `onFrame` and `onLost` may destroy the link. `onLost` is called once, never inside another call: the
    /// process could not be started, has ended, says what is no frame, or is silent for too long; in words
    /// for the log.
    RecogniserLink(Executor& main, HelperProcesses& processes, ModelRequest model,
                   std::function<void(const Frame&)> onFrame,
                   std::function<void(const std::string& how)> onLost);

    const ModelRequest& model() const { return model_; }

    void send(Frame::Kind kind) { sendBytes(encoded({kind, {}})); }
    void sendAudio(std::span<const float> samples) { sendBytes(encodedAudio(samples)); }

    /// It must say something within so many seconds, counted from when this was first asked of it, and from
    /// each time that it says something.
    void expectWithin(double seconds);
    void expectNothing();

 private:
    void sendBytes(std::string bytes);
    void take(std::string_view bytes);
    void lose(const std::string& how);
    void watchSilence();

    const ModelRequest model_;
    const std::function<void(const Frame&)> onFrame_;
    const std::function<void(const std::string&)> onLost_;
    Executor& main_;
    FrameReader reader_;
    double patience_ = 0;
    double silentSince_ = 0;
    Timer silence_;
    Timer failedStart_;
    /// Gone with the link, which a frame may cost.
    const std::shared_ptr<bool> life_ = std::make_shared<bool>(true);
    std::unique_ptr<HelperProcess> process_;
};

}  // namespace dorix
