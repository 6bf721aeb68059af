#include "dictation/WrittenText.h"

#include "assistant/AnswerText.h"
#include "base/async/Executor.h"
#include "base/async/Sleep.h"
#include "base/text/Pieces.h"
#include "base/text/Text.h"
#include "context/CursorGap.h"
#include "context/TextInsertion.h"
#include "context/UserClipboard.h"
#include "localdata/HistoryStore.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace dorix {

namespace {

constexpr double activationWait = 0.18;
constexpr double longWriting = 0.5;  // seconds after which a crash would cost what was said
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

/// At the end of a sentence the rules take it for a filler; alone it is an answer.
bool agrees(const std::string& transcript) {
    const auto words = text::alphanumericRuns(transcript);
    return !words.empty() &&
           std::ranges::all_of(words, [](auto word) { return text::lowercase(word) == "vale"; });
}

std::string named(std::string_view format, const AppContext& context) {
    return formatText(tr(format), {tr(context.displayName)});
}

}  // namespace

WrittenText::WrittenText(Executor& executor, SettingsStore& settings, HistoryStore& history,
                         UserClipboard& clipboard, TextInserter& inserter, Workspace& workspace,
                         Accessibility& accessibility, HUDFlash& hud)
    : executor_(executor),
      settings_(settings),
      history_(history),
      clipboard_(clipboard),
      inserter_(inserter),
      workspace_(workspace),
      accessibility_(accessibility),
      hud_(hud) {}

void WrittenText::prepare() { clipboard_.prepare(); }

void WrittenText::forgetPrepared() { clipboard_.forget(); }

Task<void> WrittenText::settled() const { return clipboard_.settled(); }

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
    if (result.text.empty() && agrees(transcript)) {
        result.text = text::capitalizeFirst(text::trim(transcript));
        result.title = titleFrom(result.text);
    }
    HistoryItem item{.kind = HistoryKind::dictado,
                     .title = std::move(result.title),
                     .query = std::move(transcript),
                     .answer = std::move(result.text),
                     .meta = {.tone = std::string(historyLabel(toneFor(recording.context))),
                              .engine = std::move(result.engine),
                              .source = seen == Seen::yes ? "voz · con la conversación" : "voz"}};
    co_await write(std::move(item), std::move(recording),
                   {"Escrito en %@", "Escrito en %@ · también en el portapapeles (⌘V)"});
}

Task<void> WrittenText::replaceSelection(PolishResult result, std::string instruction, std::string selected,
                                         Recording recording, Selection now) {
    // There is a selection, so there is something to type over.
    recording.context.hasEditableFocus = true;
    HistoryItem item{.kind = HistoryKind::seleccion,
                     .title = std::move(result.title),
                     .query = std::move(instruction),
                     .answer = std::move(result.text),
                     .meta = {.engine = std::move(result.engine),
                              .source = "voz",
                              .context = std::string(text::prefix(selected, keptOfSelection))}};
    co_await write(std::move(item), std::move(recording), {"Reemplazado en %@", "Reemplazado en %@"},
                   now == Selection::stands);
}

Task<void> WrittenText::write(HistoryItem item, Recording recording, DoneTexts texts, bool isTyped) {
    if (item.answer.empty()) {
        if (!item.query.empty()) keep(item.query, recording);
        hud_.flash(HUDPhase::info(tr("No había nada que escribir.")), 2.4);
        co_return;
    }
    const bool isSecret = recording.context.hasSecretFocus;
    item.meta.inserted = true;
    const auto insertion = inserter_.insertText(
        {.text = item.answer,
         .lead = [this, item, context = recording.context] { return leadOf(item, context); },
         .target = recording.context.app,
         .hasCursor = recording.context.hasEditableFocus != false,
         .isTyped = isTyped,
         .isSecret = isSecret});
    // At once, whatever becomes of the program, but the stroke does not wait for the disk.
    if (!isSecret) remember(item, recording);
    const auto receipt = co_await insertion.throughStop();
    tell(receipt, recording.context, texts);
    if (receipt.delivery == InsertionReceipt::Delivery::delivered && isOwn(recording.context))
        onWrittenHere();
    if (isSecret || receipt.delivery == InsertionReceipt::Delivery::delivered) co_return;
    // Unless the user has deleted it meanwhile.
    if (std::ranges::find(history_.items(), item.id, &HistoryItem::id) == history_.items().end()) co_return;
    item.meta.inserted = false;
    history_.add(item, HistoryStore::Persist::yes);
}

