#pragma once

#include <memory>
#include <set>

#include "base/async/Timer.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"
#include "linux/x11/X11SelectionRead.h"
#include "linux/x11/X11SelectionServer.h"
#include "platform/Pasteboard.h"

namespace dorix {

/// The CLIPBOARD selection. It holds at most one item, whose types are the targets that its owner offers,
/// with the property's type and format where they matter. Reading a whole clipboard takes at most a second
/// and leaves out what has not come by then. Its tasks must have ended before it is destroyed.
class X11Pasteboard final : public Pasteboard {
  public:
    explicit X11Pasteboard(X11Connection& connection);
    ~X11Pasteboard() override;

    std::int64_t changeCount() const override { return changeCount_; }
    Task<std::vector<Item>> pasteboardItems() override;
    Task<std::optional<std::string>> string() override;
    void clearContents() override;
    void setString(std::string text) override;
    void setData(Bytes data, std::string_view type) override;
    void writeObjects(std::vector<Item> items) override;

    /// Offers what is on the clipboard as the PRIMARY selection too, for a terminal that pastes only that.
    /// Ends by itself after a moment or when the clipboard changes. Does nothing unless the clipboard is
    /// ours.
    void servePrimaryForPaste();

    /// Asks the clipboard manager to take over what we hold, which is otherwise gone when the program ends.
    /// True when it did; at once, or after a second at most. Passing contents are not handed over.
    Task<bool> handOver();

  private:
    void take();
    void handleChange(const xcb_generic_event_t& event);
    void giveUpIfEmpty(xcb_timestamp_t taken);
    void loseClipboard();
    void endPrimary();
    bool isPassing() const;
    void put(std::string_view target, std::string_view type, std::uint8_t format, std::string bytes);
    Task<X11SelectionRead::Result> read(xcb_atom_t target, double deadline);
    Task<Item> readItem(double deadline);
    Task<std::vector<xcb_atom_t>> readTargets(double deadline);
    Item ownItem();

    X11Connection& connection_;
    const xcb_window_t window_;
    const xcb_atom_t clipboard_;
    X11SelectionServer server_;
    std::shared_ptr<SelectionContents> contents_ = std::make_shared<SelectionContents>();
    std::set<X11SelectionRead*> reads_;
    std::int64_t changeCount_ = 0;
    bool owns_ = false;
    /// Takings whose event is still to come; events of other owners before that are older.
    int unseenTakings_ = 0;
    bool givingUp_ = false;
    bool servesPrimary_ = false;
    Timer primaryTimer_;
    std::vector<X11Connection::Token> tokens_;
};

}  // namespace dorix
