#include "adapters/harness/XDesktop.h"
#include "linux/keeper/ClipboardKeeper.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11ClipboardHeir.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/X11SelectionRead.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>

namespace dorix {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

std::string patternOf(std::size_t size) {
    std::string bytes(size, '\0');
    std::uint32_t state = 12345;
    for (auto& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

class X11PasteboardTest : public XDesktopTest {
 protected:
    void copyWithXclip(const std::string& bytes, const std::string& target) {
        const auto before = pasteboard_.changeCount();
        OtherProgram xclip({"xclip", "-selection", "clipboard", "-t", target, "-i"}, {}, bytes);
        ASSERT_TRUE(waitFor([&] { return xclip.hasEnded() && pasteboard_.changeCount() > before; }));
    }
    std::string pasteWithXclip(const std::string& target) {
        OtherProgram xclip({"xclip", "-selection", "clipboard", "-t", target, "-o"});
        EXPECT_TRUE(waitFor([&] { return xclip.hasEnded(); }));
        return xclip.output();
    }

    void offer(const std::string& text) {
        pasteboard_.clearContents();
        pasteboard_.setString(text);
        pasteboard_.commit();
    }

    /// The clipboard as another program sees it.
    std::optional<SelectionData> readAsOther(std::string_view target) {
        settle();
        return readSelection(loop_, *user_, "CLIPBOARD", target);
    }

    std::vector<std::string> targetsSeenByOther() {
        const auto data = readAsOther("TARGETS");
        std::vector<std::string> names;
        for (std::size_t i = 0; data && i + 4 <= data->bytes.size(); i += 4) {
            xcb_atom_t atom = 0;
            std::memcpy(&atom, data->bytes.data() + i, 4);
            names.push_back(user_->atomName(atom));
        }
        return names;
    }

    X11Pasteboard pasteboard_{*connection_};
    const xcb_atom_t clipboard_ = connection_->atom("CLIPBOARD");
};

/// Owns a selection with answers of the test's own.
class RawOwner {
 public:
    using Request = xcb_selection_request_event_t;
    using Answer = std::function<void(RawOwner&, const Request&, const std::string& target)>;

    RawOwner(X11Connection& connection, Answer answer, const char* selection = "CLIPBOARD")
        : connection_(connection),
          window_(takeSelection(connection, selection)),
          token_(
              connection.listen(XCB_SELECTION_REQUEST, [this, answer = std::move(answer)](const auto& event) {
                  const auto& request = reinterpret_cast<const Request&>(event);
                  answer(*this, request, connection_.atomName(request.target));
              })) {}
    ~RawOwner() { quit(); }

    void quit() {
        xcb_destroy_window(connection_.get(), std::exchange(window_, XCB_WINDOW_NONE));
        connection_.flush();
    }

    void reply(const Request& request, std::string_view type, std::uint8_t format, std::string_view bytes) {
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                            connection_.atom(type), format,
                            static_cast<std::uint32_t>(bytes.size() / (format / 8)), bytes.data());
        agree(request);
    }
    void agree(const Request& request) {
        xcb_selection_notify_event_t notify{};
        notify.response_type = XCB_SELECTION_NOTIFY;
        notify.requestor = request.requestor;
        notify.selection = request.selection;
        notify.target = request.target;
        notify.property = request.property;
        xcb_send_event(connection_.get(), 0, request.requestor, 0, reinterpret_cast<const char*>(&notify));
        connection_.flush();
    }

    void replyTargets(const Request& request, const std::vector<std::string>& names) {
        std::string bytes;
        for (const auto& name : names) {
            const xcb_atom_t atom = connection_.atom(name);
            bytes.append(reinterpret_cast<const char*>(&atom), sizeof atom);
        }
        reply(request, "ATOM", 32, bytes);
    }

 private:
    X11Connection& connection_;
    xcb_window_t window_;
    Subscription token_;
};

void refuse(RawOwner&, const RawOwner::Request&, const std::string&) {}

TEST_F(X11PasteboardTest, OffersTextUnderEveryNameThatIsAskedFor) {
    offer("señal");
    for (const char* target : {"UTF8_STRING", "TEXT", "text/plain", "text/plain;charset=utf-8"}) {
        EXPECT_EQ(pasteWithXclip(target), "señal") << target;
    }
    EXPECT_EQ(pasteWithXclip("STRING"),
              "se\xF1"
              "al");
    offer("5 €");
    EXPECT_THAT(targetsSeenByOther(), Not(Contains("STRING")));
    EXPECT_EQ(result(pasteboard_.string()), "5 €");
}

TEST_F(X11PasteboardTest, LargeDataGoesOutInPiecesToSeveralAtOnceAndComesIn) {
    const auto image = patternOf(3'000'001);
    pasteboard_.clearContents();
    pasteboard_.setData(image, "image/png");
    settle();
    const auto read = [this] {
        return std::make_unique<X11SelectionRead>(*user_, clipboard_, user_->atom("image/png"),
                                                  loop_.main.now() + 5);
    };
    const auto one = read();
    const auto two = read();
    auto gone = read();
    gone.reset();
    EXPECT_TRUE(pasteWithXclip("image/png") == image);
    EXPECT_TRUE(waitFor([&] { return one->result().isDone() && two->result().isDone(); }));
    EXPECT_TRUE(readAsOther("image/png").value().bytes == image);

    copyWithXclip(image, "image/png");
    const auto items = result(pasteboard_.pasteboardItems()).items;
    ASSERT_EQ(items.size(), 1U);
    EXPECT_TRUE(std::ranges::count(items[0], std::pair(std::string("image/png"), image)) == 1);
}

TEST_F(X11PasteboardTest, AnswersTheQuestionsThatOwnersAreAsked) {
    offer("hola");
    EXPECT_THAT(targetsSeenByOther(),
                ElementsAre("TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "UTF8_STRING",
                            "text/plain;charset=utf-8", "TEXT", "STRING", "text/plain"));
    const auto time = readAsOther("TIMESTAMP").value();
    EXPECT_EQ(time.format, 32);
    EXPECT_NE(time.bytes, std::string(4, '\0')) << "the server's time, not CurrentTime";
    EXPECT_FALSE(readAsOther("image/png"));

    // MULTIPLE: what cannot be had is marked in the list.
    const auto window = user_->createHiddenWindow(XCB_EVENT_MASK_NO_EVENT);
    const xcb_atom_t list = user_->atom("LIST");
    const std::vector<xcb_atom_t> pairs{user_->atom("UTF8_STRING"), user_->atom("A"),
                                        user_->atom("image/png"), user_->atom("B")};
    xcb_change_property(user_->get(), XCB_PROP_MODE_REPLACE, window, list, user_->atom("ATOM_PAIR"), 32, 4,
                        pairs.data());
    bool answered = false;
    const auto token = user_->listen(XCB_SELECTION_NOTIFY, [&](const auto&) { answered = true; });
    xcb_convert_selection(user_->get(), window, clipboard_, user_->atom("MULTIPLE"), list, XCB_CURRENT_TIME);
    user_->flush();
    ASSERT_TRUE(waitFor([&] { return answered; }));
    const auto value = [&](xcb_atom_t property) {
        const auto reply = user_->reply(xcb_get_property_reply,
                                        xcb_get_property(user_->get(), 0, window, property, 0, 0, 100));
        return std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                           static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    };
    EXPECT_EQ(value(pairs[1]), "hola");
    auto expected = pairs;
    expected[3] = XCB_ATOM_NONE;
    EXPECT_EQ(value(list), std::string(reinterpret_cast<const char*>(expected.data()), 16));
    xcb_destroy_window(user_->get(), window);
}

TEST_F(X11PasteboardTest, ASnapshotIsOfferedAgainExactlyAsItWas) {
    const auto sixteen = patternOf(6);
    const auto thirtyTwo = patternOf(200'000);
    const RawOwner owner(*user_, [&](RawOwner& self, const auto& request, const std::string& target) {
        if (target == "TARGETS") {
            self.replyTargets(request,
                              {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "INSERT_SELECTION",
                               "text/uri-list", "COMPOUND_TEXT", "X-SIXTEEN", "X-THIRTY-TWO", "X-EMPTY"});
        }
        if (target == "text/uri-list") self.reply(request, target, 8, "file:///tmp/a\r\nfile:///tmp/b\r\n");
        if (target == "COMPOUND_TEXT") self.reply(request, "STRING", 8, "abc");
        if (target == "X-SIXTEEN") self.reply(request, "INTEGER", 16, sixteen);
        if (target == "X-THIRTY-TWO") self.reply(request, target, 32, thirtyTwo);
        if (target == "X-EMPTY") self.reply(request, target, 8, "");
    });
    settle();
    const auto items = result(pasteboard_.pasteboardItems()).items;
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].size(), 5U);

    pasteboard_.clearContents();
    pasteboard_.setString("de paso");
    pasteboard_.clearContents();
    pasteboard_.writeObjects(items);
    EXPECT_THAT(targetsSeenByOther(),
                ElementsAre("TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "text/uri-list",
                            "COMPOUND_TEXT", "X-SIXTEEN", "X-THIRTY-TWO", "X-EMPTY"));
    EXPECT_EQ(readAsOther("text/uri-list").value().bytes, "file:///tmp/a\r\nfile:///tmp/b\r\n");
    const auto text = readAsOther("COMPOUND_TEXT").value();
    EXPECT_EQ(text.type, xcb_atom_t{XCB_ATOM_STRING});
    const auto integers = readAsOther("X-SIXTEEN").value();
    EXPECT_EQ(integers.type, xcb_atom_t{XCB_ATOM_INTEGER});
    EXPECT_EQ(integers.format, 16);
    EXPECT_EQ(integers.bytes, sixteen);
    EXPECT_EQ(readAsOther("X-THIRTY-TWO").value().format, 32);
    EXPECT_EQ(readAsOther("X-EMPTY").value().bytes, "");
    EXPECT_EQ(result(pasteboard_.pasteboardItems()).items, items);
}

TEST_F(X11PasteboardTest, CountsEachChangeOnce) {
    settle();
    const auto before = pasteboard_.changeCount();
    pasteboard_.clearContents();
    pasteboard_.setString("uno");
    EXPECT_EQ(pasteboard_.changeCount(), before + 1);
    settle();
    EXPECT_EQ(pasteboard_.changeCount(), before + 1) << "counted again when the server told";
    copyWithXclip("dos", "UTF8_STRING");
    EXPECT_EQ(pasteboard_.changeCount(), before + 2);
    // Added later to what is there already.
    pasteboard_.clearContents();
    settle();
    pasteboard_.setString("dos");
    EXPECT_EQ(readAsOther("UTF8_STRING").value().bytes, "dos");
    EXPECT_EQ(pasteboard_.changeCount(), before + 3);
    copyWithXclip("dos", "UTF8_STRING");
    // The clipboard is another's now.
    pasteboard_.setString("tres");
    EXPECT_EQ(result(pasteboard_.string()), "dos");
    EXPECT_EQ(pasteWithXclip("UTF8_STRING"), "dos");
}

TEST_F(X11PasteboardTest, TheLastOfSeveralChangesCountsHoweverLateTheyAreHeardOf) {
    settle();
    const auto carriedOut = [this] {
        user_->reply(xcb_get_input_focus_reply, xcb_get_input_focus(user_->get()));
    };
    const auto before = pasteboard_.changeCount();
    // One owner dies and another comes before our change, and all of it is heard of afterwards.
    RawOwner dying(*user_, refuse);
    dying.quit();
    const RawOwner earlier(*user_, refuse);
    carriedOut();
    offer("nuestro");
    pasteboard_.commit();
    settle();
    EXPECT_EQ(pasteboard_.changeCount(), before + 1);
    EXPECT_EQ(result(pasteboard_.string()), "nuestro");
    EXPECT_EQ(pasteWithXclip("UTF8_STRING"), "nuestro");

    // Another takes it right after us, before we have heard of ourselves.
    offer("de paso");
    pasteboard_.commit();
    const RawOwner later(*user_, [](RawOwner& self, const auto& request, const auto&) {
        self.reply(request, "UTF8_STRING", 8, "ajeno");
    });
    carriedOut();
    settle();
    EXPECT_EQ(pasteboard_.changeCount(), before + 3);
    EXPECT_EQ(result(pasteboard_.string()), "ajeno");

    // Emptied by us, then by an owner that comes and dies.
    pasteboard_.clearContents();
    pasteboard_.commit();
    RawOwner last(*user_, refuse);
    last.quit();
    settle();
    EXPECT_EQ(pasteboard_.changeCount(), before + 6) << "it came and it went";
}

TEST_F(X11PasteboardTest, AClearedClipboardHasNoOwner) {
    copyWithXclip("algo", "UTF8_STRING");
    const auto before = pasteboard_.changeCount();
    pasteboard_.clearContents();
    EXPECT_TRUE(waitFor([&] { return selectionOwner(*user_, "CLIPBOARD") == XCB_WINDOW_NONE; }));
    EXPECT_THAT(result(pasteboard_.pasteboardItems()).items, IsEmpty());
    EXPECT_EQ(result(pasteboard_.string()), std::nullopt);
    settle();
    EXPECT_EQ(pasteboard_.changeCount(), before + 1);
}

TEST_F(X11PasteboardTest, AnswersWhileTheMainExecutorIsBusy) {
    offer("ocupado");
    pasteboard_.commit();
    // Asked and awaited without a turn of the loop in between.
    const auto window = user_->createHiddenWindow(XCB_EVENT_MASK_NO_EVENT);
    const xcb_atom_t property = user_->atom("ANSWER");
    xcb_convert_selection(user_->get(), window, clipboard_, user_->atom("UTF8_STRING"), property,
                          XCB_CURRENT_TIME);
    user_->flush();
    const XcbPtr<xcb_generic_event_t> event(xcb_wait_for_event(user_->get()));
    ASSERT_EQ(event->response_type & 0x7F, XCB_SELECTION_NOTIFY);
    EXPECT_EQ(reinterpret_cast<const xcb_selection_notify_event_t&>(*event).property, property);
    xcb_destroy_window(user_->get(), window);
}

TEST_F(X11PasteboardTest, PassingContentsSaySoToClipboardManagers) {
    offer("dictado");
    pasteboard_.setData({}, Pasteboard::transientType);
    EXPECT_EQ(readAsOther("x-kde-passwordManagerHint").value().bytes, "secret");
    EXPECT_THAT(targetsSeenByOther(), Contains(std::string(Pasteboard::transientType)));
    EXPECT_FALSE(result(pasteboard_.handOver()));
}

TEST_F(X11PasteboardTest, AHungOwnerCostsNoMoreThanTheBudget) {
    const RawOwner silent(*user_, refuse);
    settle();
    const double start = loop_.main.now();
    testing::internal::CaptureStderr();
    EXPECT_THAT(result(pasteboard_.pasteboardItems()).items, IsEmpty());
    EXPECT_THAT(result(pasteboard_.pasteboardItems()).items, IsEmpty());
    EXPECT_LT(loop_.main.now() - start, 1.8);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::ranges::count(log, '\n'), 1) << log;
    EXPECT_THAT(log, testing::HasSubstr("DORIX: the owner of the clipboard"));

