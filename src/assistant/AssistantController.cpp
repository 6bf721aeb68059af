#include "assistant/AssistantController.h"

#include "assistant/AnswerRecords.h"
#include "assistant/AnswerText.h"
#include "assistant/GrowingText.h"
#include "assistant/WithoutModel.h"
#include "base/Log.h"
#include "base/Uuid.h"
#include "base/async/Sleep.h"
#include "base/text/Text.h"
#include "context/TextInsertion.h"
#include "localdata/HistoryStore.h"
#include "localdata/Language.h"
#include "memory/Memory.h"
#include "platform/Workspace.h"
#include "writing/TextPolisher.h"

#include <cstddef>
#include <exception>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t mostHits = 8;
constexpr double activationWait = 0.18;  // seconds, until the focus has arrived

std::string couldNotAnswer(const std::string& why) {
    return formatText(tr("No se pudo responder: %@"), {why});
}

}  // namespace

AssistantController::AssistantController(const Parts& parts)
    : parts_(parts), engines_(parts.engines), tasks_(parts.executor) {}

// Questions

void AssistantController::ask(Request request) {
    const auto to = show(std::move(request));
    start(run(lastRequest_, to), to);
}

void AssistantController::searchMemory(std::string question, AppContext context) {
    const auto to =
        show({.question = std::move(question), .kind = HistoryKind::busqueda, .context = std::move(context)},
             Material::memory);
    start(searchRoad(to), to);
}

Task<void> AssistantController::searchRoad(OnCard to) {
    Request request = *lastRequest_;
    request.memory = co_await parts_.memory.search(request.question, mostHits);
    if (request.memory.empty())
        co_return settle(to, nothingFound(request.question, parts_.memory, parts_.messages));
    request.sources = sourcesOf(request.memory);
    co_await runWith(std::move(request), std::move(to));
}

void AssistantController::recap(std::string question, AppContext context) {
    const auto to =
        show({.question = std::move(question), .kind = HistoryKind::busqueda, .context = std::move(context)},
             Material::activity);
    start(recapRoad(to), to);
}

Task<void> AssistantController::recapRoad(OnCard to) {
    Request request = *lastRequest_;
    if (!parts_.memory.notesActivity()) co_return settle(to, nothingDone(parts_.memory));
    auto done = co_await parts_.memory.recap();
    if (text::trim(done.text).empty()) co_return settle(to, nothingDone(parts_.memory));
    request.recap = std::move(done.text);
    request.sources = sourcesOf(done.documents);
    co_await runWith(std::move(request), std::move(to));
}

void AssistantController::summarizeMeeting(MeetingNotes notes) {
    AppContext context;
    context.displayName = notes.appName;
    Request request{
        .question = tr("Resumen de la reunión"),
        .kind = HistoryKind::reunion,
        .context = std::move(context),
        .mode = "meeting_summary",
        .transcript = std::move(notes.transcript),
        .meetingTitle = notes.title,
        .historyTitle = notes.title,
        .historyQuery = formatText(tr("%d min · %@ · transcripción local"), {notes.minutes, notes.appName})};
    if (notes.file)
        request.sources.push_back({.title = tr("Transcripción completa"), .path = notes.file->string()});
    const auto to = show(std::move(request), Material::given, tr("Preparando el resumen de la reunión…"));
    start(run(lastRequest_, to), to);
}

std::string AssistantController::askFromComposer(std::string text, AppContext target, bool withScreen) {
    HistoryItem row{.id = makeUuid(),
                    .kind = withScreen ? HistoryKind::screen : HistoryKind::pregunta,
                    .app = target.displayName,
                    .bundleID = keptIdentifier(target),
                    .title = titleFrom(text),
                    .createdAt = parts_.executor.date(),
                    .query = text};
    parts_.history.add(row, HistoryStore::Persist::no);
    growing_.insert(row.id);
    Request request{.question = std::move(text), .kind = row.kind, .context = std::move(target)};
    tasks_.spawn(guarded(composed(std::move(request), row, withScreen), row));
    return row.id;
}

Task<void> AssistantController::composed(Request request, HistoryItem row, bool withScreen) {
    if (withScreen && parts_.screen != nullptr)
        request.shot = co_await ShotTask(tasks_, *parts_.screen, request.context.app).shot();
    co_await run(std::make_shared<const Request>(std::move(request)), std::move(row));
}

