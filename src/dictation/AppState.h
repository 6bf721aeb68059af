#pragma once

#include "base/Observable.h"
#include "dictation/HUDPhase.h"

#include <optional>
#include <string>

namespace dorix {

/// The filter of the panel.
enum class PanelSection { todo, dictado, preguntas, reunion, busqueda, accion };

/// What the screen shows. The flow sets it, views render it. Main executor.
struct AppState {
    enum class FocusTarget { composer, search };

    Observable<bool> panelOpen;
    Observable<bool> panelAnchorRight;
    Observable<PanelSection> section;
    Observable<std::optional<std::string>> selectedID;
    Observable<std::string> query;
    Observable<HUDPhase> hud;
    Observable<bool> handsFree;
    Observable<bool> asking;
    Observable<bool> composerScreen;
    Observable<bool> meetingActive;
    Observable<bool> composerRecording;
    Observable<std::string> composerText;
    Observable<std::optional<FocusTarget>> focusRequest;
    Observable<bool> showFirstRunHint;
};

}  // namespace dorix
