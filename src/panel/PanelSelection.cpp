#include "panel/PanelSelection.h"

#include "panel/PanelSections.h"

#include <algorithm>

namespace dorix {

PanelSelection::PanelSelection(AppState& state, HistoryStore& history, PanelList& list)
    : state_(state), history_(history), list_(list), shown_(place().has_value()) {
    subscriptions_.push_back(
        history.observe([this](const HistoryChange& change) { historyChanged(change); }));
    subscriptions_.push_back(
        state.section.subscribe([this](PanelSection) { observers_.notify(Change::item); }));
    subscriptions_.push_back(state.selectedID.subscribe([this](const auto&) {
        shown_ = place().has_value();
        observers_.notify(Change::item);
    }));
}

const HistoryItem* PanelSelection::item() const {
    const auto found = place();
    if (!found || !shows(state_.section.get(), history_.items()[*found].kind)) return nullptr;
    return &history_.items()[*found];
}

std::optional<std::size_t> PanelSelection::row() const {
    const auto found = place();
    return found ? list_.rowOf(*found) : std::nullopt;
}

Subscription PanelSelection::observe(std::function<void(Change)> observer) {
    return observers_.add(std::move(observer));
}

/// Looked up rather than followed, so that it is right at any moment of a change.
std::optional<std::size_t> PanelSelection::place() const {
    const auto& id = state_.selectedID.get();
    const auto& items = history_.items();
    if (!id) return std::nullopt;
    if (lastPlace_ < items.size() && items[lastPlace_].id == *id) return lastPlace_;
    const auto found = std::ranges::find(items, *id, &HistoryItem::id);
    if (found == items.end()) return std::nullopt;
    lastPlace_ = static_cast<std::size_t>(found - items.begin());
    return lastPlace_;
}

void PanelSelection::historyChanged(const HistoryChange& change) {
    const bool wasShown = shown_;
    const auto found = place();
    shown_ = found.has_value();
    if (wasShown && !shown_) {
        selectNear(change.index);
    } else if (shown_ && !wasShown) {
        observers_.notify(Change::item);
    } else if (shown_ && change == HistoryChange{HistoryChange::Kind::updated, *found}) {
        observers_.notify(Change::contents);
    }
}

// Moving

/// The rows that can be selected.
std::vector<std::size_t> PanelSelection::itemRows() const {
    std::vector<std::size_t> found;
    for (std::size_t row = 0; row < list_.rows().size(); ++row) {
        if (list_.rows()[row].kind == PanelRow::Kind::item) found.push_back(row);
    }
    return found;
}

/// The item that stands where the one of `place` stood, or else the one above.
void PanelSelection::selectNear(std::size_t place) {
    const auto rows = itemRows();
    if (rows.empty()) return clear();
    const auto near = std::ranges::lower_bound(rows, place, {}, [this](auto row) { return placeOf(row); });
    select(near == rows.end() ? rows.back() : *near);
}

void PanelSelection::move(std::ptrdiff_t items) {
    const auto rows = itemRows();
    if (rows.empty()) return;
    const auto count = std::ssize(rows);
    std::ptrdiff_t at = items > 0 ? -1 : count;
    if (const auto from = place()) {
        const auto near =
            std::ranges::lower_bound(rows, *from, {}, [this](auto row) { return placeOf(row); });
        at = near - rows.begin();
        // From between two rows, the next one down is a step away.
        const bool isListed = near != rows.end() && placeOf(*near) == *from;
        if (!isListed && items > 0) --at;
    }
    select(rows[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(at + items, 0, count - 1))]);
}

void PanelSelection::moveToFirst() {
    const auto rows = itemRows();
    if (!rows.empty()) select(rows.front());
}

void PanelSelection::moveToLast() {
    const auto rows = itemRows();
    if (!rows.empty()) select(rows.back());
}

void PanelSelection::select(std::size_t row) {
    const auto& selected = list_.rows()[row];
    if (selected.kind == PanelRow::Kind::item) state_.selectedID.set(list_.item(selected).id);
}

void PanelSelection::clear() { state_.selectedID.set(std::nullopt); }

}  // namespace dorix
