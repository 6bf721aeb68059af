#include "base/async/ManualExecutor.h"
#include "context/TextInsertion.h"
#include "context/TextSelection.h"
#include "context/UserClipboard.h"
#include "fakes/FakeAccessibility.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeKeys.h"
#include "fakes/FakePasteboard.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Items = std::vector<Pasteboard::Item>;
using Delivery = InsertionReceipt::Delivery;
using State = Pasteboard::Reading::State;

const Items pictureAndFiles = {
    {{"image/png", std::string("\x89PNG\0\xff", 6)}, {"text/html", ""}},
    {{"text/uri-list", "file:///a\r\nfile:///b\r\n"}},
};

std::string textOn(const FakePasteboard& pasteboard) {
    return pasteboard.items.empty() ? "" : pasteboard.items.front().front().second;
}

RunningApplication application(std::int32_t process, std::uint64_t window) {
    RunningApplication app;
    app.processIdentifier = process;
    app.windowNumber = window;
    return app;
}

class Borrowing : public testing::Test {
 protected:
    void SetUp() override {
        pasteboard.items = pictureAndFiles;
        workspace.frontmost = editor;
    }

    const RunningApplication editor = application(42, 1);
    const RunningApplication other = application(43, 2);
    ManualExecutor executor;
    FakePasteboard pasteboard;
    RecordingEventPoster poster;
    FakeWorkspace workspace;
    UserClipboard clipboard{executor, pasteboard};
};

class Inserting : public Borrowing {
 protected:
    void SetUp() override {
        Borrowing::SetUp();
        poster.onPost = [this](std::uint16_t) {
            executor.after(fetchesAfter,
                           [this] { pasted.push_back(pasteboard.fetch(editor, executor.now())); });
        };
    }

    Insertion text(std::string words) { return {.text = std::move(words), .target = editor}; }

    Completion<InsertionReceipt> insert(Insertion insertion) {
        auto receipt = inserter.insertText(std::move(insertion));
        executor.runPosted();
        return receipt;
    }
    InsertionReceipt receiptOf(Completion<InsertionReceipt> handle) {
        executor.advanceBy(10);
        InsertionReceipt receipt;
        tasks.spawn(
            [](auto handle, auto& receipt) -> Task<void> { receipt = co_await handle; }(handle, receipt));
        executor.runPosted();
        EXPECT_TRUE(handle.isDone());
        return receipt;
    }

    double fetchesAfter = 0.02;
    std::vector<std::string> pasted;
    TextInserter inserter{{executor, clipboard, pasteboard, poster, workspace}};
    TaskScope tasks{executor};
};

TEST_F(Inserting, DeliversTheTextAndGivesTheClipboardBack) {
    const auto done = insert(text("Hola."));
    EXPECT_EQ(pasteboard.items,
              (Items{{{"public.utf8-plain-text", "Hola."}, {"org.nspasteboard.TransientType", ""}}}));
    executor.advanceTo(0.1);
    EXPECT_TRUE(done.isDone()) << "nobody waits for the clipboard to come back";
    const auto settled = tasks.spawn(clipboard.settled());
    executor.advanceTo(0.449);
    EXPECT_EQ(textOn(pasteboard), "Hola.");
    EXPECT_FALSE(settled.isDone());
    executor.advanceTo(0.47);
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
    EXPECT_TRUE(settled.isDone());
    EXPECT_THAT(pasted, ElementsAre("Hola."));
    EXPECT_EQ(receiptOf(done), (InsertionReceipt{Delivery::delivered, false, State::complete}));

    pasteboard.items.clear();
    EXPECT_EQ(receiptOf(insert(text("Hola."))).clipboard, State::empty);
    EXPECT_THAT(pasteboard.items, IsEmpty());
}

TEST_F(Inserting, AnApplicationThatIsLateGetsTheTextAndThenTheClipboardComesBack) {
    fetchesAfter = 2;
    const auto done = insert(text("Hola."));
    executor.advanceTo(1.9);
    EXPECT_FALSE(done.isDone());
    executor.advanceTo(2.1);
    EXPECT_EQ(textOn(pasteboard), "Hola.") << "it may ask for it in another form as well";
    EXPECT_EQ(receiptOf(done).delivery, Delivery::delivered);
    EXPECT_THAT(pasted, ElementsAre("Hola."));
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
}

