#include "linux/x11/X11Pasteboard.h"

#include "base/Log.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace dorix {

namespace {

constexpr double snapshotBudget = 5.0;
constexpr double stringBudget = 1.0;
// A hung owner must not hold up whoever waits for the snapshot; one that has answered may take its time.
constexpr double unprovenPatience = 0.4;
constexpr double handOverBudget = 1.0;
// Longer than anybody waits for a terminal to paste.
constexpr double primaryLife = 8.0;
// The paste waits for it, and the clipboard is put back soon after.
constexpr double primaryBudget = 0.2;
constexpr std::size_t maxTargets = 256;
// More than a clipboard holds in earnest, so that an owner that never ends does not fill the memory.
constexpr std::size_t snapshotBytes = std::size_t{256} << 20U;

std::vector<xcb_atom_t> atomsIn(const X11SelectionRead::Result& data) {
    std::vector<xcb_atom_t> atoms;
    if (!data || data->format != 32) return atoms;
    atoms.resize(std::min(data->bytes.size() / sizeof(xcb_atom_t), maxTargets));
    if (!atoms.empty()) std::memcpy(atoms.data(), data->bytes.data(), atoms.size() * sizeof(xcb_atom_t));
    return atoms;
}

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

X11Pasteboard::X11Pasteboard(X11Connection& connection, ClipboardKeeper* keeper)
    : connection_(connection),
      keeper_(keeper),
      window_(connection.createHiddenWindow(XCB_EVENT_MASK_NO_EVENT)),
      clipboard_(connection.atom("CLIPBOARD")),
      windows_(connection),
      owner_(connection.display(),
             [this, &main = connection.executor(), alive = std::weak_ptr(alive_)](const auto& delivery) {
                 main.post([this, alive, delivery, at = main.now()] {
                     if (!alive.expired()) noteDelivery(delivery, at);
                 });
             }),
      primaryTimer_(connection.executor()) {
    xcb_xfixes_select_selection_input(connection_.get(), window_, clipboard_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    connection_.flush();
    const auto* fixes = xcb_get_extension_data(connection_.get(), &xcb_xfixes_id);
    changeEvent_ = static_cast<std::uint8_t>(fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    tokens_.push_back(connection_.listen(changeEvent_, [this](const auto& event) { handleChange(event); }));
}

X11Pasteboard::~X11Pasteboard() {
    xcb_destroy_window(connection_.get(), window_);
    connection_.flush();
}

void X11Pasteboard::handleChange(const xcb_generic_event_t& event) {
    if (isForeignChange(event)) noteForeignChange();
}

bool X11Pasteboard::isForeignChange(const xcb_generic_event_t& event) const {
    const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (change.window != window_ || change.selection != clipboard_) return false;
    // What others did before our own change is undone by it.
    return !commitPending_ && !isSettled(event);
}

bool X11Pasteboard::isSettled(const xcb_generic_event_t& event) const {
    // The numbers wrap around.
    return settledBefore_ && static_cast<std::int32_t>(event.full_sequence - *settledBefore_) < 0;
}

void X11Pasteboard::noteForeignChange() {
    ++changeCount_;
    ownerAnswers_ = false;
    ownerFailed_ = false;
    loseClipboard();
    if (keeper_ != nullptr) keeper_->forget();
    // What an owner that is gone was asked for will not come; from the next one it would be something else.
    for (auto* read : reads_) read->abandon();
}

void X11Pasteboard::loseClipboard() {
    owns_ = false;
    contents_.clear();
}

void X11Pasteboard::clearContents() {
    endPrimary();
    contents_.clear();
    owns_ = true;
    ++changeCount_;
    for (auto* read : reads_) read->abandon();
    scheduleCommit();
}

void X11Pasteboard::scheduleCommit() {
    if (commitPending_) return;
    commitPending_ = std::make_shared<bool>(true);
    connection_.executor().post([this, pending = std::weak_ptr(commitPending_)] {
        if (!pending.expired()) commit();
    });
}

void X11Pasteboard::commit() {
    if (!std::exchange(commitPending_, nullptr)) return;
    if (owner_.window() == XCB_WINDOW_NONE) return;
    // A clipboard without an owner is how others see that it is empty.
    const bool empty = contents_.entries().empty();
    if (empty) {
        owner_.giveUp(clipboard_);
    } else {
        offered_ = owner_.take(clipboard_, contents_);
    }
    if (!isPassing()) keepContents();
    settle(empty ? xcb_window_t{XCB_WINDOW_NONE} : owner_.window());
}

// Events of changes do not say enough to tell our own from others', nor which came last. The server's answer
// does: it holds all that happened before it was given, and the events of that are passed over.
void X11Pasteboard::settle(xcb_window_t expected) {
    const auto cookie = xcb_get_selection_owner(connection_.get(), clipboard_);
    const auto now = connection_.reply(xcb_get_selection_owner_reply, cookie);
    if (!now) return;
    settledBefore_ = cookie.sequence;
    if (now->owner != expected) noteForeignChange();
}

xcb_window_t X11Pasteboard::ownerOf(xcb_atom_t selection) {
    const auto reply = connection_.reply(xcb_get_selection_owner_reply,
                                         xcb_get_selection_owner(connection_.get(), selection));
    return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

// The events of what happened before an answer come in with it.
std::int64_t X11Pasteboard::currentChangeCount() {
    ownerOf(clipboard_);
    return changeCount_ + connection_.countUnheard(
                              changeEvent_, [this](const auto& event) { return isForeignChange(event); });
}

bool X11Pasteboard::holdsOwnContents() {
    commit();
    if (owns_ && !contents_.entries().empty()) settle(owner_.window());
    return owns_ && !contents_.entries().empty();
}

bool X11Pasteboard::holdsPrimary() { return servesPrimary_ && ownerOf(XCB_ATOM_PRIMARY) == owner_.window(); }

void X11Pasteboard::noteDelivery(const X11SelectionServer::Delivery& delivery, double at) {
    const auto current = delivery.selection == clipboard_ ? offered_ : offeredPrimary_;
    // Some browsers look at the marks whenever they are told to paste, whether there is a field or not.
    if (delivery.offer != current || isMark(delivery.target)) return;
    RunningApplication by;
    by.windowNumber = delivery.requestor;
    by.processIdentifier = windows_.processIdentifier(delivery.requestor).value_or(0);
    fetches_.notify({by, at});
}

void X11Pasteboard::put(std::string_view target, std::string_view type, std::uint8_t format,
                        std::string bytes) {
    const xcb_atom_t atom = connection_.atom(target);
    if (atom == XCB_ATOM_NONE) return;
    contents_.put(atom, {connection_.atom(type), format, std::move(bytes)});
    scheduleCommit();
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

Task<X11SelectionRead::Result> X11Pasteboard::read(xcb_atom_t target, Budget budget, Lost& lost) {
    const double firstAnswer = ownerAnswers_ ? X11SelectionRead::patience : unprovenPatience;
    X11SelectionRead conversion(connection_, clipboard_, target, budget.deadline, firstAnswer, budget.bytes);
    const auto count = changeCount_;
    struct Registered {
        std::set<X11SelectionRead*>& reads;
        X11SelectionRead* read;
        ~Registered() { reads.erase(read); }
    };
    reads_.insert(&conversion);
    const Registered registered{reads_, &conversion};
    auto data = co_await std::move(conversion).result();
    // Another owner since then has yet to show what it does.
    if (count == changeCount_) {
        ownerAnswers_ = !conversion.timedOut();
        if (!ownerAnswers_) noteFailure(target);
    }
    if (!data && !conversion.wasRefused()) lost = Lost::something;
    if (data && data->type == XCB_ATOM_NONE) data.reset();
    co_return data;
}

void X11Pasteboard::noteFailure(xcb_atom_t target) {
    if (std::exchange(ownerFailed_, true)) return;
    logLine("the owner of the clipboard did not deliver in time: " + connection_.atomName(target));
}

/// What there is to be read; an owner that cannot list it is asked for text.
Task<std::vector<xcb_atom_t>> X11Pasteboard::readTargets(Budget budget, Lost& lost) {
    const auto listing = co_await read(connection_.atom("TARGETS"), budget, lost);
    if (!listing && lost == Lost::nothing)
        co_return std::vector{connection_.atom("UTF8_STRING"), xcb_atom_t{XCB_ATOM_STRING}};
    std::vector<xcb_atom_t> targets;
    for (const auto target : atomsIn(listing)) {
        const bool isNew = std::ranges::find(targets, target) == targets.end();
        if (isNew && isContents(connection_.atomName(target))) targets.push_back(target);
    }
    co_return targets;
}

Task<Pasteboard::Reading> X11Pasteboard::readOwner(Budget budget) {
    if (ownerOf(clipboard_) == XCB_WINDOW_NONE) co_return Reading{};
    auto lost = Lost::nothing;
    const auto count = changeCount_;
    const auto targets = co_await readTargets(budget, lost);
    Item item;
    for (const auto target : targets) {
        if (count != changeCount_) break;
        if (connection_.executor().now() >= budget.deadline) {
            lost = Lost::something;
            noteFailure(target);
            break;
        }
        auto data = co_await read(target, budget, lost);
        if (!data) continue;
        budget.bytes -= std::min(budget.bytes, data->bytes.size());
        item.emplace_back(
            pasteboardType({connection_.atomName(target), connection_.atomName(data->type), data->format}),
            std::move(data->bytes));
    }
    using enum Reading::State;
    if (item.empty()) co_return Reading{targets.empty() && lost == Lost::nothing ? empty : unreadable, {}};
    Reading reading{lost == Lost::nothing ? complete : partial, {}};
    reading.items.push_back(std::move(item));
    co_return reading;
}

Pasteboard::Item X11Pasteboard::ownItem() {
    Item item;
    for (const auto& [target, data] : contents_.entries()) {
        const auto name =
            TargetName{connection_.atomName(target), connection_.atomName(data->type), data->format};
        item.emplace_back(pasteboardType(name), data->bytes);
    }
    return item;
}

Task<Pasteboard::Reading> X11Pasteboard::pasteboardItems() {
    const Budget budget{connection_.executor().now() + snapshotBudget, snapshotBytes};
    for (;;) {
        const auto count = changeCount_;
        if (owns_) {
            if (contents_.entries().empty()) co_return Reading{};
            Reading own{Reading::State::complete, {}};
            own.items.push_back(ownItem());
            co_return own;
        }
        auto reading = co_await readOwner(budget);
        // Half of one owner's contents and half of the next one's are nobody's.
        if (count == changeCount_) co_return reading;
        if (connection_.executor().now() >= budget.deadline)
            co_return Reading{Reading::State::unreadable, {}};
    }
}

Task<std::optional<std::string>> X11Pasteboard::string() {
    const Budget budget{connection_.executor().now() + stringBudget};
    auto lost = Lost::nothing;
    for (const std::string_view target :
         {"UTF8_STRING", "text/plain;charset=utf-8", "STRING", "text/plain"}) {
        const xcb_atom_t atom = connection_.atom(target);
        X11SelectionRead::Result data;
        if (!owns_) {
            data = co_await read(atom, budget, lost);
        } else if (const auto own = contents_.find(atom)) {
            data = *own;
        }
        if (connection_.executor().now() >= budget.deadline) break;
        if (!data || data->format != 8) continue;
        const bool latin1 = data->type == XCB_ATOM_STRING;
        co_return latin1 ? utf8FromLatin1(data->bytes) : std::move(data->bytes);
    }
    co_return std::nullopt;
}

Task<void> X11Pasteboard::servePrimaryForPaste() {
    commit();
    const auto count = changeCount_;
    if (!owns_ || contents_.entries().empty()) co_return;
    co_await keepPrimary();
    if (count != changeCount_) co_return;
    servesPrimary_ = true;
    offeredPrimary_ = owner_.take(XCB_ATOM_PRIMARY, contents_);
    primaryTimer_.once(primaryLife, [this] { endPrimary(); });
}

Task<void> X11Pasteboard::keepPrimary() {
    const auto owner = ownerOf(XCB_ATOM_PRIMARY);
    // What was kept for an earlier paste is still what the user selected last.
    if (owner == owner_.window()) co_return;
    primaryBefore_.clear();
    if (owner == XCB_WINDOW_NONE) co_return;
    const double deadline = connection_.executor().now() + primaryBudget;
    SelectionContents kept;
    const X11SelectionRead listing(connection_, XCB_ATOM_PRIMARY, connection_.atom("TARGETS"), deadline);
    for (const auto target : atomsIn(co_await listing.result())) {
        if (connection_.executor().now() >= deadline) break;
        if (!isContents(connection_.atomName(target)) || kept.find(target)) continue;
        X11SelectionRead conversion(connection_, XCB_ATOM_PRIMARY, target, deadline);
        auto data = co_await std::move(conversion).result();
        if (data && data->type != XCB_ATOM_NONE) kept.put(target, std::move(*data));
    }
    primaryBefore_ = std::move(kept);
}

void X11Pasteboard::endPrimary() {
    if (!std::exchange(servesPrimary_, false)) return;
    primaryTimer_.stop();
    owner_.replaceIfOwned(XCB_ATOM_PRIMARY, primaryBefore_);
}

void X11Pasteboard::keepThroughCrash(const std::vector<Item>& items) {
    if (keeper_ == nullptr) return;
    ClipboardKeeper::Entries entries;
    for (const auto& item : items) entries.insert(entries.end(), item.begin(), item.end());
    keeper_->keep(entries);
}

void X11Pasteboard::keepContents() {
    if (keeper_ == nullptr) return;
    if (contents_.entries().empty()) return keeper_->forget();
    keepThroughCrash({ownItem()});
}

bool X11Pasteboard::isMark(xcb_atom_t target) {
    return std::ranges::find(passingMarkers, connection_.atomName(target), &Marker::target) !=
           passingMarkers.end();
}

bool X11Pasteboard::isPassing() {
    return std::ranges::any_of(contents_.entries(),
                               [this](const auto& entry) { return isMark(entry.first); });
}

Task<bool> X11Pasteboard::handOver() {
    commit();
    if (!owns_ || contents_.entries().empty() || isPassing()) co_return false;
    const double deadline = connection_.executor().now() + handOverBudget;
    // Without a list of targets the manager takes all of them; it asks for them while we wait.
    X11SelectionRead saving(connection_, connection_.atom("CLIPBOARD_MANAGER"),
                            connection_.atom("SAVE_TARGETS"), deadline);
    co_return (co_await saving.result()).has_value();
}

}  // namespace dorix
