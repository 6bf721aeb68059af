#pragma once

#include "base/Observable.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// What a row of the settings does when the user works it. Main executor; what means nothing for a kind of
/// row does nothing.
struct SettingsActions {
    std::function<void(bool on)> toggle = [](bool) {};
    std::function<void(const std::string& option)> choose = [](const std::string&) {};
    /// Of every change, and once the user is through with it.
    std::function<void(const std::string& text)> edit = [](const std::string&) {};
    std::function<void(const std::string& text)> commit = [](const std::string&) {};
    std::function<void(const std::string& button)> press = [](const std::string&) {};

    /// Rows are the same when they show the same.
    bool operator==(const SettingsActions&) const { return true; }
};

/// One row of the settings, its texts in the app language. Those that a kind has no use for are empty.
struct SettingsRow {
    enum class Kind {
        heading,
        toggle,
        choice,
        text,
        item,  // something with a state, and buttons for what can be done about it
    };
    enum class Tone { plain, good, warning, wrong };
    struct Option {
        std::string id;
        std::string label;
        std::string note;

        bool operator==(const Option&) const = default;
    };
    struct Button {
        std::string id;
        std::string label;
        bool isChief = false;
        bool isAvailable = true;

        bool operator==(const Button&) const = default;
    };

    Kind kind = Kind::heading;
    std::string id;  // the same as long as the row is about the same thing
    std::string label;
    std::string description;
    std::string status;
    Tone tone = Tone::plain;  // of the status

    bool isOn = false;  // of a toggle or a lamp

    std::vector<Option> options;
    std::string chosen;

    std::string text;
    std::string example;
    bool isSecret = false;
    int lines = 1;

    std::vector<Button> buttons;
    std::optional<double> progress;  // 0 to 1
    bool showsLevel = false;         // of the microphone
    std::string quote;               // what was heard
    std::string lamp;

    SettingsActions actions;

    bool operator==(const SettingsRow&) const = default;
};

using SettingsRows = std::vector<SettingsRow>;

namespace settingsrow {

SettingsRow heading(std::string id, std::string label);

/// A setting that is on or off; it outlives the row.
SettingsRow toggle(std::string id, std::string label, std::string description, Observable<bool>& setting);

SettingsRow choice(std::string id, std::string label, std::string description,
                   std::vector<SettingsRow::Option> options, std::string chosen,
                   std::function<void(const std::string&)> choose);

/// A setting that is kept at every change; it outlives the row.
SettingsRow field(std::string id, std::string label, std::string description,
                  Observable<std::string>& setting);

/// A text that nobody is to read over the user's shoulder. It counts when the user is through with it.
SettingsRow secret(std::string id, std::string label, std::string description, std::string text);

SettingsRow item(std::string id, std::string label, std::string description);

}  // namespace settingsrow

}  // namespace dorix
