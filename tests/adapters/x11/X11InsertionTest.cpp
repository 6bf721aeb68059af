#include "adapters/harness/NumberFrom.h"
#include "adapters/harness/XDesktop.h"
#include "base/async/Sleep.h"
#include "context/TextInsertion.h"
#include "context/UserClipboard.h"
#include "linux/apps/DesktopEntries.h"
#include "linux/x11/X11EventPoster.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/X11SelectionRead.h"
#include "linux/x11/X11SelectionServer.h"
#include "linux/x11/X11Workspace.h"

#include <gmock/gmock.h>
#include <xcb/xfixes.h>

#include <cstdlib>
#include <iostream>
#include <random>

namespace dorix {
namespace {

using Delivery = InsertionReceipt::Delivery;

/// How many insertions are tried: a few of them in every run, and as many as the environment says.
int insertionCount() { return numberFrom("DORIX_INSERTIONS", 15); }

/// Where the random numbers begin; told, so that several runs at once differ.
unsigned seed() { return static_cast<unsigned>(numberFrom("DORIX_SEED", 20261121)); }

/// Another program that holds the clipboard: what is on it, and how it answers.
class Owner {
 public:
    enum class Kind { text, image, files, none, stalls, dies };

    Owner(EventLoop& loop, Kind kind, int number)
        : kind(kind), connection_(connectTo(loop)), server_(*connection_, [](const auto&) {}) {
        const std::string text = "lo que tenía " + std::to_string(number);
        if (kind == Kind::image)
            put("image/png", std::string(20'000'000, static_cast<char>('a' + number % 26)));
        if (kind == Kind::files) put("text/uri-list", "file:///" + std::to_string(number) + "\r\n");
        if (kind != Kind::none && kind != Kind::image) put("UTF8_STRING", text);
        if (kind == Kind::none) {
            server_.giveUp(connection_->atom("CLIPBOARD"));
        } else if (kind == Kind::stalls) {
            takeSelection(*connection_, "CLIPBOARD");  // and answers nothing
        } else {
            server_.take(connection_->atom("CLIPBOARD"), contents_);
        }
    }

    const Kind kind;
    /// What is to be found on the clipboard afterwards, by target.
    std::vector<std::pair<std::string, std::string>> data;

 private:
    void put(const std::string& target, std::string bytes) {
        const auto atom = connection_->atom(target);
        contents_.put(atom, {atom, 8, bytes});
        data.emplace_back(target, std::move(bytes));
    }

    std::unique_ptr<X11Connection> connection_;
    X11SelectionServer server_;
    SelectionContents contents_;
};

/// A clipboard manager: looks at all that comes, and puts it back when its owner goes.
class Manager {
 public:
    explicit Manager(EventLoop& loop)
        : loop_(loop),
          connection_(connectTo(loop)),
          server_(*connection_, [](const auto&) {}),
          tasks_(loop.main) {
        clipboard_ = connection_->atom("CLIPBOARD");
        xcb_xfixes_select_selection_input(connection_->get(), connection_->root(), clipboard_,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
        const auto first = xcb_get_extension_data(connection_->get(), &xcb_xfixes_id)->first_event;
        changes_ = connection_->listen(
            static_cast<std::uint8_t>(first + XCB_XFIXES_SELECTION_NOTIFY), [this](const auto& event) {
                const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
                if (change.owner == server_.window()) return;
                if (change.owner != XCB_NONE) {
                    tasks_.spawn(look());
                } else if (!seen_.entries().empty() && isUnowned()) {
                    server_.take(clipboard_, seen_);
                }
            });
        connection_->flush();
    }

 private:
    /// The news may be old: somebody else may have copied since.
    bool isUnowned() {
        const auto owner = connection_->reply(xcb_get_selection_owner_reply,
                                              xcb_get_selection_owner(connection_->get(), clipboard_));
        return owner && owner->owner == XCB_WINDOW_NONE;
    }

    Task<void> look() {
        const auto target = connection_->atom("UTF8_STRING");
        X11SelectionRead reading(*connection_, clipboard_, target, loop_.main.now() + 1);
        auto data = co_await std::move(reading).result();
        seen_.clear();
        if (data) seen_.put(target, std::move(*data));
    }

    EventLoop& loop_;
    std::unique_ptr<X11Connection> connection_;
    X11SelectionServer server_;
    xcb_atom_t clipboard_ = XCB_ATOM_NONE;
    SelectionContents seen_;
    Subscription changes_;
    TaskScope tasks_;
};

class X11InsertionTest : public XDesktopTest {
 protected:
    struct Tally {
        int wrongPastes = 0;
        int falselyTold = 0;
        int untold = 0;
        int lostClipboards = 0;
        int delivered = 0;
    };

    /// The application pastes what is on the clipboard when it gets round to it.
    void pasteLate(double seconds) {
        editor_->forgetKeys();
        pasting_ = tasks_.spawn([](X11InsertionTest* self, double wait) -> Task<void> {
            while (self->editor_->count("+v/4") == 0) co_await sleep(0.002);
            co_await sleep(wait);
            auto& connection = self->editor_->connection();
            X11SelectionRead reading(connection, connection.atom("CLIPBOARD"), connection.atom("UTF8_STRING"),
                                     self->loop_.main.now() + 5);
            const auto data = co_await reading.result();
            self->pasted_ = data ? data->bytes : "";
        }(this, seconds));
    }