TEST_F(Inserting, WhatNobodyFetchesStaysOnTheClipboard) {
    poster.onPost = [this](std::uint16_t) {
        // Clipboard managers look at everything.
        executor.after(0.01, [this] { pasteboard.fetch(other, executor.now()); });
    };
    const Items left{{{"public.utf8-plain-text", "Hola."}}};
    EXPECT_EQ(receiptOf(insert(text("Hola."))), (InsertionReceipt{Delivery::untaken, true, State::complete}));
    EXPECT_EQ(pasteboard.items, left);
    poster.knowsChord = false;
    EXPECT_EQ(receiptOf(insert(text("Hola."))).delivery, Delivery::untaken);

    auto secret = text("Hola.");
    secret.isSecret = true;
    EXPECT_TRUE(receiptOf(insert(secret)).isOnClipboard);
    EXPECT_EQ(pasteboard.items.front().size(), 2U) << "and no clipboard manager keeps it";
}

TEST_F(Inserting, WithoutACursorTheTextStaysEvenIfItWasFetched) {
    auto insertion = text("Hola.");
    insertion.hasCursor = false;
    EXPECT_EQ(receiptOf(insert(insertion)), (InsertionReceipt{Delivery::delivered, true, State::complete}));
    EXPECT_EQ(pasteboard.items, (Items{{{"public.utf8-plain-text", "Hola."}}}));

    poster.onPost = [](std::uint16_t) {};
    const auto done = insert(insertion);
    executor.advanceBy(0.5);
    EXPECT_TRUE(done.isDone()) << "nobody waits long for what is not expected";
}

TEST_F(Inserting, GoesNowhereButToItsApplication) {
    workspace.frontmost = other;
    EXPECT_EQ(receiptOf(insert(text("uno"))).delivery, Delivery::elsewhere);
    EXPECT_EQ(textOn(pasteboard), "uno");

    // It leaves while the clipboard is read.
    workspace.frontmost = editor;
    pasteboard.readSeconds = 0.1;
    const auto done = insert(text("dos"));
    workspace.frontmost = other;
    EXPECT_EQ(receiptOf(done).delivery, Delivery::elsewhere);
    EXPECT_EQ(textOn(pasteboard), "dos");

    workspace.frontmost.reset();
    auto anywhere = text("tres");
    anywhere.target.reset();
    EXPECT_EQ(receiptOf(insert(anywhere)).delivery, Delivery::nowhere);
    EXPECT_THAT(poster.posted, IsEmpty());

    workspace.frontmost = editor;
    EXPECT_EQ(receiptOf(insert(anywhere)).delivery, Delivery::delivered);
}

TEST_F(Inserting, OurOwnWindowsGiveTheKeyboardBackFirst) {
    RunningApplication own = application(1, 9);
    own.bundleIdentifier = workspace.own;
    workspace.frontmost = own;
    const auto done = insert(text("Hola."));
    EXPECT_THAT(workspace.activated, ElementsAre(editor));
    EXPECT_EQ(receiptOf(done).delivery, Delivery::delivered);
    EXPECT_THAT(pasted, ElementsAre("Hola."));
}

TEST_F(Inserting, WhatTheUserCopiesMeanwhileIsNotPastedAndNotLost) {
    fetchesAfter = 0.1;
    // Before the application has fetched the text, and after.
    for (const double at : {0.05, 0.2}) {
        const auto done = insert(text("Hola."));
        executor.advanceBy(at);
        pasteboard.copyElsewhere("suyo");
        EXPECT_EQ(receiptOf(done).delivery, Delivery::delivered) << at;
        EXPECT_EQ(textOn(pasteboard), "suyo") << at;
    }
    EXPECT_THAT(pasted, ElementsAre("Hola.", "Hola."));

    // While a slow owner is asked what there was.
    pasteboard.readSeconds = 0.4;
    workspace.frontmost = editor;
    poster.onPost = [](std::uint16_t) {};
    const auto slow = insert(text("Hola."));
    executor.advanceBy(0.1);
    pasteboard.copyElsewhere("suyo");
    EXPECT_EQ(receiptOf(slow), (InsertionReceipt{Delivery::untaken, false, State::complete}));
    EXPECT_EQ(textOn(pasteboard), "suyo");
    pasteboard.readSeconds = 0;
    Inserting::SetUp();

    // Just before the text takes its place, and before a text that nobody gets does.
    clipboard.prepare();
    executor.runPosted();
    pasteboard.onCountAsked = [this] {
        pasteboard.onCountAsked = [this] { pasteboard.copyElsewhere("nuevo"); };
    };
    EXPECT_EQ(receiptOf(insert(text("Hola."))).delivery, Delivery::delivered);
    EXPECT_EQ(textOn(pasteboard), "nuevo");
    workspace.frontmost = other;
    pasteboard.onCountAsked = [this] {
        pasteboard.onCountAsked = [this] { pasteboard.copyElsewhere("suyo"); };
    };
    EXPECT_EQ(receiptOf(insert(text("Hola."))), (InsertionReceipt{Delivery::elsewhere, false, State::empty}));
    EXPECT_EQ(textOn(pasteboard), "suyo");
    workspace.frontmost = editor;

    // When it never fetches the text.
    poster.onPost = [](std::uint16_t) {};
    const auto untaken = insert(text("Hola."));
    executor.advanceBy(0.1);
    pasteboard.copyElsewhere("suyo");
    EXPECT_EQ(receiptOf(untaken), (InsertionReceipt{Delivery::untaken, false, State::complete}));
    EXPECT_EQ(textOn(pasteboard), "suyo");
    Inserting::SetUp();

    // Just before the stroke.
    pasteboard.onHoldsAsked = [this] { pasteboard.copyElsewhere("otro"); };
    EXPECT_EQ(receiptOf(insert(text("Hola."))).delivery, Delivery::delivered);
    EXPECT_EQ(textOn(pasteboard), "otro");
    EXPECT_EQ(pasted.back(), "Hola.");
}