    const RawOwner half(*user_, [](RawOwner& self, const auto& request, const std::string& target) {
        if (target == "TARGETS") self.replyTargets(request, {"A", "B", "C", "text/plain"});
        if (target == "text/plain") self.reply(request, target, 8, "tarde");
        // Announces pieces and never sends one.
        if (target == "B") self.reply(request, "INCR", 32, std::string(4, '\1'));
    });
    settle();
    const double second = loop_.main.now();
    const auto items = result(pasteboard_.pasteboardItems()).items;
    EXPECT_LT(loop_.main.now() - second, 6);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_THAT(items[0], ElementsAre(Pair("text/plain", "tarde"))) << "what it did answer is kept";
}

TEST_F(X11PasteboardTest, ASlowOwnerLosesNothing) {
    const RawOwner owner(*user_, [this](RawOwner& self, const auto& request, const std::string& target) {
        if (target == "TARGETS") return self.replyTargets(request, {"text/html", "image/png", "text/plain"});
        loop_.main.after(0.6, [&self, request, target] { self.reply(request, target, 8, "de " + target); });
    });
    settle();
    const auto items = result(pasteboard_.pasteboardItems()).items;
    ASSERT_EQ(items.size(), 1U);
    EXPECT_THAT(items[0], ElementsAre(Pair("text/html", "de text/html"), Pair("image/png", "de image/png"),
                                      Pair("text/plain", "de text/plain")));
}

