#pragma once

#include "assistant/AnswerCard.h"
#include "assistant/AnswerEngines.h"
#include "assistant/Assistant.h"
#include "base/Observable.h"
#include "base/async/TaskScope.h"
#include "localdata/HistoryItem.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace dorix {

class HistoryStore;
class Memory;
class MessageSearch;
class TextInserter;
class Workspace;
struct InsertionReceipt;

/// Answers questions. It has the one card on which an answer grows, and fills it from the service or the
/// model of this computer; an answer that has come to its end is in the history. What comes back is text and
/// nothing else: whatever it says, nothing is done about it. Main executor, which nothing here blocks.
class AssistantController final : public Assistant {
 public:
    /// All outlive it.
    struct Parts {
        Executor& executor;
        AnswerEngines::Parts engines;
        HistoryStore& history;
        Memory& memory;
        MessageSearch* messages = nullptr;  // null where no workspace can be searched
        ScreenCapture* screen = nullptr;    // null where no pictures can be taken
        SelectionProbe& selection;
        TextInserter& inserter;
        Workspace& workspace;
    };

    /// A meeting that is over.
    struct MeetingNotes {
        std::string title;
        std::string appName;
        std::int64_t minutes = 0;
        std::string transcript;
        std::optional<std::filesystem::path> file;  // with the transcript
    };

    explicit AssistantController(const Parts& parts);
    AssistantController(const AssistantController&) = delete;
    AssistantController& operator=(const AssistantController&) = delete;

    /// What the card's window shows; nothing when there is no card.
    Observable<std::optional<AnswerCard>> card;

    /// Called when there is a card to be shown, and when it is not wanted any more.
    std::function<void()> onShowCard = [] {};
    std::function<void()> onHideCard = [] {};
    /// Called when it is known what became of an answer that was to replace the selection.
    std::function<void(const std::optional<RunningApplication>& target, const InsertionReceipt&)> onReplaced =
        [](const auto&, const auto&) {};

    void ask(Request request) override;
    void recap(std::string question, AppContext context) override;
    void searchMemory(std::string question, AppContext context) override;
    Task<Rewrite> transform(std::string instruction, std::string selected) override;
    std::string askFromComposer(std::string text, AppContext target, bool withScreen) override;
    void summarizeMeeting(MeetingNotes notes);

    /// Answers what the card asks once more, with what was seen then. Nothing without a card.
    void retry();

    /// Takes the card away. An answer that is on its way still goes to the history, and so does a question
    /// whose answer has failed.
    void close();

    /// What was in front at the question of the card.
    AppContext askedFrom() const;

    /// The program ends: what was asked and is not answered is in the history when this returns, with what
    /// there is of its answer.
    void keepUnfinished();

    /// Types `text` over what is selected in `target`, or in whatever is in front. If what the question was
    /// about is not what is selected there by now, the text is left on the clipboard.
    void replaceSelection(std::optional<RunningApplication> target, const std::string& text);

 private:
    using SharedRequest = std::shared_ptr<const Request>;

    /// Where an answer goes: to the card, as long as that shows the same question, or to a row of the
    /// history.
    struct OnCard {
        std::string id;
    };
    using Sink = std::variant<OnCard, HistoryItem>;

    /// What has to be found before the question of the card can be answered.
    enum class Material { given, memory, activity };

    /// What the card says while that is looked for.
    struct Search {
        std::string place;  // in place of the application's name
        std::string waiting;
    };
    static std::optional<Search> searchFor(Material material);

    OnCard show(Request request, Material material = Material::given,
                std::optional<std::string> waiting = {});
    OnCard publish(AnswerCard shown);
    void start(Task<void> road, const OnCard& to);
    Task<void> roadTo(Material material, OnCard to);
    Task<void> searchRoad(OnCard to);
    Task<void> recapRoad(OnCard to);
    Task<void> composed(Request request, HistoryItem row, bool withScreen);
    Task<void> replace(std::optional<RunningApplication> target, std::string text,
                       std::optional<SelectedText> askedAbout);

    Task<void> run(SharedRequest request, Sink sink);
    Task<void> guarded(Task<void> road, Sink sink);
    Task<void> runWith(Request material, OnCard to);
    void settle(const OnCard& to, std::string text);
    bool isCurrent(const OnCard& to) const;
    void change(const OnCard& to, const std::function<void(AnswerCard&)>& how);

    // For each sink:
    void grow(const OnCard& to, const std::string& text);
    void grow(HistoryItem& row, const std::string& text);
    void keep(const OnCard& to, HistoryItem row);
    void finish(const OnCard& to, const Request& request, const AnswerEngines::Answer& answer,
                double duration);
    void finish(HistoryItem& row, const Request& request, const AnswerEngines::Answer& answer,
                double duration);
    void fail(const OnCard& to, const std::string& words);
    void keepUnanswered(const OnCard& to, const std::string& answer);
    void keepFailed();
    void fail(HistoryItem& row, const std::string& words);

    const Parts parts_;
    AnswerEngines engines_;
    SharedRequest lastRequest_;
    Material wanting_ = Material::given;  // by that request
    AnswerCard lastCard_;                 // of that request, as it begins
    std::string runningCard_;             // whose answer is under way, or was last
    bool isAnswering_ = false;            // for that card, whether it shows or not
    std::optional<TaskHandle<void>> task_;
    std::set<std::string> growing_;  // rows of the history whose answers are under way
    TaskScope tasks_;
};

}  // namespace dorix
