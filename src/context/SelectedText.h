#pragma once

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

}  // namespace dorix