TEST_F(X11PasteboardTest, AnOwnerThatQuitsWhileItIsReadGivesNothing) {
    const RawOwner quitter(*user_, [](RawOwner& self, const auto& request, const std::string& target) {
        if (target == "TARGETS") return self.replyTargets(request, {"text/plain", "text/html"});
        self.quit();
    });
    settle();
    const double start = loop_.main.now();
    EXPECT_THAT(result(pasteboard_.pasteboardItems()).items, IsEmpty());
    EXPECT_LT(loop_.main.now() - start, 1.5) << "waited for an owner that is gone";
}

TEST_F(X11PasteboardTest, AReadUnderWayMayBeDestroyed) {
    const RawOwner silent(*user_, refuse);
    settle();
    {
        TaskScope scope(loop_.main);
        scope.spawn(pasteboard_.pasteboardItems());
    }
    settle();
    EXPECT_FALSE(connection_->isLost());
}

TEST_F(X11PasteboardTest, WhatTheUserHadOutlivesAProgramThatDies) {
    const auto image = patternOf(2'000'000);
    copyWithXclip(image, "image/png");
    ClipboardKeeper keeper;
    KeptClipboard kept{keeper.takeOtherEnd()};
    const auto survivors = [&] {
        EXPECT_TRUE(kept.receive());
        return kept.item().value_or(Pasteboard::Item());
    };
    std::optional<X11Pasteboard> dying(std::in_place, *connection_, &keeper);
    const auto before = result(dying->pasteboardItems()).items;
    dying->keepThroughCrash(before);
    dying->clearContents();
    dying->setString("dictado");
    dying->setData({}, Pasteboard::transientType);
    ASSERT_TRUE(dying->holdsOwnContents());
    const auto item = survivors();
    EXPECT_EQ(item, before.front());
    dying.reset();

    bool isOver = false;
    const X11ClipboardHeir heir(loop_.main, loop_.main, item, [&] { isOver = true; });
    ASSERT_TRUE(waitFor([&] { return selectionOwner(*connection_, "CLIPBOARD") != XCB_WINDOW_NONE; }));
    EXPECT_TRUE(pasteWithXclip("image/png") == image);
    EXPECT_FALSE(isOver);
    X11Pasteboard next(*connection_, &keeper);
    next.clearContents();
    next.setString("otro");
    EXPECT_TRUE(waitFor([&] { return isOver; }));
    EXPECT_THAT(survivors(), Contains(Pair("UTF8_STRING", "otro")));
    copyWithXclip("suyo", "UTF8_STRING");
    EXPECT_TRUE(waitFor([&] { return survivors().empty(); })) << "its owner keeps it";
}

