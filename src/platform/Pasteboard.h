#pragma once

#include "base/Observable.h"
#include "base/async/Task.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// The general clipboard. Main executor. Reading asks the application that holds the contents and so
/// suspends; it never blocks, and gives up on an application that does not answer.
class Pasteboard {
 public:
    using Bytes = std::string;

    /// One item in all of its representations, by type, in the order that its owner gave.
    using Item = std::vector<std::pair<std::string, Bytes>>;

    /// The plain-text type. Adapters offer it under every name that the system's applications ask for.
    static constexpr std::string_view stringType = "public.utf8-plain-text";
    /// Contents under this type are passing: clipboard managers do not keep them.
    static constexpr std::string_view transientType = "org.nspasteboard.TransientType";

    /// What is on the clipboard, as far as its holder told.
    struct Reading {
        enum class State {
            empty,       // there is nothing
            complete,    // all of it, byte for byte
            partial,     // some of what is offered could not be had
            unreadable,  // there is something, and nothing of it could be had
        };

        State state = State::empty;
        std::vector<Item> items;

        bool operator==(const Reading&) const = default;
    };

    /// An application was given what was put here.
    struct Fetch {
        RunningApplication by;  // its process and the window that asked, as far as they are known
        double at = 0;          // by the executor's clock
    };

    virtual ~Pasteboard() = default;

    /// Grows with every change, whoever makes it. Own writes count at once.
    virtual std::int64_t changeCount() const = 0;

    /// The same, with all that others have done until now, of which changeCount may yet have to hear. Asks
    /// the system.
    virtual std::int64_t currentChangeCount() = 0;

    /// Everything on the clipboard.
    virtual Task<Reading> pasteboardItems() = 0;

    /// The plain text, if there is any.
    virtual Task<std::optional<std::string>> string() = 0;

    /// Takes the clipboard and empties it.
    virtual void clearContents() = 0;

    /// Adds to what was put since clearContents. They have no effect once another application took the
    /// clipboard.
    virtual void setString(std::string text) = 0;
    virtual void setData(Bytes data, std::string_view type) = 0;
    virtual void writeObjects(std::vector<Item> items) = 0;

    /// Whether what was put here is what every application sees at this moment. Asks the system.
    virtual bool holdsOwnContents() = 0;

    /// Tells of each application that has been given all of the text that was put here.
    virtual Subscription observeFetches(std::function<void(const Fetch&)> observer) = 0;

    /// If the program dies while what is on the clipboard is its own, `items` are to be there. Until the next
    /// call, or until another application takes the clipboard. Contents that are not passing keep themselves
    /// in this way.
    virtual void keepThroughCrash(const std::vector<Item>& items) = 0;
};

/// Where there is none: always empty, and what is written is gone.
class UnavailablePasteboard final : public Pasteboard {
 public:
    std::int64_t changeCount() const override { return 0; }
    std::int64_t currentChangeCount() override { return 0; }
    Task<Reading> pasteboardItems() override { co_return Reading{}; }
    Task<std::optional<std::string>> string() override { co_return std::nullopt; }
    void clearContents() override {}
    void setString(std::string) override {}
    void setData(Bytes, std::string_view) override {}
    void writeObjects(std::vector<Item>) override {}
    bool holdsOwnContents() override { return false; }
    Subscription observeFetches(std::function<void(const Fetch&)>) override { return {}; }
    void keepThroughCrash(const std::vector<Item>&) override {}
};

}  // namespace dorix