    InsertionReceipt insert(const std::string& text) {
        Insertion insertion{.text = text};
        insertion.target = workspace_.frontmostApplication();
        const auto insert = [](auto receipt) -> Task<InsertionReceipt> { co_return co_await receipt; };
        auto receipt = result(insert(inserter_.insertText(std::move(insertion))));
        bool isSettled = false;
        tasks_.spawn([](UserClipboard& clipboard, bool& settled) -> Task<void> {
            co_await clipboard.settled();
            settled = true;
        }(clipboard_, isSettled));
        EXPECT_TRUE(waitFor([&] { return isSettled; }));
        return receipt;
    }

    bool isOnClipboard(const std::vector<std::pair<std::string, std::string>>& data) {
        return std::ranges::all_of(data, [this](const auto& entry) {
            const auto found = readSelection(loop_, *user_, "CLIPBOARD", entry.first);
            return found && found->bytes == entry.second;
        });
    }

    std::unique_ptr<OtherApplication> editor_ = openApplication("editor", "Editor");
    DesktopEntries entries_{loop_.main};
    X11Workspace workspace_{windows_, entries_};
    X11Pasteboard pasteboard_{*connection_};
    X11EventPoster poster_{*connection_, keyboard_, input_, windows_, &pasteboard_};
    UserClipboard clipboard_{loop_.main, pasteboard_};
    TextInserter inserter_{{loop_.main, clipboard_, pasteboard_, poster_, workspace_}};
    std::optional<std::string> pasted_;
    std::optional<TaskHandle<void>> pasting_;
    TaskScope tasks_{loop_.main};
};

TEST_F(X11InsertionTest, WhateverHappensNothingElseIsPastedNothingIsLostAndTheTruthIsTold) {
    std::mt19937 random(seed());
    const auto anyOf = [&](int count) { return std::uniform_int_distribution(0, count - 1)(random); };
    const auto upTo = [&](double seconds) { return std::uniform_real_distribution(0.0, seconds)(random); };
    const int count = insertionCount();
    Tally tally;
    std::optional<Manager> manager;
    for (int i = 0; i < count; ++i) {
        if (i == count / 2) manager.emplace(loop_);
        loop_.runFor(0.02);  // the manager puts back what the last owner had
        std::optional<Owner> owner(std::in_place, loop_, static_cast<Owner::Kind>(i % 6), i);
        const auto kind = owner->kind;
        const auto expected = owner->data;
        settle();
        const bool isAway = anyOf(20) == 0;
        pasted_.reset();
        if (!isAway) pasteLate(anyOf(2) == 0 ? upTo(2) : upTo(0.05));
        Executor::TimerId death = Executor::TimerId::none;
        if (kind == Owner::Kind::dies) death = loop_.main.after(upTo(0.3), [&] { owner.reset(); });
        std::optional<Owner> copied;
        Executor::TimerId copy = Executor::TimerId::none;
        if (anyOf(6) == 0) {
            copy = loop_.main.after(upTo(0.6), [&] { copied.emplace(loop_, Owner::Kind::text, 100000 + i); });
        }
        const std::string text = "Dictado número " + std::to_string(i);
        const auto receipt = insert(text);
        loop_.main.cancel(copy);
        loop_.main.cancel(death);
        const bool isDelivered = receipt.delivery == Delivery::delivered;
        tally.delivered += isDelivered ? 1 : 0;
        tally.falselyTold += isDelivered && pasted_ != text ? 1 : 0;
        tally.untold += !isDelivered && pasted_ == text ? 1 : 0;
        // What a clipboard manager puts back when an owner dies is its own affair.
        const bool isReadable = receipt.clipboard == Pasteboard::Reading::State::complete;
        const bool isKnown =
            kind != Owner::Kind::stalls && (kind != Owner::Kind::dies || (isReadable && !manager));
        const bool isLost =
            copied ? !isOnClipboard(copied->data) : isDelivered && isKnown && !isOnClipboard(expected);
        tally.lostClipboards += isLost ? 1 : 0;
        const bool isWrong = pasted_ && *pasted_ != text;
        tally.wrongPastes += isWrong ? 1 : 0;
        if (isLost || isWrong) {
            std::cout
                << "number " << i << ": " << (isLost ? "clipboard lost" : "wrong paste") << ", owner "
                << static_cast<int>(kind) << ", delivery " << static_cast<int>(receipt.delivery)
                << (copied ? ", copied meanwhile" : "") << (isAway ? ", away" : "") << ", pasted "
                << pasted_.value_or("nothing").substr(0, 40) << ", clipboard "
                << readSelection(loop_, *user_, "CLIPBOARD", "UTF8_STRING").value_or(SelectionData{}).bytes
                << "\n";
        }
        if (pasting_) pasting_->cancel();
    }
    std::cout << count << " insertions: " << tally.delivered << " delivered, " << tally.wrongPastes
              << " wrong pastes, " << tally.falselyTold << " told to be written that were not, "
              << tally.untold << " written that were not told, " << tally.lostClipboards
              << " clipboards lost\n";
    EXPECT_EQ(tally.wrongPastes, 0);
    EXPECT_EQ(tally.falselyTold, 0);
    EXPECT_EQ(tally.lostClipboards, 0);
    EXPECT_GT(tally.delivered, count / 2);
}

}  // namespace
}  // namespace dorix
