#include "panel/OlderItems.h"

#include "base/async/Executor.h"
#include "base/text/Text.h"
#include "localdata/HistorySearch.h"

#include <string>
#include <utility>

namespace dorix {

namespace {
constexpr double pauseInTyping = 0.25;  // seconds
}

OlderItems::OlderItems(Executor& executor, AppState& state, HistoryStore& history,
                       std::filesystem::path database)
    : state_(state), history_(history), database_(std::move(database)), pause_(executor), tasks_(executor) {
    subscriptions_.push_back(state.query.subscribe([this](const std::string&) { begin(); }));
    subscriptions_.push_back(history.observe([this](const HistoryChange& change) {
        // What has been deleted meanwhile may be among what is being found.
        const bool isLoss =
            change.kind == HistoryChange::Kind::removed || change.kind == HistoryChange::Kind::reset;
        if (isLoss && state_.searchesOlder.get()) begin();
    }));
}

OlderItems::~OlderItems() { stop(); }

void OlderItems::begin() {
    stop();
    const auto folded = text::fold(text::trim(state_.query.get()));
    if (folded.empty() || !history_.oldestRead()) return;
    state_.searchesOlder.set(true);
    pause_.once(pauseInTyping, [this, folded] { tasks_.spawn(search(folded, stop_.get_token())); });
}

void OlderItems::stop() {
    stop_.request_stop();
    stop_ = std::stop_source();
    pause_.stop();
    state_.searchesOlder.set(false);
}

Task<void> OlderItems::search(std::string folded, std::stop_token stop) {
    if (!disk_) disk_.emplace(SerialExecutor::AtEnd::drop);
    const double before = *history_.oldestRead();
    const auto found = co_await runOn(*disk_, [database = database_, folded, before, stop] {
        return searchHistory(database, folded, before, limit, stop);
    });
    if (stop.stop_requested()) co_return;
    state_.searchesOlder.set(false);
    history_.showOlder(found);
}

}  // namespace dorix
