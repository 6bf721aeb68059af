#pragma once

#include "localdata/HistoryItem.h"

#include <functional>

namespace dorix {

/// What the user can ask for in the panel. An absent one belongs to something that this program cannot do
/// (yet): its button is not shown. Main executor.
struct PanelActions {
    using ItemAction = std::function<void(const HistoryItem&)>;

    std::function<void()> close;
    std::function<void()> openSettings;
    std::function<void()> submitComposer;
    std::function<void()> toggleMic;
    ItemAction reinsert;
    ItemAction copy;
    ItemAction remove;
    ItemAction speak;
    std::function<void()> openLearned;
};

}  // namespace dorix
