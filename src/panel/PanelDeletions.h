#pragma once

#include "base/Observable.h"
#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "localdata/HistoryStore.h"

#include <cstddef>
#include <string>
#include <vector>

namespace dorix {

/// Deletes items of the history and takes the last deletions back, one by one, until some time after the last
/// one, until the panel closes or until all of the history is forgotten: what came back after that would
/// be what the user had wanted gone.
///
/// What is deleted leaves the file at once and is kept in memory for the undo. Put off instead, it would come
/// back after a crash, though the user was told that it is gone; this way a crash takes nothing but what was
/// to go. Main executor.
class PanelDeletions {
 public:
    /// All must outlive it.
    PanelDeletions(Executor& executor, AppState& state, HistoryStore& history);
    PanelDeletions(const PanelDeletions&) = delete;
    PanelDeletions& operator=(const PanelDeletions&) = delete;

    /// How many deletions can be taken back.
    Observable<std::size_t> undoable;

    /// Nothing happens for an unknown id.
    void remove(const std::string& id);
    /// Puts the item that was deleted last back where it was, and selects it.
    void undo();

    /// What stands beside the button "Deshacer", in the app language.
    std::string message() const;

 private:
    void forget();

    AppState& state_;
    HistoryStore& history_;
    std::vector<RemovedItem> removed_;
    Timer forget_;
    Subscription closing_;
    Subscription clearing_;
};

}  // namespace dorix