bool WrittenText::isOwn(const AppContext& context) const {
    return context.bundleID == workspace_.ownBundleIdentifier();
}

/// Seen when its turn has come: the sentence before may have been typed since this one was begun. What
/// replaces a selection stands as that stood.
std::string WrittenText::leadOf(const HistoryItem& item, const AppContext& context) const {
    if (item.kind != HistoryKind::dictado || !context.app) return "";
    if (isOwn(context)) return wantsGap(beforeOwnCursor(), item.answer) ? " " : "";
    if (!context.tellsCursor) return "";
    return gapBefore(item.answer, *context.app, accessibility_);
}

void WrittenText::tell(const InsertionReceipt& receipt, const AppContext& context, const DoneTexts& texts) {
    using enum InsertionReceipt::Delivery;
    using enum Pasteboard::Reading::State;
    if (receipt.delivery != delivered && !receipt.isOnClipboard) {
        const std::string words = context.hasSecretFocus
                                      ? tr("No se ha podido escribir.")
                                      : tr("No se ha podido escribir · el texto está en tu historial");
        return hud_.flash(HUDPhase::error(words), 4.0);
    }
    switch (receipt.delivery) {
        case delivered:
            break;
        case elsewhere:
            return hud_.flash(
                HUDPhase::info(tr("Has cambiado de ventana · el texto está en el portapapeles (⌘V)")), 4.0);
        case nowhere:
            return hud_.flash(
                HUDPhase::info(tr("No hay dónde escribir · el texto está en el portapapeles (⌘V)")), 4.0);
        case untaken:
        case refused:
            return hud_.flash(
                HUDPhase::info(named("%@ no ha recogido el texto · está en el portapapeles (⌘V)", context)),
                4.0);
    }
    if (receipt.isOnClipboard) {
        hud_.flash(HUDPhase::done(named(texts.alsoOnClipboard, context)), 2.4);
    } else if (receipt.clipboard == partial || receipt.clipboard == unreadable) {
        const std::string lost = receipt.clipboard == partial
                                     ? tr("%@ · del portapapeles solo ha vuelto una parte")
                                     : tr("%@ · no se ha podido devolver lo que había en el portapapeles");
        hud_.flash(HUDPhase::done(formatText(lost, {named(texts.written, context)})), 4.0);
    } else {
        hud_.flash(HUDPhase::done(named(texts.written, context)), 1.6);
    }
}

void WrittenText::tellUndelivered(const InsertionReceipt& receipt,
                                  const std::optional<RunningApplication>& target) {
    if (receipt.delivery == InsertionReceipt::Delivery::delivered) return;
    AppContext context;
    if (target) context.displayName = target->localizedName.value_or("App");
    tell(receipt, context, {"Reemplazado en %@", "Reemplazado en %@"});
}

std::unique_ptr<Timer> WrittenText::keepMeanwhile(std::string transcript, Recording recording) {
    auto timer = std::make_unique<Timer>(executor_);
    timer->once(longWriting, [this, transcript = std::move(transcript), recording = std::move(recording)] {
        keep(transcript, recording);
    });
    return timer;
}

void WrittenText::keep(const std::string& transcript, const Recording& recording) const {
    if (recording.context.hasSecretFocus) return;
    HistoryItem item{.kind = HistoryKind::dictado,
                     .title = titleFrom(transcript),
                     .query = transcript,
                     .answer = transcript,
                     .meta = {.inserted = false, .source = "voz"}};
    remember(item, recording);
}

/// What all that was said has in common is added here.
void WrittenText::remember(HistoryItem& item, const Recording& recording) const {
    item.id = recording.id;
    item.app = recording.context.displayName;
    item.bundleID = keptIdentifier(recording.context);
    item.createdAt = recording.startedAt;
    item.meta.durationMs = static_cast<std::int64_t>((executor_.date() - recording.startedAt) * 1000);
    history_.add(item, HistoryStore::Persist::yes);
}

Task<void> WrittenText::typeAgain(AppContext target, std::string answer) {
    if (target.app) {
        workspace_.activate(*target.app);
        co_await sleep(activationWait);
    }
    const std::string plain = withoutMarks(answer);
    if (plain.empty()) co_return;
    const auto receipt = co_await inserter_.insertText({.text = plain, .target = target.app}).throughStop();
    tell(receipt, target, {"Escrito en %@", "Escrito en %@"});
}

}  // namespace dorix