TEST_F(Inserting, AClipboardManagerThatTakesTheTextOverDoesNotCostTheClipboard) {
    fetchesAfter = 0.1;
    for (const double at : {0.01, 0.3}) {
        const auto done = insert(text("Hola."));
        executor.advanceBy(at);
        pasteboard.copyElsewhere("Hola.");
        EXPECT_EQ(receiptOf(done).delivery, Delivery::delivered) << at;
        EXPECT_EQ(pasteboard.items, pictureAndFiles) << at;
    }
}

TEST_F(Inserting, TellsWhatOfTheClipboardCannotBeGivenBack) {
    for (const auto state : {State::partial, State::unreadable}) {
        pasteboard.readable = state;
        EXPECT_EQ(receiptOf(insert(text("Hola."))), (InsertionReceipt{Delivery::delivered, false, state}));
    }

    // A copy that could not be read is not taken away for what may not even be pasted.
    pasteboard.copyElsewhere("antes");
    poster.onPost = [this](std::uint16_t) { pasteboard.copyElsewhere("suyo"); };
    EXPECT_EQ(receiptOf(insert(text("Hola."))),
              (InsertionReceipt{Delivery::untaken, false, State::unreadable}));
    EXPECT_EQ(textOn(pasteboard), "suyo");
}

TEST_F(Inserting, StrikesNothingWhereNothingMayBeTyped) {
    bool locked = true;
    inserter.mayType = [&] { return !locked; };
    EXPECT_EQ(receiptOf(insert(text("Hola."))), InsertionReceipt{});
    locked = false;
    pasteboard.onHoldsAsked = [&] { locked = true; };
    EXPECT_EQ(receiptOf(insert(text("Hola."))).delivery, Delivery::refused);
    EXPECT_THAT(poster.posted, IsEmpty());
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
}

TEST_F(Inserting, ManyAtOnceComeInOrderAndTheClipboardSurvives) {
    for (const char* words : {"uno", "dos", "tres"}) insert(text(words));
    executor.advanceBy(3);
    EXPECT_THAT(pasted, ElementsAre("uno", "dos", "tres"));
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
}

TEST_F(Inserting, AClipboardReadAheadCostsNoTimeAndIsReadAnewWhenItChanged) {
    pasteboard.readSeconds = 2;
    clipboard.prepare();
    executor.advanceBy(2);
    insert(text("uno"));
    EXPECT_EQ(poster.posted.size(), 1U);
    executor.advanceBy(2);

    clipboard.prepare();
    executor.advanceBy(1);
    pasteboard.copyElsewhere("newer");
    EXPECT_EQ(receiptOf(insert(text("dos"))).delivery, Delivery::delivered);
    EXPECT_EQ(textOn(pasteboard), "newer");

    // One that did not tell is asked again while the user talks.
    pasteboard.readable = State::unreadable;
    clipboard.prepare();
    executor.advanceBy(2);
    pasteboard.readable = State::complete;
    executor.advanceBy(3);
    EXPECT_EQ(receiptOf(insert(text("tres"))).clipboard, State::complete);
}

