#pragma once

#include "shell/panel/PanelList.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace dorix {

/// Which item of the history the panel shows: the one that `AppState.selectedID` names. One that the section
/// or the search leaves out stays selected, so that nothing vanishes while the user types; moving on starts
/// from its place. When it is deleted the next older listed one follows, or else the next newer. Main executor.
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
    /// nothing selected the first step selects the first item (the last one, upwards).
    void move(std::ptrdiff_t items);
    void moveToFirst();
    void moveToLast();

    /// Selects the item of that row; nothing happens for the row of a day.
    void select(std::size_t row);
    void clear();

 private:
    void historyChanged(const HistoryChange& change);
    void selectedIDChanged();
    std::optional<std::size_t> placeOf(const std::optional<std::string>& id) const;
    void selectNear(std::size_t place);

    AppState& state_;
    HistoryStore& history_;
    PanelList& list_;
    std::optional<std::size_t> place_;  // of the selected item in the history
    Observers<Change> observers_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
