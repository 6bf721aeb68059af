#pragma once

#include "base/Observable.h"
#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "localdata/HistoryStore.h"
#include "panel/DayLabels.h"
#include "panel/SearchIndex.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A line of the panel's list: the name of a day, or an item of that day. What is older than what is in
/// memory begins with a line like that of a day.
struct PanelRow {
    enum class Kind { day, item };

    Kind kind = Kind::item;
    /// The item's place in the history; for a day that of its first item.
    std::size_t place = 0;
    DayLabels::Label day = nullptr;

    bool operator==(const PanelRow&) const = default;
};

/// What has just changed in the rows.
struct PanelListChange {
    enum class Kind { inserted, removed, changed, reset };

    Kind kind = Kind::reset;
    std::size_t first = 0;
    std::size_t count = 0;

    bool operator==(const PanelListChange&) const = default;
};

/// The items of the history that the section and the search text leave, grouped by day; what only a search
/// finds stands below a row of its own that says so, while there is a search text. It follows the
/// history, `section`, `query` and, while the panel is open, midnight. Items are never copied. Main executor.
class PanelList {
 public:
    /// All must outlive the list.
    PanelList(Executor& executor, AppState& state, HistoryStore& history);
    PanelList(const PanelList&) = delete;
    PanelList& operator=(const PanelList&) = delete;

    const std::vector<PanelRow>& rows() const { return rows_; }

    /// Of a row of an item. Valid until the history changes.
    const HistoryItem& item(const PanelRow& row) const { return history_.items()[row.place]; }

    /// Tells of every change of rows(), after it; where one change of the history makes several, rows() are
    /// at each as if the later ones had not happened. An observer may not change the history, section or
    /// query.
    Subscription observe(std::function<void(const PanelListChange&)> observer);

    /// The row of an item by its place in the history; nothing when it is not listed.
    std::optional<std::size_t> rowOf(std::size_t place) const;

    /// To be called before the list is drawn, after the computer slept or its clock was set: names the days
    /// anew when today is another day than it was.
    void refreshDays();
    /// Names the days anew, in another language or time zone, and tells that every row has changed.
    void retranslate();

 private:
    using Rows = std::vector<PanelRow>;

    void follow(bool panelOpen);
    void armMidnight();
    void warmUp();
    void historyChanged(const HistoryChange& change);
    void takeOut(std::size_t place);
    void itemUpdated(std::size_t place);
    void search();
    bool isOlder(std::size_t place) const;
    bool isListed(std::size_t place) const;
    Rows makeRows() const;
    void replaceRows(Rows rows);
    void resetRows();
    void takeDays();
    bool nameDays();
    void tellRenamed(const Rows& before);

    Executor& executor_;
    AppState& state_;
    HistoryStore& history_;
    SearchIndex index_;
    DayLabels labels_;
    std::string olderLabel_;
    std::vector<DayLabels::Label> days_;  // of each item of the history
    Rows rows_;
    Observers<PanelListChange> observers_;
    Timer midnight_;
    Timer warmUp_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