void AssistantController::retry() {
    if (!card.get() || !lastRequest_) return;
    AnswerCard again = lastCard_;
    again.id = makeUuid();
    if (const auto search = searchFor(wanting_)) again.waiting = search->waiting;
    const auto to = publish(std::move(again));
    start(roadTo(wanting_, to), to);
}

std::optional<AssistantController::Search> AssistantController::searchFor(Material material) {
    switch (material) {
        case Material::memory:
            return Search{.place = tr("Memoria"), .waiting = tr("Buscando en tu memoria…")};
        case Material::activity:
            return Search{.place = tr("Tu actividad"), .waiting = tr("Repasando tu actividad…")};
        case Material::given:
            break;
    }
    return std::nullopt;
}

/// What was not found the last time may be there by now.
Task<void> AssistantController::roadTo(Material material, OnCard to) {
    switch (material) {
        case Material::memory:
            return searchRoad(std::move(to));
        case Material::activity:
            return recapRoad(std::move(to));
        case Material::given:
            break;
    }
    return run(lastRequest_, std::move(to));
}

// The card

/// The card of a question; `waiting` stands for the answer until more is known.
AssistantController::OnCard AssistantController::show(Request request, Material material,
                                                      std::optional<std::string> waiting) {
    keepFailed();
    lastRequest_ = std::make_shared<const Request>(std::move(request));
    wanting_ = material;
    lastCard_ = cardFor(*lastRequest_);
    const auto search = searchFor(material);
    if (search) lastCard_.appName = search->place;
    AnswerCard shown = lastCard_;
    if (search) shown.waiting = search->waiting;
    if (waiting) shown.waiting = std::move(waiting);
    auto to = publish(std::move(shown));
    onShowCard();
    return to;
}

/// From now on nothing that was under way for the card before reaches it.
AssistantController::OnCard AssistantController::publish(AnswerCard shown) {
    if (task_) task_->cancel();
    runningCard_ = shown.id;
    card.set(std::move(shown));
    return {.id = runningCard_};
}

void AssistantController::start(Task<void> road, const OnCard& to) {
    isAnswering_ = true;
    task_ = tasks_.spawn(guarded(std::move(road), to));
}

void AssistantController::close() {
    keepFailed();
    card.set(std::nullopt);
    onHideCard();
}

bool AssistantController::isCurrent(const OnCard& to) const { return to.id == runningCard_; }

void AssistantController::change(const OnCard& to, const std::function<void(AnswerCard&)>& how) {
    if (!card.get() || card.get()->id != to.id) return;
    AnswerCard changed = *card.get();
    how(changed);
    card.set(std::move(changed));
}

/// Answers without a model, and keeps nothing of it.
void AssistantController::settle(const OnCard& to, std::string text) {
    if (isCurrent(to)) isAnswering_ = false;
    change(to, [&](AnswerCard& shown) {
        shown.answer = std::move(text);
        shown.streaming = false;
        shown.waiting.reset();
    });
}

// Answering

/// Goes on with a question for which there is material now.
Task<void> AssistantController::runWith(Request material, OnCard to) {
    if (!isCurrent(to)) co_return;
    change(to, [&](AnswerCard& shown) { shown.sources = material.sources; });
    lastCard_.sources = material.sources;
    wanting_ = Material::given;
    lastRequest_ = std::make_shared<const Request>(std::move(material));
    co_await run(lastRequest_, std::move(to));
}

Task<void> AssistantController::run(SharedRequest request, Sink sink) {
    const double begun = parts_.executor.now();
    GrowingText partial(parts_.executor, [&](const std::string& text) {
        std::visit([&](auto& to) { grow(to, text); }, sink);
    });
    std::optional<AnswerEngines::Answer> answer;
    try {
        answer = co_await engines_.answer(request, [&](std::string_view text) { partial.grow(text); });
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        partial.flush();
        throw;
    }
    const double duration = parts_.executor.now() - begun;
    std::visit([&](auto& to) { finish(to, *request, *answer, duration); }, sink);
}

/// The failure of a road is told where its answer would have gone; one that is cancelled leaves no trace.
Task<void> AssistantController::guarded(Task<void> road, Sink sink) {
    std::exception_ptr failure;
    try {
        co_await std::move(road);
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        failure = std::current_exception();
    }
    if (!failure) co_return;
    logLine("error del asistente: " + describedIn(LogLanguage::spanish, failure));
    std::visit([&](auto& to) { fail(to, localizedDescription(failure)); }, sink);
}

