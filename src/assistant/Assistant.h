#pragma once

#include "assistant/AnswerCard.h"
#include "base/async/Task.h"
#include "context/AppContext.h"
#include "context/ScreenCapture.h"
#include "context/SelectionProbe.h"
#include "localdata/HistoryItem.h"
#include "memory/store/MemoryRecords.h"

#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A document and its text.
struct FrontDocument {
    std::string name;
    std::string text;

    bool operator==(const FrontDocument&) const = default;
};

/// Answers, in a card of its own or in the history. Main executor.
class Assistant {
 public:
    /// A question, and what the user was looking at when they asked it.
    struct Request {
        std::string question;
        HistoryKind kind = HistoryKind::screen;
        AppContext context;
        std::optional<SelectedText> selection;
        std::optional<ScreenCapture::Shot> shot;
        std::optional<FrontDocument> document;
        std::optional<std::string> mode;  // a named way of answering, for the service
        std::vector<MemoryHit> memory;    // best first
        std::optional<std::string> recap;
        std::vector<AnswerSource> sources;
        std::optional<std::string> transcript;
        std::optional<std::string> meetingTitle;
        std::optional<std::string> historyTitle;  // when it is not to be derived
        std::optional<std::string> historyQuery;  // when it differs from the question
    };

    struct Rewrite {
        std::string text;
        std::string engine;  // the name of the engine that wrote it
    };

    virtual ~Assistant() = default;

    /// These return at once; the answer comes on the card.
    virtual void ask(Request request) = 0;
    virtual void recap(std::string question, AppContext context) = 0;
    virtual void searchMemory(std::string question, AppContext context) = 0;

    /// `selected` as `instruction` wants it. Throws an Error.
    virtual Task<Rewrite> transform(std::string instruction, std::string selected) = 0;

    /// The id of the history item that will hold the answer.
    virtual std::string askFromComposer(std::string text, AppContext target, bool withScreen) = 0;
};

}  // namespace dorix
