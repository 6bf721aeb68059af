#include "recogniser/program/Program.h"

#include <algorithm>

namespace dorix::recogniser {

namespace {
constexpr std::size_t slice = Engine::sampleRate / 10;  // how long a drop may go unnoticed
}

void Program::run() {
    while (true) {
        if (channel_.next().kind != Frame::Kind::begin) continue;
        heard_ = 0;
        engine_.begin(*this);
        if (transcribe() == Outcome::dropped) engine_.abandon();
        channel_.send({Frame::Kind::done, {}});
    }
}

Program::Outcome Program::transcribe() {
    while (true) {
        const auto frame = channel_.next();
        if (frame.kind == Frame::Kind::drop) return Outcome::dropped;
        if (frame.kind == Frame::Kind::finish) {
            engine_.finish();
            return Outcome::finished;
        }
        const auto samples = frame.kind == Frame::Kind::audio ? samplesIn(frame.body) : std::nullopt;
        if (samples && !accept(*samples)) return Outcome::dropped;
    }
}

bool Program::accept(std::span<const float> samples) {
    while (!samples.empty()) {
        const auto next = samples.first(std::min(samples.size(), slice));
        samples = samples.subspan(next.size());
        engine_.accept(next);
        heard_ += next.size();
        channel_.send({Frame::Kind::heard, encodedCount(heard_)});
        if (channel_.isDropped()) return false;
    }
    return true;
}

}  // namespace dorix::recogniser
