#include "shell/EventTrace.h"

#include "base/Log.h"

#include <system_error>
#include <utility>

namespace dorix {

namespace {

/// Others must not read what the user said; the permissions of a file that stands already are its owner's
/// affair.
std::FILE* openForAppending(const std::filesystem::path& path) {
    std::error_code ignored;
    const bool isNew = !std::filesystem::exists(path, ignored);
    std::FILE* file = std::fopen(path.c_str(), "ae");
    using std::filesystem::perms;
    if (file != nullptr && isNew) {
        std::filesystem::permissions(path, perms::owner_read | perms::owner_write, ignored);
    }
    return file;
}

std::string phaseOf(const std::optional<AnswerCard>& card) {
    if (!card) return "none";
    if (card->error) return "failed";
    if (!card->streaming) return "finished";
    return card->answer.empty() ? "waiting" : "streaming";
}

}  // namespace

EventTrace::EventTrace(const std::filesystem::path& file, Executor& executor, const AppState& state,
                       const Observable<bool>& busy, const Observable<std::optional<std::string>>& speakingID)
    : executor_(executor), file_(openForAppending(file)) {
    if (!file_) {
        logLine("the trace could not be opened: " + file.string());
        return;
    }
    subscriptions_.push_back(state.hud.subscribe(
        [this](const HUDPhase& phase) { write({{"hud", name(phase.kind)}, {"text", phase.text}}); }));
    subscriptions_.push_back(state.panelOpen.subscribe([this](bool open) { write({{"panelOpen", open}}); }));
    subscriptions_.push_back(busy.subscribe([this](bool isBusy) { write({{"busy", isBusy}}); }));
    subscriptions_.push_back(
        speakingID.subscribe([this](const auto& id) { write({{"speaking", id.has_value()}}); }));
}

void EventTrace::route(Route route) { write({{"route", name(route)}}); }

void EventTrace::follow(const Observable<std::optional<AnswerCard>>& card) {
    subscriptions_.push_back(card.subscribe([this](const auto& shown) {
        const auto phase = phaseOf(shown);
        if (std::exchange(cardPhase_, phase) != phase) write({{"card", phase}});
    }));
}

void EventTrace::write(Json event) {
    if (!file_) return;
    event["at"] = executor_.date();
    const std::string line = event.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    std::fputs(line.c_str(), file_.get());
    std::fflush(file_.get());
}

}  // namespace dorix
