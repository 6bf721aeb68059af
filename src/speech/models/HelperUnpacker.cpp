#include "speech/models/HelperUnpacker.h"

#include "base/async/Completion.h"
#include "base/async/Timer.h"
#include "base/text/Line.h"
#include "recognition/Frames.h"
#include "recognition/UnpackOrder.h"

#include <exception>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

constexpr auto program = "dorix-recogniser";
constexpr double patience = 120;  // seconds

/// What the process answers, which ends with the first thing that it says.
struct Answer {
    FrameReader reader;
    Completion<void> unpacked;

    void take(std::string_view bytes) {
        reader.take(bytes);
        const auto frame = reader.next();
        if (frame && frame->kind == Frame::Kind::unpacked) {
            unpacked.complete();
        } else if (frame || reader.isBroken()) {
            fail(frame ? text::asLine(frame->body) : "no answer");
        }
    }
    void fail(const std::string& why) const { unpacked.fail(std::make_exception_ptr(MessageError(why))); }
};

}  // namespace

Task<void> HelperUnpacker::unpack(UnpackRequest request) {
    Answer answer;
    const auto process = processes_.launch(
        program, {.onBytes = [&answer](std::string_view bytes) { answer.take(bytes); },
                  .onEnd = [&answer](const std::string& how) { answer.fail("dorix-recogniser: " + how); }});
    if (!process) throw MessageError("dorix-recogniser: no se pudo iniciar");
    const UnpackOrder order{.archive = std::move(request.archive),
                            .folder = std::move(request.folder),
                            .files = std::move(request.files),
                            .largest = request.largest};
    process->send(encoded(Frame{Frame::Kind::unpack, encoded(order)}));
    Timer tooLong(main_);
    tooLong.once(patience, [&answer] { answer.fail("dorix-recogniser: no responde"); });
    co_await answer.unpacked;
}

}  // namespace dorix
