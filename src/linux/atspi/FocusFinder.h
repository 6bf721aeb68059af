#pragma once

#include "linux/atspi/AtspiProtocol.h"
#include "platform/Accessibility.h"

#include <expected>
#include <utility>

namespace dorix {

class ApplicationDirectory;
class AtspiClient;
class FocusTracker;

/// Where in an application the focus is. What events told is verified with one question; only when they told
/// nothing (the focus was there before us) is it searched for, within the active window and bounded. Main
/// executor; blocks within the client's budget.
class FocusFinder {
 public:
    FocusFinder(AtspiClient& client, FocusTracker& tracker, ApplicationDirectory& directory,
                ObjectRef application)
        : client_(client), tracker_(tracker), directory_(directory), application_(std::move(application)) {}

    /// noValue only when the application is known to tell of its focus, and nothing in its active window has
    /// it.
    std::expected<ObjectRef, AXError> focusedElement();

    /// noValue when none of its windows is active.
    std::expected<ObjectRef, AXError> activeWindow();

 private:
    using Found = std::expected<ObjectRef, AXError>;

    Found reported();
    Found reportedByPart();
    Found searched();
    Found searchBelow(const ObjectRef& window);
    bool hasFocus(const ObjectRef& object);
    bool isBelow(const ObjectRef& object, const ObjectRef& ancestor);

    AtspiClient& client_;
    FocusTracker& tracker_;
    ApplicationDirectory& directory_;
    const ObjectRef application_;
};

}  // namespace dorix
