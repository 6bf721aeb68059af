#include "dictation/UtteranceRoads.h"

#include "actions/Actions.h"
#include "assistant/Assistant.h"
#include "base/Error.h"
#include "base/async/Timeout.h"
#include "context/SelectionProbe.h"
#include "dictation/FrontDocument.h"
#include "learning/Teaching.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "meeting/Meeting.h"
#include "routing/IntentRules.h"
#include "writing/TextPolisher.h"

#include <exception>
#include <optional>
#include <utility>
#include <variant>

namespace dorix {

using namespace IntentRules;

namespace {

/// Seconds. The next dictation waits as long, and the picture of the window tells much the same.
constexpr double documentPatience = 5;

bool isTalkingToAI(const AppContext& context) {
    return isAIChat(context.bundleID, context.windowTitle, context.pageURL);
}

/// The few commands that are obeyed even while the user talks to another assistant.
bool isForThisProgram(const Utterance& words) {
    return matchesMeetingStart(words) || matchesMeetingStop(words) || isTeach(words) ||
           matchesTeachDone(words);
}

/// Most text that cannot tell can be written over; a page in a browser usually cannot.
bool isEditable(const SelectedText& selected, const AppContext& context) {
    return selected.editable.value_or(!isBrowser(context.bundleID));
}

bool mayHaveCursor(const AppContext& context) { return context.hasEditableFocus != false; }

}  // namespace

UtteranceRoads::UtteranceRoads(Writer& writer, SelectionProbe& selection, Accessibility& accessibility,
                               WrittenText& written, HUDFlash& hud, const Destinations& destinations)
    : writer_(writer),
      selection_(selection),
      accessibility_(accessibility),
      written_(written),
      hud_(hud),
      to_(destinations) {}

void UtteranceRoads::announce(const AppContext& context) {
    if (writer_.cloudEnabled()) {
        writer_.connect();
    } else {
        writer_.prewarm(written_.request(context, ""));
    }
}

void UtteranceRoads::handOver(Route route) const {
    onRoute(route);
    hud_.setProcessing(false);
}

Task<void> UtteranceRoads::write(std::string transcript, Recording recording) {
    Spoken spoken{std::move(transcript), std::move(recording)};
    if (spoken.context().hasSecretFocus) co_return co_await secret(std::move(spoken));
    if (co_await takenBySelection(spoken)) co_return;
    if (isTalkingToAI(spoken.context()) && !isForThisProgram(spoken.words))
        co_return co_await plain(std::move(spoken));
    if (takenByCommand(spoken)) co_return spoken.recording.shot.cancel();
    if (isOrderByPlace(spoken)) {
        spoken.recording.shot.cancel();
        co_return propose(spoken);
    }
    if (isReply(spoken.words)) co_return co_await reply(std::move(spoken));
    if (isSelectionCommand(spoken.words) || refersToScreen(spoken.words))
        co_return co_await writeOrAsk(std::move(spoken));
    co_await plain(std::move(spoken));
}

// The selection

Task<bool> UtteranceRoads::takenBySelection(Spoken spoken) {
    const bool orders = isTransform(spoken.words);
    if (to_.assistant == nullptr || !(orders || isSelectionCommand(spoken.words))) co_return false;
    const AppContext& context = spoken.context();
    auto selected = co_await selection_.selection(context.app, refersToSelection(spoken.words));
    if (!selected) co_return false;
    spoken.recording.shot.cancel();
    if (orders && isEditable(*selected, context)) {
        onRoute(Route::selectionRewrite);
        co_await rewrite(std::move(spoken), *std::move(selected));
    } else {
        handOver(Route::assistantSelection);
        to_.assistant->ask({.question = spoken.transcript,
                            .kind = HistoryKind::seleccion,
                            .context = context,
                            .selection = std::move(selected)});
    }
    co_return true;
}

Task<void> UtteranceRoads::rewrite(Spoken spoken, SelectedText selected) {
    const auto keeping = written_.keepMeanwhile(spoken.transcript, spoken.recording);
    Assistant::Rewrite rewritten;
    try {
        rewritten = co_await to_.assistant->transform(spoken.transcript, selected.text);
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        hud_.flash(HUDPhase::error(localizedDescription(std::current_exception())), 3.5);
        written_.keep(spoken.transcript, spoken.recording);
        co_return;
    }
    const bool isAnother = co_await isAnotherSelected(selection_, spoken.context().app, selected.text);
    keeping->stop();
    co_await written_.replaceSelection(
        {.title = titleFrom(spoken.transcript),
         .text = std::move(rewritten.text),
         .engine = std::move(rewritten.engine)},
        spoken.transcript, std::move(selected.text), std::move(spoken.recording),
        isAnother ? WrittenText::Selection::isAnother : WrittenText::Selection::stands);
}

// Commands

bool UtteranceRoads::takenByCommand(const Spoken& spoken) {
    const Utterance& words = spoken.words;
    if (to_.meeting != nullptr && matchesMeetingStart(words)) {
        handOver(Route::meetingStart);
        to_.meeting->start();
    } else if (to_.meeting != nullptr && to_.meeting->isLive() && matchesMeetingStop(words)) {
        handOver(Route::meetingStop);
        to_.meeting->finish();
    } else if (to_.teaching != nullptr && to_.teaching->isTeaching() && matchesTeachDone(words)) {
        handOver(Route::teachDone);
        to_.teaching->finishTeaching();
    } else if (to_.teaching != nullptr && isTeach(words)) {
        handOver(Route::teachStart);
        to_.teaching->startTeaching();
    } else if (to_.actions != nullptr && isAction(words)) {
        propose(spoken);
    } else {
        return takenByAssistant(spoken);
    }
    return true;
}

bool UtteranceRoads::takenByAssistant(const Spoken& spoken) {
    if (to_.assistant == nullptr) return false;
    if (isRecap(spoken.words)) {
        handOver(Route::recap);
        to_.assistant->recap(spoken.transcript, spoken.context());
    } else if (isSearch(spoken.words)) {
        handOver(Route::search);
        to_.assistant->searchMemory(spoken.transcript, spoken.context());
    } else {
        return false;
    }
    return true;
}

/// In a calendar with no text field in focus, speech can only mean an order.
bool UtteranceRoads::isOrderByPlace(const Spoken& spoken) const {
    const auto& context = spoken.context();
    return to_.actions != nullptr && context.hasEditableFocus != true &&
           (context.bundleID == "com.apple.iCal" || context.bundleID == "com.apple.reminders");
}

void UtteranceRoads::propose(const Spoken& spoken) {
    handOver(Route::action);
    to_.actions->propose(spoken.transcript, spoken.context());
}

// Writing

Task<void> UtteranceRoads::reply(Spoken spoken) {
    onRoute(Route::replyPolish);
    auto shot = co_await spoken.recording.shot.shot();
    auto request = written_.request(spoken.context(), spoken.transcript);
    const auto seen = shot ? WrittenText::Seen::yes : WrittenText::Seen::no;
    if (shot) request.screenshot = std::move(shot->jpeg);
    const auto keeping = written_.keepMeanwhile(spoken.transcript, spoken.recording);
    auto result = co_await writer_.polish(std::move(request));
    keeping->stop();
    co_await written_.commit(std::move(result), std::move(spoken.transcript), std::move(spoken.recording),
                             seen);
}

Task<void> UtteranceRoads::writeOrAsk(Spoken spoken) {
    if (mayHaveCursor(spoken.context()) && !isScreenQuestion(spoken.words)) {
        auto request = written_.request(spoken.context(), spoken.transcript);
        request.editableFocus = spoken.context().hasEditableFocus;
        const auto keeping = written_.keepMeanwhile(spoken.transcript, spoken.recording);
        auto judged = co_await writer_.writeOrAsk(std::move(request));
        keeping->stop();
        if (auto* result = std::get_if<PolishResult>(&judged)) {
            onRoute(Route::writeOrAskWrite);
            spoken.recording.shot.cancel();
            co_await written_.commit(std::move(*result), std::move(spoken.transcript),
                                     std::move(spoken.recording), WrittenText::Seen::no);
            co_return;
        }
    }
    if (to_.assistant == nullptr) {
        // Nobody answers: what was said with the writing key is at least not lost.
        co_await plain(std::move(spoken));
        co_return;
    }
    hud_.setAsking();
    co_await ask(std::move(spoken.transcript), std::move(spoken.recording));
}

Task<void> UtteranceRoads::plain(Spoken spoken) {
    onRoute(Route::plain);
    spoken.recording.shot.cancel();
    const auto keeping = written_.keepMeanwhile(spoken.transcript, spoken.recording);
    auto result = co_await writer_.polish(written_.request(spoken.context(), spoken.transcript));
    keeping->stop();
    co_await written_.commit(std::move(result), std::move(spoken.transcript), std::move(spoken.recording),
                             WrittenText::Seen::no);
}

/// What goes into a password field is nobody else's: no service is told of it, and no order is seen in it.
Task<void> UtteranceRoads::secret(Spoken spoken) {
    onRoute(Route::plain);
    spoken.recording.shot.cancel();
    auto result = co_await writer_.byRule(written_.request(spoken.context(), spoken.transcript));
    co_await written_.commit(std::move(result), std::move(spoken.transcript), std::move(spoken.recording),
                             WrittenText::Seen::no);
}

// Asking

Task<void> UtteranceRoads::ask(std::string transcript, Recording recording) {
    Spoken spoken{std::move(transcript), std::move(recording)};
    if (takenByCommand(spoken)) {
        spoken.recording.shot.cancel();
    } else if (to_.assistant == nullptr) {
        spoken.recording.shot.cancel();
        const bool isKept = !spoken.context().hasSecretFocus;
        const std::string words =
            isKept ? tr("Todavía no hay asistente que responda. Lo que has dicho está en el historial.")
                   : tr("Todavía no hay asistente que responda.");
        hud_.flash(HUDPhase::info(words), 4.0);
        written_.keep(spoken.transcript, spoken.recording);
    } else {
        co_await answer(std::move(spoken));
    }
}

Task<void> UtteranceRoads::answer(Spoken spoken) {
    const AppContext& context = spoken.context();
    Assistant::Request request{
        .question = spoken.transcript, .kind = HistoryKind::screen, .context = context};
    request.selection = co_await selection_.selection(context.app, refersToSelection(spoken.words));
    request.shot = co_await spoken.recording.shot.shot();
    if (request.selection) {
        request.kind = HistoryKind::seleccion;
    } else if (to_.documents != nullptr) {
        auto reading = readFrontDocument(accessibility_, *to_.documents, context.app);
        if (auto document = co_await withTimeout(std::move(reading), documentPatience))
            request.document = *std::move(document);
    }
    handOver(request.selection ? Route::assistantSelection : Route::assistantScreen);
    to_.assistant->ask(std::move(request));
}

}  // namespace dorix
