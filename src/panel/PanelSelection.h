#pragma once

#include "panel/PanelList.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace dorix {

/// Which item of the history the panel shows: the one that `AppState.selectedID` names. One that the section
/// or the search leaves out stays selected, so that nothing vanishes while the user types; moving on starts
/// from its place. A section of another kind shows nothing of it until the user comes back. When it is
/// deleted the next older listed one follows, or else the next newer. Main executor.
class PanelSelection {
 public:
    enum class Change {
        item,      // another one shows, or none
        contents,  // the one that shows has changed
    };

    /// All must outlive it.
    PanelSelection(AppState& state, HistoryStore& history, PanelList& list);
    PanelSelection(const PanelSelection&) = delete;
    PanelSelection& operator=(const PanelSelection&) = delete;

    /// The selected item; null when there is none. Valid until the history changes.
    const HistoryItem* item() const;
    /// Its row; nothing when it is not listed.
    std::optional<std::size_t> row() const;

    /// Tells of what item() gives. An observer may not change the history.
    Subscription observe(std::function<void(Change)> observer);

    /// Moves over the listed items by that many, up with a negative number, and stops at the ends. With
    /// nothing selected it comes from above the first item, or from below the last one.
    void move(std::ptrdiff_t items);
    void moveToFirst();
    void moveToLast();

    /// Selects the item of that row; nothing happens for the row of a day.
    void select(std::size_t row);
    void clear();

 private:
    std::optional<std::size_t> place() const;
    std::size_t placeOf(std::size_t row) const { return list_.rows()[row].place; }
    void historyChanged(const HistoryChange& change);
    std::vector<std::size_t> itemRows() const;
    void selectNear(std::size_t place);

    AppState& state_;
    HistoryStore& history_;
    PanelList& list_;
    mutable std::size_t lastPlace_ = 0;  // where the selected item was found last
    bool shown_;                         // the selected item was there at the last look
    Observers<Change> observers_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
