#pragma once

#include "dictation/AppState.h"
#include "dictation/HUDFlash.h"
#include "dictation/Recorder.h"
#include "dictation/WrittenText.h"
#include "routing/Utterance.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace dorix {

class Actions;
class Assistant;
class DocumentReader;
class Meeting;
class SelectionProbe;
class Teaching;
class Writer;
struct SelectedText;

/// Where an utterance went.
enum class Route : std::uint8_t {
    selectionRewrite,
    assistantSelection,
    assistantScreen,
    meetingStart,
    meetingStop,
    teachStart,
    teachDone,
    action,
    recap,
    search,
    replyPolish,
    writeOrAskWrite,
    plain,
};

/// The route's name, for logs and traces.
constexpr std::string_view name(Route route) {
    constexpr std::array<std::string_view, 13> names{"selectionRewrite",
                                                     "assistantSelection",
                                                     "assistantScreen",
                                                     "meetingStart",
                                                     "meetingStop",
                                                     "teachStart",
                                                     "teachDone",
                                                     "action",
                                                     "recap",
                                                     "search",
                                                     "replyPolish",
                                                     "writeOrAskWrite",
                                                     "plain"};
    return names.at(std::to_underlying(route));
}

/// Who may take an utterance that is not to be written. A null pointer is a subsystem that is not there: the
/// roads that need it are not taken.
struct Destinations {
    Assistant* assistant = nullptr;
    Meeting* meeting = nullptr;
    Actions* actions = nullptr;
    Teaching* teaching = nullptr;
    DocumentReader* documents = nullptr;  // reads what a question is about
    bool hasMemory = false;               // that the assistant can search
};

/// What these can do, for the texts that teach it.
constexpr Abilities abilitiesOf(const Destinations& there) {
    const bool answers = there.assistant != nullptr;
    return {.answers = answers,
            .meetings = there.meeting != nullptr,
            .memory = answers && there.hasMemory,
            .actions = there.actions != nullptr};
}

/// Decides what a finished utterance wants, in a fixed order, and carries it there. One at a time. Main
/// executor; what it is given outlives it and its tasks.
class UtteranceRoads {
 public:
    UtteranceRoads(Writer& writer, SelectionProbe& selection, Accessibility& accessibility,
                   WrittenText& written, HUDFlash& hud, const Destinations& destinations);

    /// Called when it is decided where an utterance goes, before it goes there.
    std::function<void(Route)> onRoute = [](Route) {};

    /// Something to write for this place is likely to come.
    void announce(const AppContext& context);

    /// An utterance that is to be written, unless its words tell otherwise.
    Task<void> write(std::string transcript, Recording recording);

    /// A question about what the user sees. A command is obeyed here too; with nobody to answer, the HUD says
    /// so and the words are in the history.
    Task<void> ask(std::string transcript, Recording recording);

 private:
    /// An utterance on its way. The tests look at `words`, which is made once.
    struct Spoken {
        std::string transcript;
        Recording recording;
        Utterance words{transcript};

        const AppContext& context() const { return recording.context; }
    };

    Task<bool> takenBySelection(Spoken spoken);
    Task<void> rewrite(Spoken spoken, SelectedText selected);
    bool takenByCommand(const Spoken& spoken);
    bool takenByAssistant(const Spoken& spoken);
    bool isOrderByPlace(const Spoken& spoken) const;
    void propose(const Spoken& spoken);
    Task<void> reply(Spoken spoken);
    Task<void> writeOrAsk(Spoken spoken);
    Task<void> secret(Spoken spoken);
    Task<void> plain(Spoken spoken);
    Task<void> answer(Spoken spoken);

    /// Somebody else goes on with it and shows what there is to see.
    void handOver(Route route) const;

    Writer& writer_;
    SelectionProbe& selection_;
    Accessibility& accessibility_;
    WrittenText& written_;
    HUDFlash& hud_;
    const Destinations to_;
};

}  // namespace dorix
