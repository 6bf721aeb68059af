#pragma once

#include "base/async/Task.h"
#include "context/Tone.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace dorix {

/// A raw transcript and all that a writing engine may know of where it goes.
struct PolishRequest {
    std::string transcript;
    std::string appName;
    std::optional<std::string> windowTitle;
    Tone tone = Tone::neutral;
    std::string signatureName;              // may be empty
    std::optional<std::string> screenshot;  // JPEG bytes of the front window
    std::optional<bool> editableFocus;      // absent when unknown
    std::string styleNotes;                 // may be empty
    std::vector<std::string> styleExamples;

    bool operator==(const PolishRequest&) const = default;
};

struct PolishResult {
    std::string title;   // a short label for the history
    std::string text;    // the finished text
    std::string engine;  // the name of the polisher that wrote it

    bool operator==(const PolishResult&) const = default;
};

/// What an engine made of an utterance that may be either: a text, or the word that it is a question.
struct Ask {
    bool operator==(const Ask&) const = default;
};
using WriteOrAsk = std::variant<PolishResult, Ask>;

/// A writing engine: turns a transcript into the text that is typed.
class TextPolisher {
 public:
    virtual ~TextPolisher() = default;

    /// The engine's name for people, kept in the history.
    virtual std::string name() const = 0;

    /// Throws an Error when the engine cannot write this one.
    virtual Task<PolishResult> polish(PolishRequest request) = 0;
};

/// Writes dictations with the best engine at hand. Main executor.
class Writer {
 public:
    virtual ~Writer() = default;

    /// Always ends in a text; throws only Cancelled.
    virtual Task<PolishResult> polish(PolishRequest request) = 0;
    /// By rule alone: no word of it is told to anybody. Throws nothing.
    virtual Task<PolishResult> byRule(PolishRequest request) = 0;
    /// Tells a text to write from a question, for an utterance that may be either; throws only Cancelled.
    virtual Task<WriteOrAsk> writeOrAsk(PolishRequest request) = 0;
    /// Whether the service would write now.
    virtual bool cloudEnabled() const = 0;
    /// A request like this one will come soon, for the model of this computer; the transcript is still empty.
    virtual void prewarm(PolishRequest request) = 0;
    /// The same for the service: the way there is opened, and nothing sent.
    virtual void connect() = 0;
};

/// The pieces of a text between blanks. Pure; any thread.
std::size_t wordCount(std::string_view text);

/// The rewrite prompt, in Spanish whatever the app language. Pure; any thread.
std::string rewriteInstructions(const PolishRequest& request);

/// Text without control characters but line ends and tabs: pasted into a terminal they would work it. Pure;
/// any thread.
std::string withoutControls(std::string_view text);

/// What an engine wrote, as it may be typed: without controls, and without white space at its ends. Pure; any
/// thread.
std::string typeable(std::string_view written);

/// The first seven words of the text, or the word for a dictation where it has none. Any thread.
std::string titleFrom(std::string_view text);

}  // namespace dorix
