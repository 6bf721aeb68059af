#include "linux/x11/X11Pasteboard.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include <xcb/xfixes.h>

namespace dorix {

namespace {

constexpr double readBudget = 1.0;
constexpr double handOverBudget = 1.0;
constexpr double primaryLife = 1.0;
constexpr std::size_t maxTargets = 256;

/// What clipboard managers on Linux look for before they keep contents.
struct Marker {
    std::string_view target;
    std::string_view value;
};
constexpr std::array<Marker, 3> passingMarkers{{{"x-kde-passwordManagerHint", "secret"},
                                                {"text/x-kde-passwordManagerHint", "secret"},
                                                {Pasteboard::transientType, ""}}};

/// Targets that are questions or commands to the owner rather than contents.
bool isContents(std::string_view target) {
    static constexpr std::array<std::string_view, 5> special{"TARGETS", "MULTIPLE", "TIMESTAMP",
                                                             "SAVE_TARGETS", "DELETE"};
    return !target.empty() && !target.starts_with("INSERT_") &&
           std::ranges::find(special, target) == special.end();
}

}  // namespace

X11Pasteboard::X11Pasteboard(X11Connection& connection)
    : connection_(connection),
      window_(connection.createHiddenWindow(XCB_EVENT_MASK_NO_EVENT)),
      clipboard_(connection.atom("CLIPBOARD")),
      server_(connection, window_),
      primaryTimer_(connection.executor()) {
    xcb_xfixes_select_selection_input(connection_.get(), window_, clipboard_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    connection_.flush();
    const auto* fixes = xcb_get_extension_data(connection_.get(), &xcb_xfixes_id);
    tokens_.push_back(
        connection_.listen(static_cast<std::uint8_t>(fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY),
                           [this](const auto& event) { handleChange(event); }));
    tokens_.push_back(connection_.listen(XCB_SELECTION_CLEAR, [this](const auto& event) {
        const auto& clear = reinterpret_cast<const xcb_selection_clear_event_t&>(event);
        if (clear.owner == window_ && clear.selection == XCB_ATOM_PRIMARY) server_.withdraw(XCB_ATOM_PRIMARY);
    }));
}

X11Pasteboard::~X11Pasteboard() {
    xcb_destroy_window(connection_.get(), window_);
    connection_.flush();
}

void X11Pasteboard::handleChange(const xcb_generic_event_t& event) {
    const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (change.window != window_ || change.selection != clipboard_) return;
    if (change.owner == window_) {
        unseenTakings_ = std::max(unseenTakings_ - 1, 0);
        server_.setTimestamp(clipboard_, change.selection_timestamp);
        if (unseenTakings_ == 0) giveUpIfEmpty(change.selection_timestamp);
        return;
    }
    if (unseenTakings_ > 0) return;
    const bool ownDoing = std::exchange(givingUp_, false) && change.owner == XCB_WINDOW_NONE;
    if (ownDoing) return;
    ++changeCount_;
    loseClipboard();
    // What an owner that is gone was asked for will not come; from the next one it would be something else.
    for (auto* read : reads_) read->abandon();
}

void X11Pasteboard::loseClipboard() {
    owns_ = false;
    contents_ = std::make_shared<SelectionContents>();
    server_.withdraw(clipboard_);
}

// A clipboard without an owner is how others see that it is empty. Given up with the time it was taken at, it
// stays with whoever took it since.
void X11Pasteboard::giveUpIfEmpty(xcb_timestamp_t taken) {
    if (!owns_ || !contents_->entries().empty()) return;
    loseClipboard();
    givingUp_ = true;
    xcb_set_selection_owner(connection_.get(), XCB_WINDOW_NONE, clipboard_, taken);
}

void X11Pasteboard::clearContents() {
    endPrimary();
    contents_ = std::make_shared<SelectionContents>();
    ++changeCount_;
    take();
}

void X11Pasteboard::take() {
    owns_ = true;
    ++unseenTakings_;
    server_.offer(clipboard_, contents_);
    xcb_set_selection_owner(connection_.get(), window_, clipboard_, XCB_CURRENT_TIME);
    connection_.flush();
}

void X11Pasteboard::put(std::string_view target, std::string_view type, std::uint8_t format,
                        std::string bytes) {
    const xcb_atom_t atom = connection_.atom(target);
    if (atom == XCB_ATOM_NONE) return;
    contents_->put(atom, {connection_.atom(type), format, std::move(bytes)});
}

void X11Pasteboard::setString(std::string text) {
    if (!owns_) return;
    put("UTF8_STRING", "UTF8_STRING", 8, text);
    put("text/plain;charset=utf-8", "text/plain;charset=utf-8", 8, text);
    put("TEXT", "UTF8_STRING", 8, text);
    if (auto latin1 = latin1FromUtf8(text)) put("STRING", "STRING", 8, std::move(*latin1));
    put("text/plain", "text/plain", 8, std::move(text));
}

void X11Pasteboard::setData(Bytes data, std::string_view type) {
    if (!owns_) return;
    if (type == stringType) return setString(std::move(data));
    if (type == transientType) {
        for (const auto& marker : passingMarkers)
            put(marker.target, marker.target, 8, std::string(marker.value));
        return;
    }
    const auto name = parsePasteboardType(type);
    put(name.target, name.type, name.format, std::move(data));
}

void X11Pasteboard::writeObjects(std::vector<Item> items) {
    for (auto& item : items) {
        for (auto& [type, data] : item) setData(std::move(data), type);
    }
}

Task<X11SelectionRead::Result> X11Pasteboard::read(xcb_atom_t target, double deadline) {
    X11SelectionRead conversion(connection_, clipboard_, target, deadline);
    struct Registered {
        std::set<X11SelectionRead*>& reads;
        X11SelectionRead* read;
        ~Registered() { reads.erase(read); }
    };
    reads_.insert(&conversion);
    const Registered registered{reads_, &conversion};
    auto data = co_await conversion.result();
    if (data && data->type == XCB_ATOM_NONE) data.reset();
    co_return data;
}

Task<std::vector<xcb_atom_t>> X11Pasteboard::readTargets(double deadline) {
    const auto data = co_await read(connection_.atom("TARGETS"), deadline);
    std::vector<xcb_atom_t> targets;
    if (!data || data->format != 32) co_return targets;
    targets.resize(std::min(data->bytes.size() / sizeof(xcb_atom_t), maxTargets));
    if (!targets.empty())
        std::memcpy(targets.data(), data->bytes.data(), targets.size() * sizeof(xcb_atom_t));
    co_return targets;
}

Task<Pasteboard::Item> X11Pasteboard::readItem(double deadline) {
    const auto targets = co_await readTargets(deadline);
    const auto count = changeCount_;
    Item item;
    std::set<xcb_atom_t> seen;
    for (const auto target : targets) {
        if (count != changeCount_ || connection_.executor().now() >= deadline) break;
        const std::string name = connection_.atomName(target);
        if (!isContents(name) || !seen.insert(target).second) continue;
        auto data = co_await read(target, deadline);
        if (!data) continue;
        item.emplace_back(pasteboardType({name, connection_.atomName(data->type), data->format}),
                          std::move(data->bytes));
    }
    co_return item;
}

Pasteboard::Item X11Pasteboard::ownItem() {
    Item item;
    for (const auto& [target, data] : contents_->entries()) {
        const auto name =
            TargetName{connection_.atomName(target), connection_.atomName(data->type), data->format};
        item.emplace_back(pasteboardType(name), data->bytes);
    }
    return item;
}

Task<std::vector<Pasteboard::Item>> X11Pasteboard::pasteboardItems() {
    const double deadline = connection_.executor().now() + readBudget;
    Item item;
    for (;;) {
        const auto count = changeCount_;
        item = owns_ ? ownItem() : co_await readItem(deadline);
        // Half of one owner's contents and half of the next one's are nobody's.
        if (count == changeCount_) break;
        item.clear();
        if (connection_.executor().now() >= deadline) break;
    }
    std::vector<Item> items;
    if (!item.empty()) items.push_back(std::move(item));
    co_return items;
}

Task<std::optional<std::string>> X11Pasteboard::string() {
    const double deadline = connection_.executor().now() + readBudget;
    for (const std::string_view target :
         {"UTF8_STRING", "text/plain;charset=utf-8", "STRING", "text/plain"}) {
        const xcb_atom_t atom = connection_.atom(target);
        X11SelectionRead::Result data;
        if (!owns_) {
            data = co_await read(atom, deadline);
        } else if (const auto own = contents_->find(atom)) {
            data = *own;
        }
        if (connection_.executor().now() >= deadline) break;
        if (!data || data->format != 8) continue;
        const bool latin1 = data->type == XCB_ATOM_STRING;
        co_return latin1 ? utf8FromLatin1(data->bytes) : std::move(data->bytes);
    }
    co_return std::nullopt;
}

void X11Pasteboard::servePrimaryForPaste() {
    if (!owns_) return;
    servesPrimary_ = true;
    server_.offer(XCB_ATOM_PRIMARY, contents_);
    xcb_set_selection_owner(connection_.get(), window_, XCB_ATOM_PRIMARY, XCB_CURRENT_TIME);
    connection_.flush();
    primaryTimer_.once(primaryLife, [this] { endPrimary(); });
}

void X11Pasteboard::endPrimary() {
    if (!std::exchange(servesPrimary_, false)) return;
    primaryTimer_.stop();
    server_.withdraw(XCB_ATOM_PRIMARY);
    const auto owner = connection_.reply(xcb_get_selection_owner_reply,
                                         xcb_get_selection_owner(connection_.get(), XCB_ATOM_PRIMARY));
    if (!owner || owner->owner != window_) return;
    xcb_set_selection_owner(connection_.get(), XCB_WINDOW_NONE, XCB_ATOM_PRIMARY, XCB_CURRENT_TIME);
    connection_.flush();
}

bool X11Pasteboard::isPassing() const {
    return std::ranges::any_of(passingMarkers, [this](const Marker& marker) {
        return contents_->find(connection_.atom(marker.target)) != nullptr;
    });
}

Task<bool> X11Pasteboard::handOver() {
    if (!owns_ || contents_->entries().empty() || isPassing()) co_return false;
    const double deadline = connection_.executor().now() + handOverBudget;
    // Without a list of targets the manager takes all of them; it asks for them while we wait.
    X11SelectionRead saving(connection_, connection_.atom("CLIPBOARD_MANAGER"),
                            connection_.atom("SAVE_TARGETS"), deadline);
    co_return (co_await saving.result()).has_value();
}

}  // namespace dorix
