#include "base/async/ManualExecutor.h"
#include "context/TextInsertion.h"
#include "context/TextSelection.h"
#include "fakes/FakeAccessibility.h"
#include "fakes/FakeKeys.h"
#include "fakes/FakePasteboard.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Direction = EventPoster::Direction;
using Items = std::vector<Pasteboard::Item>;

const Items pictureAndFiles = {
    {{"image/png", std::string("\x89PNG\0\xff", 6)}, {"text/html", ""}},
    {{"text/uri-list", "file:///a\r\nfile:///b\r\n"}},
};

std::string textOn(const FakePasteboard& pasteboard) {
    return pasteboard.items.empty() ? "" : pasteboard.items.front().front().second;
}

class Insertion : public testing::Test {
 protected:
    void SetUp() override { pasteboard.items = pictureAndFiles; }

    TaskHandle<void> insert(std::string text, bool restore = true) {
        auto handle = tasks.spawn(inserter.insertText(std::move(text), restore));
        executor.runPosted();
        return handle;
    }

    ManualExecutor executor;
    FakePasteboard pasteboard;
    RecordingEventPoster poster;
    TextInserter inserter{executor, pasteboard, poster};
    TaskScope tasks{executor};
};

TEST_F(Insertion, PastesTheTextAndGivesTheClipboardBack) {
    const auto done = insert("Hola.");
    EXPECT_EQ(pasteboard.items,
              (Items{{{"public.utf8-plain-text", "Hola."}, {"org.nspasteboard.TransientType", ""}}}));
    EXPECT_THAT(poster.posted, ElementsAre(RecordingEventPoster::Posted{9, Direction::down, 0x100000},
                                           RecordingEventPoster::Posted{9, Direction::up, 0x100000}));
    executor.advanceTo(0.449);
    EXPECT_FALSE(done.isDone());
    EXPECT_EQ(textOn(pasteboard), "Hola.");
    executor.advanceTo(0.45);
    EXPECT_TRUE(done.isDone());
    EXPECT_EQ(pasteboard.items, pictureAndFiles);

    pasteboard.items.clear();
    insert("Hola.");
    executor.advanceTo(1);
    EXPECT_THAT(pasteboard.items, IsEmpty());
}

TEST_F(Insertion, TheTextStaysWithoutTheMarkWhenNotToBeRestored) {
    insert("Hola.", false);
    executor.advanceTo(1);
    EXPECT_EQ(pasteboard.items, (Items{{{"public.utf8-plain-text", "Hola."}}}));
}

TEST_F(Insertion, WhatTheUserCopiesMeanwhileStays) {
    for (const bool restore : {true, false}) {
        insert("Hola.", restore);
        pasteboard.copyElsewhere("suyo");
        executor.advanceBy(1);
        EXPECT_EQ(textOn(pasteboard), "suyo");
    }
}

TEST_F(Insertion, WhatIsCopiedWhileTheClipboardIsReadIsWhatComesBack) {
    pasteboard.readSeconds = 0.1;
    insert("Hola.");
    executor.advanceTo(0.05);
    pasteboard.copyElsewhere("nuevo");
    executor.advanceTo(0.15);
    EXPECT_THAT(poster.posted, IsEmpty());
    executor.advanceTo(0.2);
    EXPECT_EQ(textOn(pasteboard), "Hola.");
    executor.advanceTo(1);
    EXPECT_EQ(textOn(pasteboard), "nuevo");
}

TEST_F(Insertion, AClipboardThatNeverRestsDoesNotHoldItUp) {
    pasteboard.readSeconds = 0.1;
    const auto done = insert("Hola.");
    for (int i = 0; i < 10; ++i) {
        if (poster.posted.empty()) pasteboard.copyElsewhere(std::to_string(i));
        executor.advanceBy(0.1);
    }
    EXPECT_TRUE(done.isDone());
    EXPECT_EQ(poster.posted.size(), 2u);
}

