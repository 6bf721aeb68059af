#pragma once

#include "card/AnswerCardPresenter.h"
#include "overlay/AppWindow.h"
#include "panel/HistoryPanel.h"
#include "platform/DesktopAppearance.h"
#include "views/FloatingOnDemand.h"
#include "views/FormOnDemand.h"
#include "views/Surroundings.h"
#include "views/overlay/IconView.h"

namespace dorix {

class AccountForm;
class Onboarding;
class SettingsForm;

/// What the user sees: the icon, the HUD beside it, the panel, the answer's card, the account's window, that
/// of the first run and the settings. They render the state and call the verbs; they decide nothing. Main
/// thread.
class Views {
 public:
    /// Needs an application that can draw. What it is given must outlive the views.
    Views(Surroundings& surroundings, AppState& state, SettingsStore& settings, SpeechInput& speech,
          HistoryPanel& panel, AnswerCardPresenter& card, AccountForm& account, Onboarding& onboarding,
          SettingsForm& form, IconView::Verbs verbs);
    Views(const Views&) = delete;
    Views& operator=(const Views&) = delete;

    /// The windows, as the core drives them.
    AppWindows windows() {
        return {.icon = &icon_,
                .panel = &panel_,
                .card = &card_,
                .account = &account_,
                .onboarding = &onboarding_,
                .settings = &settings_};
    }

 private:
    IconView icon_;
    FloatingOnDemand panel_;
    FloatingOnDemand card_;
    FormOnDemand account_;
    FormOnDemand onboarding_;
    FormOnDemand settings_;
};

}  // namespace dorix
