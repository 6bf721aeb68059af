#pragma once

#include "dictation/AppState.h"
#include "localdata/SettingsStore.h"
#include "panel/HistoryPanel.h"
#include "platform/ClosureMenuItem.h"
#include "platform/DesktopAppearance.h"
#include "speech/SpeechInput.h"

#include <functional>
#include <memory>
#include <string>

namespace dorix {

/// What the user sees: the icon, the HUD beside it and the panel. They render the state and call the verbs;
/// they decide nothing. Main executor.
class Views {
 public:
    /// What they show. All must outlive the views.
    struct Environment {
        Executor& executor;
        UserDefaults& defaults;
        AppState& state;
        SettingsStore& settings;
        SpeechInput& speech;
        HistoryPanel& panel;
        DesktopAppearance& appearance;
    };

    /// What the user can ask for.
    struct Verbs {
        std::function<void()> iconClicked = [] {};
        /// In the app language; asked anew when that changes.
        std::function<std::string()> iconTooltip = [] { return std::string(); };
        MenuBuilder iconMenu;
    };

    /// Needs an application that can draw.
    Views(const Environment& environment, Verbs verbs);
    ~Views();
    Views(const Views&) = delete;
    Views& operator=(const Views&) = delete;

    /// Shows the icon, where the user left it.
    void showIcon();

    /// The panel's window: takes its place beside the icon (whether on the right of it), comes up with the
    /// keyboard, and goes. It begins to fade when the state says that it is closed.
    bool placePanel();
    void showPanel();
    void hidePanel();
    /// Gives it the keyboard while it is open.
    void focusPanel();
    /// It is about to close because of a click in another application.
    void panelClickedOutside();

 private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace dorix
