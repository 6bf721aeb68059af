#pragma once

#include "base/Observable.h"
#include "settings/SettingsRow.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

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

 protected:
    /// The rows are others whenever one of these changes.
    template <typename... Fields>
    void follow(const Fields&... fields) {
        (keep(fields.subscribe([this](const auto&) { onChanged(); })), ...);
    }
    /// Observes something for as long as there is the page.
    void keep(Subscription subscription) { subscriptions_.push_back(std::move(subscription)); }

 private:
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
