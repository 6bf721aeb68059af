#include "shell/Toasts.h"

#include "dictation/DictationController.h"
#include "localdata/SettingsStore.h"

namespace dorix {

bool Toasts::show(const std::string& text) {
    const bool disturbs = !dictation_.isIdle() || state_.panelOpen.get() || state_.meetingActive.get();
    if (disturbs || settings_.paused.get()) return false;
    dictation_.flash(HUDPhase::learned(text), 5.0);
    return true;
}

}  // namespace dorix
