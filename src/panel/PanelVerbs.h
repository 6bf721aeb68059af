#pragma once

#include "localdata/HistoryItem.h"
#include "platform/StatusItem.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

class HistoryPanel;

/// What the user can ask for in the panel and others do. An absent one belongs to something that this program
/// cannot do (yet): it is not offered. Main executor.
struct PanelActions {
    using ItemAction = std::function<void(const HistoryItem&)>;

    std::function<void()> close;
    std::function<void()> openSettings;
    std::function<void()> submitComposer;
    std::function<void()> toggleMic;
    std::function<void()> toggleScreen;
    ItemAction reinsert;
    ItemAction copy;
    ItemAction remove;
    ItemAction speak;
    std::function<void()> openLearned;
};

/// Where the panel offers a verb.
enum class VerbPlace {
    corner,     // of the window
    detail,     // under the selected item
    detailEnd,  // there, at the far end
    itemMenu,   // of the selected item
    panelMenu,
};

/// What stands on a button, beside its label or, for all but the first two, in place of it.
enum class VerbMark { none, done, speak, silence, remove, close };

/// A verb as it is offered just now.
struct PanelOffer {
    std::string_view id;
    std::string label;  // in the app language
    VerbMark mark = VerbMark::none;
    bool isMain = false;  // what Enter does as well

    bool operator==(const PanelOffer&) const = default;
};

/// The verbs that a place offers, in their order: one table holds all that there is to a verb. Main executor.
std::vector<PanelOffer> panelOffers(const HistoryPanel& panel, VerbPlace place);
Menu panelMenu(HistoryPanel& panel, VerbPlace place);

/// Does it, if that makes sense just now; whether it does. Also for verbs that only keys ask for.
bool perform(HistoryPanel& panel, std::string_view verb);

/// Whether perform() would do anything.
bool canPerform(const HistoryPanel& panel, std::string_view verb);

/// The same for a key: it does nothing to an item that the search or the section leaves out of the list,
/// where the user looks when pressing it. The buttons beside the item still do.
bool canPerformByKey(const HistoryPanel& panel, std::string_view verb);

}  // namespace dorix
