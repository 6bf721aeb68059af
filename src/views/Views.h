#pragma once

#include "dictation/AppState.h"
#include "localdata/SettingsStore.h"
#include "overlay/AppWindow.h"
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

    /// The windows, as the core drives them.
    AppWindows windows();

 private:
    struct Parts;
    class IconOnScreen;
    class PanelOnDemand;
    std::unique_ptr<Parts> parts_;
};

}  // namespace dorix
