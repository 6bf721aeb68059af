#pragma once

#include "recogniser/Engine.h"
#include "recogniser/sherpa/SherpaLibrary.h"
#include "recogniser/sherpa/SherpaParameters.h"

#include <string>

namespace dorix::recogniser {

/// Streaming transducers of sherpa-onnx: text comes while one talks. At each pause the library begins a new
/// segment, so that its text stays short however long the dictation; only its counters begin anew, no sound
/// is skipped.
class StreamingEngine final : public Engine {
 public:
    /// Loads the model, which takes a second or two. The files are intact by then.
    StreamingEngine(const ModelRequest& model, SherpaParameters parameters, const SherpaLibrary& library);
    ~StreamingEngine() override;

    void begin(Results& results) override;
    void accept(std::span<const float> samples) override;
    void finish() override;
    void abandon() noexcept override;

 private:
    bool decode();
    void takeText();

    const SherpaLibrary library_;
    const SherpaParameters parameters_;
    const std::string language_;
    SherpaHandle<sherpa::OnlineRecognizer> recognizer_;
    SherpaHandle<sherpa::OnlineStream> stream_;
    Results* results_ = nullptr;
    std::string before_;  // what was understood in the segments before and is not final yet
    std::string told_;    // all that is not final yet
};

}  // namespace dorix::recogniser
