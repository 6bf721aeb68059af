#pragma once

#include "base/async/Task.h"
#include "dictation/ScreenCapture.h"
#include "dictation/context/AppContext.h"
#include "dictation/context/SelectedText.h"
#include "localdata/HistoryItem.h"
#include "writing/TextPolisher.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// What the dictation flow asks of subsystems that stand beside it. It owns these interfaces, they fill them.
/// Main executor.
namespace dorix {

/// Writes dictations with the best engine at hand.
class DictationWriter {
 public:
    virtual ~DictationWriter() = default;

    /// Always ends in a text; throws only Cancelled.
    virtual Task<PolishResult> polish(PolishRequest request) = 0;
    /// Tells a text to write from a question, for an utterance that may be either; throws only Cancelled.
    virtual Task<WriteOrAsk> writeOrAsk(PolishRequest request) = 0;
    virtual bool usesCloudEngine() const = 0;
    /// A request like this one will come soon; the transcript is still empty.
    virtual void prewarm(PolishRequest request) = 0;
};

/// Keeps what was written.
class DictationHistory {
 public:
    virtual ~DictationHistory() = default;

    /// Newest first.
    virtual const HistoryItems& items() const = 0;
    virtual void add(HistoryItem item) = 0;
};

/// A document and its text.
struct FrontDocument {
    std::string name;
    std::string text;

    bool operator==(const FrontDocument&) const = default;
};

/// A question, and what the user was looking at when they asked it.
struct AssistantRequest {
    std::string question;
    HistoryKind kind = HistoryKind::screen;
    AppContext context;
    std::optional<SelectedText> selection;
    std::optional<ScreenCapture::Shot> shot;
    std::optional<FrontDocument> document;
};

/// Answers, in a card of its own or in the history.
class DictationAssistant {
 public:
    struct Rewrite {
        std::string text;
        std::string engine;  // the name of the engine that wrote it
    };

    virtual ~DictationAssistant() = default;

    /// These return at once; the answer comes on the card.
    virtual void ask(AssistantRequest request) = 0;
    virtual void recap(std::string question, AppContext context) = 0;
    virtual void searchMemory(std::string question, AppContext context) = 0;

    /// `selected` as `instruction` wants it. Throws an Error.
    virtual Task<Rewrite> transform(std::string instruction, std::string selected) = 0;

    /// The id of the history item that will hold the answer.
    virtual std::string askFromComposer(std::string text, AppContext target, bool withScreen) = 0;
};

/// Meeting mode.
class DictationMeeting {
 public:
    virtual ~DictationMeeting() = default;

    virtual bool isLive() const = 0;
    /// With no title and no application.
    virtual void start() = 0;
    virtual void finish() = 0;
};

/// Carries out what is ordered, once the user has confirmed it.
class DictationActions {
 public:
    virtual ~DictationActions() = default;

    virtual void propose(std::string instruction, AppContext context) = 0;
};

/// Learns by being shown.
class DictationLearning {
 public:
    virtual ~DictationLearning() = default;

    virtual bool isTeaching() const = 0;
    virtual void startTeaching() = 0;
    virtual void finishTeaching() = 0;
};

/// Reads the text of documents.
class DocumentReader {
 public:
    virtual ~DocumentReader() = default;

    /// Whether files with this extension, in lower case and without its dot, can be read.
    virtual bool reads(std::string_view extension) const = 0;
    /// The first `limit` characters, read off the main executor. Nothing when it cannot be read.
    virtual Task<std::optional<std::string>> text(std::filesystem::path file, std::size_t limit) = 0;
};

}  // namespace dorix
