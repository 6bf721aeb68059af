#include "panel/PanelDeletions.h"

#include "localdata/Language.h"

#include <cstdint>
#include <utility>

namespace dorix {

namespace {
constexpr double timeToUndo = 10;  // seconds since the last deletion
}

PanelDeletions::PanelDeletions(Executor& executor, AppState& state, HistoryStore& history)
    : state_(state),
      history_(history),
      forget_(executor),
      closing_(state.panelOpen.subscribe([this](bool open) {
          if (!open) forget();
      })),
      clearing_(history.observe([this](const HistoryChange& change) {
          if (change.kind == HistoryChange::Kind::reset && history_.items().empty()) forget();
      })) {}

void PanelDeletions::remove(const std::string& id) {
    auto removed = history_.remove(id);
    if (!removed) return;
    removed_.push_back(*std::move(removed));
    undoable.set(removed_.size());
    forget_.once(timeToUndo, [this] { forget(); });
}

void PanelDeletions::undo() {
    if (removed_.empty()) return;
    const RemovedItem last = std::move(removed_.back());
    removed_.pop_back();
    history_.restore(last);
    state_.selectedID.set(last.item.id);
    undoable.set(removed_.size());
    if (removed_.empty()) {
        forget_.stop();
    } else {
        forget_.once(timeToUndo, [this] { forget(); });
    }
}

std::string PanelDeletions::message() const {
    if (removed_.size() == 1) return tr("1 elemento borrado");
    return formatText(tr("%d elementos borrados"), {static_cast<std::int64_t>(removed_.size())});
}

void PanelDeletions::forget() {
    forget_.stop();
    removed_.clear();
    undoable.set(0);
}

}  // namespace dorix
