#pragma once

#include "linux/atspi/AtspiProtocol.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// Where the focus was last seen, by application, as events tell it. Main executor.
class FocusTracker {
 public:
    struct App {
        std::optional<std::string> focus;
        /// It has told of a focus at least once, so that its silence means something.
        bool tellsOfFocus = false;
        std::optional<std::string> activeWindow;
        /// Another window came to the front after the focus was seen: the focus may be in the one behind.
        bool focusMayBeBehind = false;
    };

    void focusGained(const ObjectRef& object);
    void focusLost(const ObjectRef& object);
    void windowActivated(const ObjectRef& window);
    void windowDeactivated(const ObjectRef& window);
    /// The connection of an application is closed.
    void gone(const std::string& bus);

    /// What is known of the application; nothing when it has not told anything yet.
    const App* find(const std::string& bus) const;

    /// The place of each connection that has the focus as far as it has told, the latest last: a part of an
    /// application may live in a process of its own, and others may have told of theirs since.
    const std::vector<ObjectRef>& places() const { return places_; }

 private:
    std::map<std::string, App> apps_;
    std::vector<ObjectRef> places_;
};

}  // namespace dorix
