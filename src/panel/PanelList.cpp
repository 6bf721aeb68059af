#include "panel/PanelList.h"

#include "localdata/Language.h"
#include "panel/PanelSections.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

using Change = PanelListChange::Kind;

// Folding waits until the panel has opened, and lets the user's events in between.
constexpr double warmUpDelay = 0.3;  // seconds
constexpr double warmUpPause = 0.01;

constexpr auto gone = static_cast<std::size_t>(-1);  // the place of an item that has just been removed

/// Whether two rows show the same, whatever place a day begins at by now.
bool isSameRow(const PanelRow& one, const PanelRow& other) {
    const bool isDay = one.kind == PanelRow::Kind::day;
    return one.kind == other.kind && one.day == other.day && (isDay || one.place == other.place);
}

}  // namespace

PanelList::PanelList(Executor& executor, AppState& state, HistoryStore& history)
    : executor_(executor),
      state_(state),
      history_(history),
      index_(history.items()),
      labels_(executor.date()),
      midnight_(executor),
      warmUp_(executor) {
    subscriptions_.push_back(
        history.observe([this](const HistoryChange& change) { historyChanged(change); }));
    subscriptions_.push_back(state.section.subscribe([this](PanelSection) { resetRows(); }));
    subscriptions_.push_back(state.query.subscribe([this](const std::string&) { search(); }));
    subscriptions_.push_back(state.panelOpen.subscribe([this](bool open) { follow(open); }));
    takeDays();
    search();
    follow(state.panelOpen.get());
}

Subscription PanelList::observe(std::function<void(const PanelListChange&)> observer) {
    return observers_.add(std::move(observer));
}

std::optional<std::size_t> PanelList::rowOf(std::size_t place) const {
    // Both kinds of rows are in the order of their places, and a day's row is just above its first item's.
    const auto after = std::ranges::upper_bound(rows_, place, {}, &PanelRow::place);
    if (after == rows_.begin() || (after - 1)->place != place) return std::nullopt;
    return static_cast<std::size_t>(after - rows_.begin()) - 1;
}

// While the panel is open

void PanelList::follow(bool panelOpen) {
    midnight_.stop();
    warmUp_.stop();
    if (!panelOpen) return;
    // The computer may have travelled since, and with it the time of every item.
    if (refreshTimeZone()) {
        retranslate();
    } else {
        refreshDays();
    }
    armMidnight();
    warmUp_.once(warmUpDelay, [this] { warmUp(); });
}

void PanelList::armMidnight() {
    midnight_.once(labels_.today().end - executor_.date(), [this] {
        refreshDays();
        armMidnight();
    });
}

void PanelList::warmUp() {
    if (index_.warmUp()) warmUp_.once(warmUpPause, [this] { warmUp(); });
}

// What changes

void PanelList::historyChanged(const HistoryChange& change) {
    using enum HistoryChange::Kind;
    const auto place = static_cast<std::ptrdiff_t>(change.index);
    switch (change.kind) {
        case inserted:
            index_.inserted(change.index);
            days_.insert(days_.begin() + place, labels_.label(history_.items()[change.index].createdAt));
            for (auto& row : rows_) row.place += row.place >= change.index ? 1 : 0;
            replaceRows(makeRows());
            break;
        case removed:
            index_.removed(change.index);
            days_.erase(days_.begin() + place);
            takeOut(change.index);
            break;
        case updated:
            itemUpdated(change.index);
            break;
        case reset:
            index_.reset();
            takeDays();
            resetRows();
            break;
    }
    refreshDays();
}

void PanelList::takeOut(std::size_t place) {
    for (auto& row : rows_) {
        if (row.place > place) {
            --row.place;
        } else if (row.place == place && row.kind == PanelRow::Kind::item) {
            row.place = gone;
        }
    }
    replaceRows(makeRows());
}