void AssistantController::grow(const OnCard& to, const std::string& text) {
    change(to, [&](AnswerCard& shown) {
        shown.answer = text;
        shown.waiting.reset();
    });
}

void AssistantController::grow(HistoryItem& row, const std::string& text) {
    row.answer = text;
    parts_.history.add(row, HistoryStore::Persist::no);
}

void AssistantController::finish(const OnCard& to, const Request& request,
                                 const AnswerEngines::Answer& answer, double duration) {
    if (!isCurrent(to)) return;
    keep(to, rowFor(request, answer, duration));
    settle(to, answer.text);
}

/// Under the card's id, so that an answer is kept once however often it is.
void AssistantController::keep(const OnCard& to, HistoryItem row) {
    row.id = to.id;
    row.createdAt = parts_.executor.date();
    parts_.history.add(row, HistoryStore::Persist::yes);
}

void AssistantController::finish(HistoryItem& row, const Request&, const AnswerEngines::Answer& answer,
                                 double duration) {
    row.answer = answer.text;
    row.meta.engine = answer.engine;
    row.meta.durationMs = wholeMilliseconds(duration);
    growing_.erase(row.id);
    parts_.history.add(row, HistoryStore::Persist::yes);
}

void AssistantController::fail(const OnCard& to, const std::string& words) {
    if (!isCurrent(to)) return;
    isAnswering_ = false;
    // Where nobody sees it fail, the question is not to be lost. A card that shows may yet be asked again.
    if (!card.get()) keepUnanswered(to, couldNotAnswer(words));
    change(to, [&](AnswerCard& shown) {
        shown.streaming = false;
        shown.waiting.reset();
        shown.error = words;
    });
}

void AssistantController::fail(HistoryItem& row, const std::string& words) {
    row.answer = couldNotAnswer(words);
    growing_.erase(row.id);
    parts_.history.add(row, HistoryStore::Persist::yes);
}

// The end of the program

void AssistantController::keepUnfinished() {
    keepFailed();
    const auto unanswered = couldNotAnswer(tr("DORIX se cerró antes."));
    const std::vector<HistoryItem> items(parts_.history.items().begin(), parts_.history.items().end());
    for (auto row : items) {
        if (!growing_.contains(row.id)) continue;
        if (row.answer.empty()) row.answer = unanswered;
        parts_.history.add(row, HistoryStore::Persist::yes);
    }
    if (!isAnswering_) return;
    const bool hasPart = card.get() && !card.get()->answer.empty();
    keepUnanswered({.id = runningCard_}, hasPart ? card.get()->answer : unanswered);
}

/// The card that shows goes: if its answer has failed, nothing else holds its question.
void AssistantController::keepFailed() {
    const auto& shown = card.get();
    if (!shown || !shown->error) return;
    keepUnanswered({.id = shown->id}, shown->answer.empty() ? couldNotAnswer(*shown->error) : shown->answer);
}

void AssistantController::keepUnanswered(const OnCard& to, const std::string& answer) {
    auto row = rowFor(*lastRequest_, {.text = answer}, 0);
    row.title = titleFrom(row.query);
    row.meta.engine.reset();
    row.meta.durationMs.reset();
    keep(to, std::move(row));
}

// The selection

Task<Assistant::Rewrite> AssistantController::transform(std::string instruction, std::string selected) {
    return engines_.transform(std::move(instruction), std::move(selected));
}

AppContext AssistantController::askedFrom() const {
    return lastRequest_ ? lastRequest_->context : AppContext();
}

void AssistantController::replaceSelection(std::optional<RunningApplication> target,
                                           const std::string& text) {
    auto askedAbout = lastRequest_ ? lastRequest_->selection : std::nullopt;
    tasks_.spawn(replace(std::move(target), withoutControls(withoutMarks(text)), std::move(askedAbout)));
}

Task<void> AssistantController::replace(std::optional<RunningApplication> target, std::string text,
                                        std::optional<SelectedText> askedAbout) {
    if (text.empty()) co_return;
    if (target) {
        parts_.workspace.activate(*target);
        co_await sleep(activationWait);
    }
    bool isAnother = false;
    if (askedAbout) isAnother = co_await isAnotherSelected(parts_.selection, target, askedAbout->text);
    Insertion insertion{.text = std::move(text), .target = target, .isTyped = !isAnother};
    const auto receipt = co_await parts_.inserter.insertText(std::move(insertion)).throughStop();
    onReplaced(target, receipt);
}

}  // namespace dorix
