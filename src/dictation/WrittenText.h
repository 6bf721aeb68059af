#pragma once

#include "base/async/Task.h"
#include "base/async/Timer.h"
#include "dictation/HUDFlash.h"
#include "dictation/Recorder.h"
#include "localdata/HistoryItem.h"
#include "writing/TextPolisher.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace dorix {

class Accessibility;
class HistoryStore;
class TextInserter;
class UserClipboard;
struct InsertionReceipt;

/// What is dictated, from the request to the writing engine to its end: a text that is ready goes to the
/// cursor, to the HUD as a message, and into the history. Main executor; what it is given outlives it and its
/// tasks.
class WrittenText {
 public:
    WrittenText(Executor& executor, SettingsStore& settings, HistoryStore& history, UserClipboard& clipboard,
                TextInserter& inserter, Workspace& workspace, Accessibility& accessibility, HUDFlash& hud);

    /// What the writing engine is to know of a dictation: where the text goes, and the user's settings and
    /// style. An empty transcript announces a request.
    PolishRequest request(const AppContext& context, std::string transcript) const;

    /// What stands before the cursor in a field of our own, where that takes what is dictated.
    std::function<std::string()> beforeOwnCursor = [] { return std::string(); };

    /// Called when what was dictated has arrived in a field of our own.
    std::function<void()> onWrittenHere = [] {};

    /// A text is likely to come, or none comes after all.
    void prepare();
    void forgetPrepared();

    /// What the writer made of `transcript`, which may be nothing; `seen`: a picture of the window went with
    /// it.
    enum class Seen { no, yes };
    Task<void> commit(PolishResult result, std::string transcript, Recording recording, Seen seen);

    /// What `instruction` made of the text that was selected: typed over it, or, if another one is by now,
    /// left on the clipboard.
    enum class Selection { stands, isAnother };
    Task<void> replaceSelection(PolishResult result, std::string instruction, std::string selected,
                                Recording recording, Selection now);

    /// While the result lives: when the text takes long to come, what was said is in the history by then, as
    /// something that was not typed, until commit() puts the text in its place.
    std::unique_ptr<Timer> keepMeanwhile(std::string transcript, Recording recording);

    /// What was said but could not be carried to its end stays in the history.
    void keep(const std::string& transcript, const Recording& recording) const;

    /// Returns when no insertion is under way.
    Task<void> settled() const;

    /// What the HUD says of a text of somebody else's that did not arrive; nothing of one that did.
    void tellUndelivered(const InsertionReceipt& receipt, const std::optional<RunningApplication>& target);

    /// The answer of a history item, once more, into `target`.
    Task<void> typeAgain(AppContext target, std::string answer);

 private:
    /// How a message says that the text was written: in a word, and with it left on the clipboard as well.
    struct DoneTexts {
        std::string_view written;
        std::string_view alsoOnClipboard;
    };

    Task<void> write(HistoryItem item, Recording recording, DoneTexts texts, bool isTyped = true);
    bool isOwn(const AppContext& context) const;
    std::string leadOf(const HistoryItem& item, const AppContext& context) const;
    void tell(const InsertionReceipt& receipt, const AppContext& context, const DoneTexts& texts);
    void remember(HistoryItem& item, const Recording& recording) const;

    Tone toneFor(const AppContext& context) const;

    Executor& executor_;
    SettingsStore& settings_;
    HistoryStore& history_;
    UserClipboard& clipboard_;
    TextInserter& inserter_;
    Workspace& workspace_;
    Accessibility& accessibility_;
    HUDFlash& hud_;
};

}  // namespace dorix
