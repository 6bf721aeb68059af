#pragma once

#include "base/async/Task.h"
#include "platform/Workspace.h"

#include <optional>
#include <string>

namespace dorix {

/// What the user has selected in another application.
struct SelectedText {
    /// As it stands there, not trimmed.
    std::string text;
    /// Whether it can be written over; none for unknown.
    std::optional<bool> editable;

    bool operator==(const SelectedText&) const = default;
};

/// Looks for selected text in another application. Main executor.
class SelectionProbe {
 public:
    virtual ~SelectionProbe() = default;

    /// What is selected in `app`; nothing when nothing, or only blanks, is selected, or when it cannot be
    /// known. With `insist` it tries harder, which may be seen in the application. Never fails.
    virtual Task<std::optional<SelectedText>> selection(std::optional<RunningApplication> app,
                                                        bool insist) = 0;
};

/// Whether something else than `text` is selected in `app` by now. Where that is not told without insisting,
/// it counts as unchanged: no reason to leave a text untyped.
Task<bool> isAnotherSelected(SelectionProbe& probe, std::optional<RunningApplication> app, std::string text);

}  // namespace dorix
