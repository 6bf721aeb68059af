#include "speech/recogniser/RecogniserLink.h"

#include <utility>

namespace dorix {

namespace {}

RecogniserLink::RecogniserLink(Executor& main, HelperProcesses& processes, ModelRequest model,
                               std::function<void(const Frame&)> onFrame,
                               std::function<void(const std::string&)> onLost)
    : model_(std::move(model)),
      onFrame_(std::move(onFrame)),
      onLost_(std::move(onLost)),
      main_(main),
      silence_(main),
      failedStart_(main),
      process_(processes.launch(program, {.onBytes = [this](std::string_view bytes) { take(bytes); },
                                          .onEnd = [this](const std::string& how) { lose(how); }})) {
    if (!process_) failedStart_.once(0, [this] { lose("no se pudo iniciar"); });
    sendBytes(encoded({Frame::Kind::open, encoded(model_)}));
}

void RecogniserLink::expectWithin(double seconds) {
    if (!silence_.isActive()) silentSince_ = main_.now();
    patience_ = seconds;
    watchSilence();
}

void RecogniserLink::watchSilence() {
    silence_.once(silentSince_ + patience_ - main_.now(), [this] { lose("no responde"); });
}

void RecogniserLink::expectNothing() { silence_.stop(); }

void RecogniserLink::sendBytes(std::string bytes) {
    if (process_) process_->send(std::move(bytes));
}

void RecogniserLink::take(std::string_view bytes) {
    const std::weak_ptr<bool> life = life_;
    const auto onFrame = onFrame_;
    silentSince_ = main_.now();
    if (silence_.isActive()) watchSilence();
    reader_.take(bytes);
    while (const auto frame = reader_.next()) {
        onFrame(*frame);
        if (life.expired()) return;
    }
    if (reader_.isBroken()) lose("dice algo que no se entiende");
}

void RecogniserLink::lose(const std::string& how) {
    const auto lost = onLost_;
    lost(how);
}

}  // namespace dorix
