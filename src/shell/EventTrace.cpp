#include "shell/EventTrace.h"

#include "base/Log.h"

#include <string>
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

}  // namespace

EventTrace::EventTrace(const std::filesystem::path& file, Executor& executor, const AppState& state,
                       const Observable<bool>& busy)
    : executor_(executor), file_(openForAppending(file)) {
    if (!file_) {
        logLine("the trace could not be opened: " + file.string());
        return;
    }
    subscriptions_.push_back(state.hud.subscribe(
        [this](const HUDPhase& phase) { write({{"hud", name(phase.kind)}, {"text", phase.text}}); }));
    subscriptions_.push_back(state.panelOpen.subscribe([this](bool open) { write({{"panelOpen", open}}); }));
    subscriptions_.push_back(busy.subscribe([this](bool isBusy) { write({{"busy", isBusy}}); }));
}

void EventTrace::route(Route route) { write({{"route", name(route)}}); }

void EventTrace::write(Json event) {
    if (!file_) return;
    event["at"] = executor_.date();
    const std::string line = event.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    std::fputs(line.c_str(), file_.get());
    std::fflush(file_.get());
}

}  // namespace dorix