class Selection : public Borrowing {
 protected:
    /// Plays an application that copies `text` this long after being told to.
    void copies(const std::string& text, double seconds) {
        poster.onPost = [this, text, seconds](std::uint16_t keyCode) {
            EXPECT_EQ(keyCode, keycode::c);
            executor.after(seconds, [this, text] { pasteboard.copyElsewhere(text); });
        };
    }
    std::shared_ptr<FakeElement> selected(std::string role, std::string text) {
        auto element = accessibility.focus(editor.processIdentifier, std::move(role));
        element->attributes.emplace("AXSelectedText", AXValue(std::move(text)));
        return element;
    }
    TaskHandle<std::optional<SelectedText>> ask(bool insist) {
        return tasks.spawn(selection.selection(editor, insist));
    }
    /// Runs the question to its end.
    std::optional<SelectedText> answer(bool insist) {
        std::optional<SelectedText> answer;
        auto handle = ask(insist);
        tasks.spawn(
            [](auto handle, auto& answer) -> Task<void> { answer = co_await handle; }(handle, answer));
        executor.advanceBy(1);
        EXPECT_TRUE(handle.isDone());
        return answer;
    }

    FakeAccessibility accessibility;
    TextSelection selection{executor, accessibility, clipboard, pasteboard, poster, workspace};
    TaskScope tasks{executor};
};

TEST_F(Selection, IsReadAsItStands) {
    selected("AXTextArea", " dos\npalabras ");
    EXPECT_EQ(answer(false), (SelectedText{" dos\npalabras ", true}));
    selected("AXGroup", "x")->settable["AXValue"] = true;
    EXPECT_EQ(answer(false), (SelectedText{"x", true}));
    selected("AXGroup", "x")->settable["AXValue"] = false;
    EXPECT_EQ(answer(true), (SelectedText{"x", false}));
    selected("AXStaticText", "x");
    EXPECT_EQ(answer(true), (SelectedText{"x", false}));
    EXPECT_THAT(pasteboard.log, IsEmpty());
}

TEST_F(Selection, BlanksAreNoSelectionAndNoReasonToCopy) {
    copies("otra cosa", 0.01);
    for (const char* blank : {"", " \n\t"}) {
        selected("AXTextArea", blank);
        EXPECT_EQ(answer(true), std::nullopt);
    }
    EXPECT_TRUE(tasks.spawn(selection.selection(std::nullopt, true)).isDone());
    EXPECT_THAT(poster.posted, IsEmpty());
}

TEST_F(Selection, CopiesOnlyWhenInsisting) {
    accessibility.focus(editor.processIdentifier, "AXWebArea");
    copies("del navegador ", 0.06);
    EXPECT_EQ(answer(false), std::nullopt);
    EXPECT_THAT(poster.posted, IsEmpty());
    EXPECT_EQ(answer(true), (SelectedText{"del navegador ", std::nullopt}));
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
    EXPECT_THAT(poster.posted, ElementsAre(keycode::c));
    copies(" \n", 0.06);
    EXPECT_EQ(answer(true), std::nullopt);
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
}

TEST_F(Selection, GivesUpOnACopyAfterTwelveLooks) {
    const auto ignored = ask(true);
    executor.advanceTo(0.29);
    EXPECT_FALSE(ignored.isDone());
    executor.advanceTo(0.31);
    EXPECT_TRUE(ignored.isDone());
    EXPECT_THAT(pasteboard.log, ElementsAre("read"));
}

TEST_F(Selection, AStoppedCopyStillGivesTheClipboardBack) {
    copies("x", 0.06);
    const auto stopped = ask(true);
    executor.advanceTo(0.03);
    stopped.cancel();
    executor.advanceTo(1);
    EXPECT_TRUE(stopped.isDone());
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
}

TEST_F(Selection, CopiesNothingThatWouldCostTheClipboard) {
    copies("x", 0.06);
    pasteboard.readable = State::partial;
    EXPECT_EQ(answer(true), std::nullopt);
    pasteboard.readable = State::complete;
    workspace.frontmost = other;
    EXPECT_EQ(answer(true), std::nullopt);
    EXPECT_THAT(poster.posted, IsEmpty());

    // The user copies while the copy is read.
    workspace.frontmost = editor;
    pasteboard.readSeconds = 0.1;
    const auto asked = ask(true);
    executor.advanceBy(0.25);
    pasteboard.copyElsewhere("suyo");
    executor.advanceBy(1);
    EXPECT_TRUE(asked.isDone());
    EXPECT_EQ(textOn(pasteboard), "suyo");
}

}  // namespace
}  // namespace dorix