TEST_F(Insertion, AStopRequestIsSwallowedAtEveryStep) {
    pasteboard.readSeconds = 0.1;
    for (const double at : {0.0, 0.05, 0.1, 0.3}) {
        const auto done = insert("Hola.");
        const double start = executor.now();
        executor.advanceTo(start + at);
        done.cancel();
        executor.advanceTo(start + 0.54);
        EXPECT_FALSE(done.isDone()) << at;
        EXPECT_EQ(textOn(pasteboard), "Hola.") << at;
        executor.advanceTo(start + 0.56);
        EXPECT_TRUE(done.isDone()) << at;
        EXPECT_EQ(pasteboard.items, pictureAndFiles) << at;
    }
    EXPECT_EQ(poster.posted.size(), 8u);
}

TEST_F(Insertion, GivesTheClipboardBackWhenWhoeverAskedIsGone) {
    {
        TaskScope shortLived(executor);
        shortLived.spawn(inserter.insertText("Hola.", true));
        executor.advanceTo(0.1);
    }
    executor.advanceTo(1);
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
}

TEST_F(Insertion, ASecondOneWaitsForTheFirstAndTheClipboardSurvivesBoth) {
    insert("uno");
    executor.advanceTo(0.2);
    insert("dos");
    insert("tres");
    executor.advanceTo(0.44);
    EXPECT_EQ(textOn(pasteboard), "uno");
    executor.advanceTo(0.46);
    EXPECT_EQ(textOn(pasteboard), "dos");
    executor.advanceTo(2);
    EXPECT_EQ(poster.posted.size(), 6u);
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
}

class Selection : public Insertion {
 protected:
    static constexpr std::int32_t pid = 42;

    static RunningApplication inFront() {
        RunningApplication app;
        app.processIdentifier = pid;
        return app;
    }

    /// Plays an application that copies `text` this long after being told to.
    void copies(const std::string& text, double seconds) {
        poster.onPost = [this, text, seconds](const RecordingEventPoster::Posted& event) {
            if (event.keyCode != keycode::c || event.direction != Direction::up) return;
            executor.after(seconds, [this, text] { pasteboard.copyElsewhere(text); });
        };
    }
    std::shared_ptr<FakeElement> selected(std::string role, std::string text) {
        auto element = accessibility.focus(pid, std::move(role));
        element->attributes.emplace("AXSelectedText", AXValue(std::move(text)));
        return element;
    }
    TaskHandle<std::optional<SelectedText>> ask(bool insist,
                                                std::optional<RunningApplication> app = inFront()) {
        return tasks.spawn(selection.selection(std::move(app), insist));
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
    TextSelection selection{executor, accessibility, pasteboard, inserter};
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
    EXPECT_TRUE(ask(true, std::nullopt).isDone()) << "nor is there one without an application";
    EXPECT_THAT(poster.posted, IsEmpty());
}

TEST_F(Selection, CopiesOnlyWhenInsisting) {
    accessibility.focus(pid, "AXWebArea");
    copies("del navegador ", 0.06);
    EXPECT_EQ(answer(false), std::nullopt);
    EXPECT_THAT(poster.posted, IsEmpty());
    EXPECT_EQ(answer(true), (SelectedText{"del navegador ", std::nullopt}));
    EXPECT_EQ(pasteboard.items, pictureAndFiles);
    EXPECT_THAT(poster.posted, ElementsAre(RecordingEventPoster::Posted{8, Direction::down, 0x100000},
                                           RecordingEventPoster::Posted{8, Direction::up, 0x100000}));
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

TEST_F(Insertion, AClipboardReadAheadCostsNoTimeAndIsReadAnewWhenItChanged) {
    pasteboard.readSeconds = 2;
    pasteboard.copyElsewhere("before");
    inserter.prepare();
    executor.advanceBy(2);
    auto insertion = tasks.spawn(inserter.insertText("hello", true));
    executor.advanceBy(0.45);
    EXPECT_TRUE(insertion.isDone());
    EXPECT_EQ(pasteboard.items[0][0].second, "before");

    inserter.prepare();
    executor.advanceBy(1);
    pasteboard.copyElsewhere("newer");
    insertion = tasks.spawn(inserter.insertText("again", true));
    const auto settled = tasks.spawn(inserter.settled());
    executor.advanceBy(2 + 0.44);
    EXPECT_FALSE(settled.isDone());
    executor.advanceBy(2);
    EXPECT_TRUE(settled.isDone());
    EXPECT_EQ(pasteboard.items[0][0].second, "newer");
}

}  // namespace
}  // namespace dorix
