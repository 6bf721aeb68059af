#pragma once

#include "linux/atspi/AccessibilityBus.h"
#include "platform/Accessibility.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace dorix {

/// What the elements of one look at an application share.
struct AtspiLook {
    /// Weak: elements may outlive the adapter, and then give apiDisabled.
    std::weak_ptr<AccessibilityBus> bus;
    const Executor& clock;
    double deadline = 0;
    std::int32_t process = 0;
    std::function<std::optional<std::string>(std::int32_t process)> windowTitle;
};

/// The application's own element, the top of the look.
AXUIElementRef makeApplicationElement(std::shared_ptr<const AtspiLook> look);

}  // namespace dorix