TEST_F(X11PasteboardTest, HandsItsContentsOverToTheClipboardManager) {
    offer("de antes");
    EXPECT_FALSE(result(pasteboard_.handOver())) << "there is no clipboard manager";

    // A manager saves everything, then says so.
    std::optional<RawOwner::Request> saving;
    RawOwner manager(
        *user_, [&](RawOwner&, const auto& request, const auto&) { saving = request; }, "CLIPBOARD_MANAGER");
    TaskScope tasks(loop_.main);
    const auto done = tasks.spawn(pasteboard_.handOver());
    ASSERT_TRUE(waitFor([&] { return saving.has_value(); }));
    EXPECT_EQ(user_->atomName(saving->target), "SAVE_TARGETS");
    EXPECT_EQ(readAsOther("UTF8_STRING").value().bytes, "de antes");
    EXPECT_FALSE(done.isDone());
    manager.agree(*saving);
    const auto wait = [](auto task) -> Task<bool> { co_return co_await task; };
    EXPECT_TRUE(result(wait(done)));
}

TEST(SelectionContentsTest, TypesCarryWhatTheirNameDoesNotTell) {
    EXPECT_EQ(pasteboardType({"image/png", "image/png", 8}), "image/png");
    for (const TargetName& name : {TargetName{"TEXT", "UTF8_STRING", 8}, TargetName{"X", "X", 32},
                                   TargetName{"odd\tname", "T", 16}, TargetName{"plain", "plain", 8}}) {
        EXPECT_EQ(parsePasteboardType(pasteboardType(name)), name);
    }
    EXPECT_EQ(parsePasteboardType("a\tb\t7").target, "a\tb\t7");
}

}  // namespace
}  // namespace dorix
