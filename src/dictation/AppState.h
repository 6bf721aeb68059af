#pragma once

#include "base/Observable.h"
#include "dictation/WorkingKeys.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace dorix {

/// What the HUD shows: a state of the recording, or a message with its text in the app language.
struct HUDPhase {
    enum class Kind : std::uint8_t { done, info, error, learned, hidden, listening, processing };

    Kind kind = Kind::hidden;
    std::string text;

    static HUDPhase done(std::string text) { return {Kind::done, std::move(text)}; }
    static HUDPhase info(std::string text) { return {Kind::info, std::move(text)}; }
    static HUDPhase error(std::string text) { return {Kind::error, std::move(text)}; }
    static HUDPhase learned(std::string text) { return {Kind::learned, std::move(text)}; }
    static HUDPhase hidden() { return {Kind::hidden, {}}; }
    static HUDPhase listening() { return {Kind::listening, {}}; }
    static HUDPhase processing() { return {Kind::processing, {}}; }

    bool operator==(const HUDPhase&) const = default;
};

/// The kind's name, for logs and traces.
constexpr std::string_view name(HUDPhase::Kind kind) {
    constexpr std::array<std::string_view, 7> names{"done",   "info",      "error",     "learned",
                                                    "hidden", "listening", "processing"};
    return names.at(std::to_underlying(kind));
}

/// The filter of the panel.
enum class PanelSection { todo, dictado, preguntas, reunion, busqueda, accion };

/// What the program can do beside writing what is said: texts teach nothing else.
struct Abilities {
    bool answers = false;
    bool meetings = false;
    bool memory = false;  // to search
    bool actions = false;

    bool operator==(const Abilities&) const = default;
};

/// What the screen shows. The flow sets it, views render it. Main executor.
struct AppState {
    enum class FocusTarget { composer, search };

    Observable<bool> panelOpen;
    Observable<bool> accountOpen;
    Observable<bool> onboardingOpen;
    Observable<bool> practises;  // a field of our own has the cursor, and takes what is dictated
    Observable<bool> settingsOpen;
    Observable<bool> panelAnchorRight;
    Observable<PanelSection> section;
    Observable<std::optional<std::string>> selectedID;
    Observable<std::string> query;
    Observable<bool> searchesOlder;  // for it, in what is not listed
    Observable<HUDPhase> hud;
    Observable<bool> handsFree;
    Observable<bool> asking;
    Observable<bool> hidesWords;  // what is being said is a secret
    Observable<bool> composerScreen;
    Observable<std::string> panelOver;  // the application in front of which the panel opened; "" for none
    Observable<bool> meetingActive;
    Observable<bool> composerRecording;
    Observable<std::string> composerText;
    Observable<std::optional<FocusTarget>> focusRequest;
    Observable<bool> showFirstRunHint;
    Observable<WorkingKeys> keys;
    Observable<Abilities> abilities;
};

}  // namespace dorix
