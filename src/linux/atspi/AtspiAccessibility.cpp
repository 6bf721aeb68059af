#include "linux/atspi/AtspiAccessibility.h"

#include "linux/atspi/AccessibilityBus.h"
#include "linux/atspi/AtspiElements.h"

#include <utility>

namespace dorix {

AtspiAccessibility::AtspiAccessibility(Executor& executor, FdWatcher& watcher, WindowTitle windowTitle)
    : executor_(executor),
      windowTitle_(std::move(windowTitle)),
      bus_(std::make_shared<AccessibilityBus>(executor, watcher)) {
    bus_->connect();
}

AtspiAccessibility::~AtspiAccessibility() = default;

AXUIElementRef AtspiAccessibility::createApplication(std::int32_t processIdentifier, double budget) {
    // Events that wait in the socket count: the focus may have moved just now.
    if (auto* connection = bus_->connection()) connection->pump();
    bus_->connect();
    return makeApplicationElement(std::make_shared<AtspiLook>(
        AtspiLook{bus_, executor_, executor_.now() + budget, processIdentifier, windowTitle_}));
}

bool AtspiAccessibility::isAvailable() const { return bus_->connection() != nullptr; }

}  // namespace dorix
