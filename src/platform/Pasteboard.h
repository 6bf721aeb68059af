#pragma once

#include "base/async/Task.h"

#include <cstdint>
#include <map>
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

    virtual ~Pasteboard() = default;

    /// Grows with every change, whoever makes it. Own writes count at once.
    virtual std::int64_t changeCount() const = 0;

    /// Everything on the clipboard, byte for byte; a type whose data cannot be had is left out. Empty when
    /// nothing is there or its holder does not answer.
    virtual Task<std::vector<Item>> pasteboardItems() = 0;

    /// The plain text, if there is any.
    virtual Task<std::optional<std::string>> string() = 0;

    /// Takes the clipboard and empties it.
    virtual void clearContents() = 0;

    /// Adds to what was put since clearContents. They have no effect once another application took the
    /// clipboard.
    virtual void setString(std::string text) = 0;
    virtual void setData(Bytes data, std::string_view type) = 0;
    virtual void writeObjects(std::vector<Item> items) = 0;
};

/// Where there is none: always empty, and what is written is gone.
class UnavailablePasteboard final : public Pasteboard {
 public:
    std::int64_t changeCount() const override { return 0; }
    Task<std::vector<Item>> pasteboardItems() override { co_return std::vector<Item>{}; }
    Task<std::optional<std::string>> string() override { co_return std::nullopt; }
    void clearContents() override {}
    void setString(std::string) override {}
    void setData(Bytes, std::string_view) override {}
    void writeObjects(std::vector<Item>) override {}
};

}  // namespace dorix
