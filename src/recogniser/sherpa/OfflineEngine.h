#pragma once

#include "recogniser/Engine.h"
#include "recogniser/sherpa/PartialPace.h"
#include "recogniser/sherpa/SherpaLibrary.h"
#include "recogniser/sherpa/SherpaParameters.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace dorix::recogniser {

/// Models of sherpa-onnx that understand an utterance as a whole. While one talks, what was heard so far is
/// put through them now and then, as often as the machine does that by the way; at the end all of it is. What
/// is longer than they take at once is cut where it is quietest.
class OfflineEngine final : public Engine {
 public:
    /// Loads the model, which takes some seconds. The files are intact by then.
    OfflineEngine(const ModelRequest& model, SherpaParameters parameters, const SherpaLibrary& library);
    ~OfflineEngine() override;

    void begin(Results& results) override;
    void accept(std::span<const float> samples) override;
    void finish() override;
    void abandon() noexcept override;

 private:
    void tellPartial();
    void endPart(std::size_t size);
    std::string decode(std::span<const float> samples);
    std::string understood(std::vector<float> samples) const;

    const SherpaLibrary library_;
    const SherpaParameters parameters_;
    SherpaHandle<sherpa::OfflineRecognizer> recognizer_;
    Results* results_ = nullptr;
    std::vector<float> samples_;  // without final text
    std::string told_;
    PartialPace pace_;
};

}  // namespace dorix::recogniser
