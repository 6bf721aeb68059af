#pragma once

#include "assistant/AnswerCard.h"
#include "base/Json.h"
#include "base/Observable.h"
#include "base/async/Executor.h"
#include "dictation/AppState.h"
#include "dictation/UtteranceRoads.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A debugging aid: writes what the program does to a file, as it happens, one JSON object a line. The file
/// tells what the user said, so it is written only when somebody asks for it. Main executor, on which it
/// writes.
class EventTrace {
 public:
    /// Appends to `file`, made for the user alone where it is missing. A file that cannot be opened is told
    /// in the log, and nothing is traced. What it observes may go before it.
    EventTrace(const std::filesystem::path& file, Executor& executor, const AppState& state,
               const Observable<bool>& busy, const Observable<std::optional<std::string>>& speakingID);

    /// Where an utterance goes.
    void route(Route route);
    /// What becomes of the card, without its words.
    void follow(const Observable<std::optional<AnswerCard>>& card);

 private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void write(Json event);

    Executor& executor_;
    std::string cardPhase_ = "none";
    std::unique_ptr<std::FILE, Close> file_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
