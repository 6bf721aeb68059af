#include "linux/atspi/FocusFinder.h"

#include "linux/atspi/ApplicationDirectory.h"
#include "linux/atspi/AtspiClient.h"
#include "linux/atspi/FocusTracker.h"

#include <deque>
#include <ranges>
#include <utility>

namespace dorix {

namespace {

using atspi::State;

constexpr int maxDepth = 60;
constexpr int maxVisits = 200;

}  // namespace

std::expected<ObjectRef, AXError> FocusFinder::focusedElement() {
    auto found = reported();
    if (!found) found = reportedByPart();
    if (!found) found = searched();
    return found;
}

std::expected<ObjectRef, AXError> FocusFinder::activeWindow() {
    const auto* told = tracker_.find(application_.bus);
    if (told && told->activeWindow) {
        ObjectRef window{application_.bus, *told->activeWindow};
        if (atspi::has(client_.states(window).value_or(0), State::active)) return window;
    }
    const auto windows = client_.children(application_);
    if (!windows) return std::unexpected(windows.error());
    for (const auto& window : *windows) {
        const auto states = client_.states(window);
        if (!states) return std::unexpected(states.error());
        if (atspi::has(*states, State::active)) return window;
    }
    return std::unexpected(AXError::noValue);
}

FocusFinder::Found FocusFinder::reported() {
    const auto* known = tracker_.find(application_.bus);
    if (!known || !known->focus) return std::unexpected(AXError::noValue);
    // A copy: the calls below take in what the bus has to tell, such as that the application has gone.
    const auto told = *known;
    ObjectRef focus{application_.bus, *told.focus};
    if (!hasFocus(focus)) return std::unexpected(AXError::noValue);
    if (told.focusMayBeBehind && !isBelow(focus, {application_.bus, *told.activeWindow})) {
        return std::unexpected(AXError::noValue);
    }
    return focus;
}

/// A web view's contents may be another process, which tells of the focus under a connection of its own; its
/// parents lead up into the application that shows it.
FocusFinder::Found FocusFinder::reportedByPart() {
    const auto places = tracker_.places();
    for (const auto& place : places | std::views::reverse) {
        if (place.bus == application_.bus) continue;
        // Another application, we ourselves among them, is not asked: it may hang, and this one's budget is
        // not for it.
        if (directory_.isApplication(client_, place.bus)) continue;
        if (isBelow(place, application_) && hasFocus(place)) return place;
    }
    return std::unexpected(AXError::noValue);
}

FocusFinder::Found FocusFinder::searched() {
    const auto window = activeWindow();
    // An application in front that has no active window does not tell all.
    if (!window) return std::unexpected(AXError::cannotComplete);
    auto found = client_.firstBelow(*window, State::focused);
    // Toolkits that cannot search say so with errors of all kinds.
    const bool searches =
        found || found.error() == AXError::noValue || found.error() == AXError::cannotComplete;
    if (!searches) found = searchBelow(*window);
    if (found) {
        tracker_.focusGained(*found);
        return found;
    }
    // Only of one that is known to tell is nothing found the same as nothing there: many show no more than
    // the frame of their window.
    const auto* told = tracker_.find(application_.bus);
    const bool certain = told && told->tellsOfFocus && found.error() == AXError::noValue;
    return std::unexpected(certain ? AXError::noValue : AXError::cannotComplete);
}

/// Level by level through what shows, for applications that cannot search themselves.
FocusFinder::Found FocusFinder::searchBelow(const ObjectRef& window) {
    std::deque<ObjectRef> left{window};
    for (int visits = 0; !left.empty(); ++visits) {
        if (visits == maxVisits) return std::unexpected(AXError::cannotComplete);
        ObjectRef object = std::move(left.front());
        left.pop_front();
        const auto states = client_.states(object);
        if (!states) return std::unexpected(states.error());
        if (atspi::has(*states, State::focused) && object != window) return object;
        if (!atspi::has(*states, State::showing) && object != window) continue;
        if (atspi::has(*states, State::managesDescendants)) continue;
        const auto children = client_.children(object);
        if (!children) return std::unexpected(children.error());
        if (children->size() == AtspiClient::maxChildren) return std::unexpected(AXError::cannotComplete);
        left.insert(left.end(), children->begin(), children->end());
    }
    return std::unexpected(AXError::noValue);
}

bool FocusFinder::hasFocus(const ObjectRef& object) {
    const auto states = client_.states(object).value_or(0);
    return atspi::has(states, State::focused) && !atspi::has(states, State::defunct);
}

bool FocusFinder::isBelow(const ObjectRef& object, const ObjectRef& ancestor) {
    ObjectRef at = object;
    for (int depth = 0; depth < maxDepth; ++depth) {
        if (at == ancestor) return true;
        auto parent = client_.parent(at);
        if (!parent) return false;
        at = std::move(*parent);
    }
    return false;
}

}  // namespace dorix
