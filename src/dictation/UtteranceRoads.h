#pragma once

#include "dictation/HUDFlash.h"
#include "dictation/Recording.h"
#include "dictation/Route.h"
#include "dictation/WrittenText.h"
#include "routing/Utterance.h"

#include <functional>
#include <string>
#include <utility>

namespace dorix {

struct DictationEnvironment;
struct SelectedText;

/// Decides what a finished utterance wants, in a fixed order, and carries it there. One at a time. Main
/// executor; both references outlive it and its tasks.
class UtteranceRoads {
 public:
    UtteranceRoads(const DictationEnvironment& env, HUDFlash& hud)
        : env_(env), hud_(hud), written_(env, hud) {}

    /// Called when it is decided where an utterance goes, before it goes there.
    std::function<void(Route)> onRoute = [](Route) {};

    /// An utterance that is to be written, unless its words tell otherwise.
    Task<void> write(std::string transcript, Recording recording);

    /// A question about what the user sees. A command is obeyed here too; with nobody to answer, nothing
    /// happens.
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
    Task<void> plain(Spoken spoken);
    Task<void> answer(Spoken spoken);

    /// Somebody else goes on with it and shows what there is to see.
    void handOver(Route route) const;
    void hideHUD() const;

    const DictationEnvironment& env_;
    HUDFlash& hud_;
    WrittenText written_;
};

}  // namespace dorix
