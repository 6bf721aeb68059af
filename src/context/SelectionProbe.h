#pragma once

#include "base/async/Task.h"
#include "context/SelectedText.h"
#include "platform/Workspace.h"

#include <optional>

namespace dorix {

/// Looks for selected text in another application. Main executor.
class SelectionProbe {
 public:
    virtual ~SelectionProbe() = default;

    /// What is selected in `app`; nothing when nothing, or only blanks, is selected, or when it cannot be
    /// known. With `insist` it tries harder, which may be seen in the application. Never fails.
    virtual Task<std::optional<SelectedText>> selection(std::optional<RunningApplication> app,
                                                        bool insist) = 0;
};

}  // namespace dorix
