#include "dictation/WrittenText.h"

#include "base/Uuid.h"
#include "base/async/Executor.h"
#include "base/async/Sleep.h"
#include "base/text/Text.h"
#include "context/TextInsertion.h"
#include "localdata/HistoryStore.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "platform/Workspace.h"

#include <utility>
#include <vector>

namespace dorix {

namespace {

constexpr double activationWait = 0.18;
constexpr std::size_t keptOfSelection = 300;
constexpr std::size_t styleExampleCount = 3;
constexpr std::size_t shortestStyleExample = 40;

std::vector<std::string> styleExamples(const HistoryStore& history, std::string_view toneLabel) {
    std::vector<std::string> examples;
    for (const auto& item : history.items()) {
        if (item.kind == HistoryKind::dictado && item.meta.tone == toneLabel && item.meta.inserted == true &&
            text::length(item.answer) > shortestStyleExample) {
            examples.push_back(item.answer);
            if (examples.size() == styleExampleCount) break;
        }
    }
    return examples;
}

HUDPhase done(std::string_view format, const AppContext& context) {
    return HUDPhase::done(formatText(tr(format), {tr(context.displayName)}));
}

}  // namespace

WrittenText::WrittenText(Executor& executor, SettingsStore& settings, HistoryStore& history,
                         TextInserter& inserter, Workspace& workspace, HUDFlash& hud)
    : executor_(executor),
      settings_(settings),
      history_(history),
      inserter_(inserter),
      workspace_(workspace),
      hud_(hud) {}

void WrittenText::prepare() { inserter_.prepare(); }

void WrittenText::forgetPrepared() { inserter_.forgetPrepared(); }

Tone WrittenText::toneFor(const AppContext& context) const {
    return settings_.adaptTone.get() ? context.tone : Tone::neutral;
}

PolishRequest WrittenText::request(const AppContext& context, std::string transcript) const {
    const Tone tone = toneFor(context);
    return {.transcript = std::move(transcript),
            .appName = context.displayName,
            .windowTitle = context.windowTitle,
            .tone = tone,
            .signatureName = settings_.signatureName.get(),
            .screenshot = std::nullopt,
            .editableFocus = std::nullopt,
            .styleNotes = settings_.styleNotes.get(),
            .styleExamples = styleExamples(history_, historyLabel(tone))};
}

Task<void> WrittenText::commit(PolishResult result, std::string transcript, Recording recording, Seen seen) {
    const bool nowhereToType = recording.context.hasEditableFocus == false;
    co_await inserter_.insertText(result.text, !nowhereToType);
    if (nowhereToType) {
        hud_.flash(done("Escrito en %@ · también en el portapapeles (⌘V)", recording.context), 2.4);
    } else {
        hud_.flash(done("Escrito en %@", recording.context), 1.6);
    }
    remember({.kind = HistoryKind::dictado,
              .title = std::move(result.title),
              .query = std::move(transcript),
              .answer = std::move(result.text),
              .meta = {.tone = std::string(historyLabel(toneFor(recording.context))),
                       .engine = std::move(result.engine),
                       .inserted = true,
                       .source = seen == Seen::yes ? "voz · con la conversación" : "voz"}},
             recording);
}

Task<void> WrittenText::replaceSelection(PolishResult result, std::string instruction, std::string selected,
                                         Recording recording) {
    co_await inserter_.insertText(result.text, true);
    hud_.flash(done("Reemplazado en %@", recording.context), 1.6);
    remember({.kind = HistoryKind::seleccion,
              .title = std::move(result.title),
              .query = std::move(instruction),
              .answer = std::move(result.text),
              .meta = {.engine = std::move(result.engine),
                       .inserted = true,
                       .source = "voz",
                       .context = std::string(text::prefix(selected, keptOfSelection))}},
             recording);
}

void WrittenText::keep(const std::string& transcript, const Recording& recording) const {
    remember({.kind = HistoryKind::dictado,
              .title = titleFrom(transcript),
              .query = transcript,
              .answer = transcript,
              .meta = {.inserted = false, .source = "voz"}},
             recording);
}

/// What all that was said has in common is added here.
void WrittenText::remember(HistoryItem item, const Recording& recording) const {
    item.id = makeUuid();
    item.app = recording.context.displayName;
    item.bundleID = recording.context.bundleID;
    item.createdAt = recording.startedAt;
    item.meta.durationMs = static_cast<std::int64_t>((executor_.date() - recording.startedAt) * 1000);
    history_.add(item, HistoryStore::Persist::yes);
}

Task<void> WrittenText::typeAgain(AppContext target, std::string answer) {
    if (target.app) {
        workspace_.activate(*target.app);
        co_await sleep(activationWait);
    }
    const std::string plain = text::replaceAll(text::replaceAll(answer, "**", ""), "`", "");
    co_await inserter_.insertText(plain, true);
    hud_.flash(done("Escrito en %@", target), 1.6);
}

}  // namespace dorix
