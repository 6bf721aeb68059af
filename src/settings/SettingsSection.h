#pragma once

#include "settings/SettingsRow.h"

#include <functional>
#include <string>

namespace dorix {

/// A page of the settings. Main executor.
class SettingsSection {
 public:
    SettingsSection() = default;
    virtual ~SettingsSection() = default;
    SettingsSection(const SettingsSection&) = delete;
    SettingsSection& operator=(const SettingsSection&) = delete;

    /// By which others name it.
    virtual std::string id() const = 0;
    /// In the app language, as the rows are.
    virtual std::string title() const = 0;
    /// As things stand. Answers from memory: rows are asked for at each change.
    virtual SettingsRows rows() = 0;

    /// Rows of it come into sight: what nobody tells of is looked at anew, and followed.
    virtual void shown() {}
    /// None is in sight any more: nothing is followed, and what went on for the eye alone ends.
    virtual void hidden() {}
    /// Gives up what waits for the user's second word; whether there was any.
    virtual bool stepBack() { return false; }

    /// The rows are others than they were.
    std::function<void()> onChanged = [] {};
};

}  // namespace dorix