void PanelList::itemUpdated(std::size_t place) {
    const auto row = rowOf(place);
    const auto day = labels_.label(history_.items()[place].createdAt);
    index_.updated(place);
    if (row.has_value() != isListed(place) || day != days_[place]) {
        days_[place] = day;
        replaceRows(makeRows());
    } else if (row) {
        observers_.notify({.kind = Change::changed, .first = *row, .count = 1});
    }
}

void PanelList::search() {
    index_.search(state_.query.get());
    resetRows();
}

void PanelList::resetRows() {
    rows_ = makeRows();
    observers_.notify({.kind = Change::reset});
}

// Rows

bool PanelList::isOlder(std::size_t place) const {
    const auto oldest = history_.oldestRead();
    return oldest && history_.items()[place].createdAt < *oldest;
}

bool PanelList::isListed(std::size_t place) const {
    if (state_.query.get().empty() && isOlder(place)) return false;
    return index_.matches(place) && shows(state_.section.get(), history_.items()[place].kind);
}

PanelList::Rows PanelList::makeRows() const {
    Rows rows;
    DayLabels::Label day = nullptr;
    bool older = false;
    for (std::size_t place = 0; place < days_.size(); ++place) {
        if (!isListed(place)) continue;
        if (!older && isOlder(place)) {
            older = true;
            day = nullptr;
            rows.push_back({.kind = PanelRow::Kind::day, .place = place, .day = &olderLabel_});
        }
        if (days_[place] != day) {
            day = days_[place];
            rows.push_back({.kind = PanelRow::Kind::day, .place = place, .day = day});
        }
        rows.push_back({.kind = PanelRow::Kind::item, .place = place, .day = day});
    }
    return rows;
}

/// Tells of what lies between the rows that stay at the top and those that stay at the bottom.
void PanelList::replaceRows(Rows rows) {
    const auto top = std::ranges::mismatch(rows_, rows, isSameRow).in1 - rows_.begin();
    const auto [oldBottom, newBottom] =
        std::mismatch(rows_.rbegin(), rows_.rend() - top, rows.rbegin(), rows.rend() - top, isSameRow);
    const auto removed = static_cast<std::size_t>(oldBottom.base() - rows_.begin() - top);
    const auto inserted = static_cast<std::size_t>(newBottom.base() - rows.begin() - top);
    const auto first = static_cast<std::size_t>(top);
    if (removed > 0) {
        rows_.assign(rows.begin(), rows.begin() + top);
        rows_.insert(rows_.end(), newBottom.base(), rows.end());
        observers_.notify({.kind = Change::removed, .first = first, .count = removed});
    }
    rows_ = std::move(rows);
    if (inserted > 0) observers_.notify({.kind = Change::inserted, .first = first, .count = inserted});
}

// Days

void PanelList::refreshDays() {
    if (labels_.today().contains(executor_.date())) return;
    const Rows before = rows_;
    if (nameDays()) tellRenamed(before);
}

void PanelList::retranslate() {
    if (!nameDays() || rows_.empty()) return;
    observers_.notify({.kind = Change::changed, .first = 0, .count = rows_.size()});
}

/// Whether the rows are the same ones under other names; otherwise that they are not has been told.
bool PanelList::nameDays() {
    labels_.refresh(executor_.date());
    takeDays();
    auto rows = makeRows();
    // Days that had one label each may have one for both now, or the other way.
    if (!std::ranges::equal(rows_, rows, {}, &PanelRow::kind, &PanelRow::kind)) {
        resetRows();
        return false;
    }
    rows_ = std::move(rows);
    return true;
}

void PanelList::tellRenamed(const Rows& before) {
    const auto isRenamed = [&](std::size_t row) { return rows_[row].day != before[row].day; };
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        const std::size_t first = row;
        while (row < rows_.size() && isRenamed(row)) ++row;
        if (row > first) observers_.notify({.kind = Change::changed, .first = first, .count = row - first});
    }
}

void PanelList::takeDays() {
    olderLabel_ = tr("Más antiguo");
    days_.clear();
    for (const auto& item : history_.items()) days_.push_back(labels_.label(item.createdAt));
}

}  // namespace dorix
