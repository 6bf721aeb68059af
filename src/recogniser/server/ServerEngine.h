#pragma once

#include "recogniser/Engine.h"
#include "recogniser/server/TranscriptionCall.h"
#include "recognition/ModelRequest.h"

#include <cstddef>
#include <string>
#include <vector>

namespace dorix::recogniser {

/// Has a server understand each utterance, as a whole when it is over. Throws ServerFailure.
class ServerEngine final : public Engine {
 public:
    explicit ServerEngine(const ModelRequest& model, ServerPatience patience = {});

    void begin(Results& results) override;
    void accept(std::span<const float> samples) override;
    void finish() override;
    void abandon() noexcept override;

 private:
    void endPart(std::size_t size);
    std::string understood(std::span<const float> samples) const;

    const ModelRequest model_;
    const ServerPatience patience_;
    Results* results_ = nullptr;
    std::vector<float> samples_;
};

}  // namespace dorix::recogniser
