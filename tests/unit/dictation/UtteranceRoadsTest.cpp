#include "fakes/dictation/DictationBench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using Mode = DictationController::Mode;

class UtteranceRoadsTest : public testing::Test {
 protected:
    UtteranceRoadsTest() {
        bench.flow.roads.onRoute = [this](Route route) { routes.emplace_back(name(route)); };
    }

    /// Says it, with the hot key of that mode, and waits until it is done.
    void say(std::string transcript, Mode mode = Mode::write) {
        routes.clear();
        bench.inserted.reset();
        bench.speech.transcript = std::move(transcript);
        flow.shortcutPressed(mode);
        bench.executor.advanceBy(0.5);
        flow.shortcutReleased();
        bench.executor.advanceBy(60);
        EXPECT_FALSE(flow.busy().get());
    }
    void inFront(std::string bundleID) { bench.workspace.frontmost->bundleIdentifier = std::move(bundleID); }
    const Assistant::Request& asked() { return bench.assistant.asked.back(); }

    DictationBench bench{DictationBench::everything};
    DictationController& flow = bench.controller;
    std::vector<std::string> routes;
};

TEST_F(UtteranceRoadsTest, CommandsGoWhereTheyBelongAndAreNotTyped) {
    bench.screen.duration = 3;
    say("activa el modo reunión");
    say("termina la reunión");
    EXPECT_THAT(bench.meeting.log, ElementsAre("start")) << "no meeting to finish";
    EXPECT_THAT(routes, ElementsAre("plain"));
    bench.meeting.live = true;
    say("termina la reunión");
    EXPECT_THAT(bench.meeting.log, ElementsAre("start", "finish"));
    say("aprende cómo archivo las facturas");
    bench.teaching.teaching = true;
    say("ya está");
    EXPECT_THAT(bench.teaching.log, ElementsAre("start", "finish"));
    say("recuérdame mañana llamar a Ana");
    EXPECT_THAT(bench.actions.proposed, ElementsAre("recuérdame mañana llamar a Ana"));
    say("dónde lo dejamos");
    say("busca el contrato de Ana");
    EXPECT_THAT(bench.assistant.log,
                ElementsAre("recap dónde lo dejamos", "search busca el contrato de Ana"));
    EXPECT_THAT(routes, ElementsAre("search"));
    EXPECT_EQ(bench.inserted, std::nullopt);
    EXPECT_EQ(bench.screen.cancelled, bench.screen.begun);
    EXPECT_EQ(bench.state.hud.get(), HUDPhase::hidden());
}

TEST_F(UtteranceRoadsTest, ASelectionIsRewrittenInPlace) {
    bench.selection.selected = SelectedText{std::string(400, 'a'), std::nullopt};
    say("tradúcelo al inglés");
    EXPECT_EQ(bench.inserted, "<" + std::string(400, 'a') + ">");
    EXPECT_THAT(bench.selection.insisted, ElementsAre(true, false));
    ASSERT_EQ(bench.history.items().size(), 1U);
    const HistoryItem& item = bench.history.items()[0];
    EXPECT_EQ(item.kind, HistoryKind::seleccion);
    EXPECT_EQ(item.query, "tradúcelo al inglés");
    EXPECT_EQ(item.answer, bench.inserted);
    EXPECT_EQ(item.meta, (HistoryItem::Meta{.engine = "motor",
                                            .inserted = true,
                                            .durationMs = 500,
                                            .source = "voz",
                                            .context = std::string(300, 'a')}));

    bench.assistant.transformError = "Sin conexión.";
    bench.inserted.reset();
    bench.speech.transcript = "tradúcelo al inglés";
    flow.begin(DictationController::Source::holdKey, Mode::write);
    flow.stopAndProcess();
    bench.executor.advanceBy(1);
    EXPECT_EQ(bench.state.hud.get(), HUDPhase::error("Sin conexión."));
    EXPECT_EQ(bench.inserted, std::nullopt) << "the selected text stays as it is";
    ASSERT_EQ(bench.history.items().size(), 2U);
    EXPECT_EQ(bench.history.items()[0].query, "tradúcelo al inglés");
    EXPECT_EQ(bench.history.items()[0].meta.inserted, false);
}

TEST_F(UtteranceRoadsTest, WhatIsSelectedMeanwhileIsNotWrittenOver) {
    bench.selection.selected = SelectedText{"uno", true};
    bench.selection.onProbe = [this] {
        if (bench.selection.insisted.size() == 2) bench.selection.selected->text = "dos";
    };
    say("tradúcelo al inglés");
    EXPECT_EQ(bench.inserted, std::nullopt);
    EXPECT_EQ(bench.pasteboard.items.at(0).at(0).second, "<uno>");
    EXPECT_EQ(bench.history.items().at(0).answer, "<uno>");
    EXPECT_EQ(bench.history.items().at(0).meta.inserted, false);
}

TEST_F(UtteranceRoadsTest, ASelectionThatCannotBeWrittenOverIsAskedAbout) {
    bench.screen.duration = 3;
    bench.selection.selected = SelectedText{"a page", std::nullopt};
    inFront("org.mozilla.firefox");
    say("traduce al francés");
    EXPECT_THAT(routes, ElementsAre("assistantSelection"));
    EXPECT_THAT(bench.selection.insisted, ElementsAre(false));
    EXPECT_EQ(asked().kind, HistoryKind::seleccion);
    EXPECT_EQ(asked().question, "traduce al francés");
    EXPECT_EQ(asked().selection->text, "a page");
    EXPECT_EQ(asked().shot, std::nullopt);
    EXPECT_EQ(bench.screen.cancelled, 1);

    bench.selection.selected->editable = true;
    say("¿qué significa esto?");
    EXPECT_THAT(routes, ElementsAre("assistantSelection")) << "a question changes nothing";
    EXPECT_EQ(bench.inserted, std::nullopt);
}

TEST_F(UtteranceRoadsTest, WordsForAnotherAssistantAreTyped) {
    inFront("com.openai.chat");
    say("resume este texto");
    EXPECT_THAT(routes, ElementsAre("plain"));
    say("recuérdame mañana llamar a Ana");
    EXPECT_THAT(routes, ElementsAre("plain"));
    say("activa el modo reunión");
    EXPECT_THAT(routes, ElementsAre("meetingStart"));
}

TEST_F(UtteranceRoadsTest, InACalendarWithNoFieldSpeechIsAnOrder) {
    inFront("com.apple.iCal");
    bench.setFocus(std::nullopt);
    say("comida con Luis el jueves");
    EXPECT_THAT(bench.actions.proposed, ElementsAre("comida con Luis el jueves"));
    bench.setFocus(true);
    say("comida con Luis el jueves");
    EXPECT_THAT(routes, ElementsAre("plain"));
}

TEST_F(UtteranceRoadsTest, AReplyIsWrittenWithTheConversationInView) {
    bench.screen.duration = 3;
    say("dile que el martes me va bien");
    EXPECT_THAT(routes, ElementsAre("replyPolish"));
    EXPECT_EQ(bench.writer.requests.back().screenshot, "jpeg");
    EXPECT_EQ(bench.history.items()[0].meta.source, "voz · con la conversación");
    bench.screen.error = "No se pudo capturar la ventana.";
    say("dile que el martes me va bien");
    EXPECT_EQ(bench.writer.requests.back().screenshot, std::nullopt);
    EXPECT_EQ(bench.history.items()[0].meta.source, "voz");
    bench.grants.screen = false;
    say("dile que el martes me va bien");
    EXPECT_EQ(bench.screen.begun, 2) << "not without the grant";
}

TEST_F(UtteranceRoadsTest, WhatPointsAtTheScreenIsWrittenOrAnswered) {
    bench.setFocus(std::nullopt);
    say("estoy en casa");
    EXPECT_THAT(routes, ElementsAre("writeOrAskWrite"));
    EXPECT_EQ(bench.writer.judged.back().editableFocus, std::nullopt);
    EXPECT_NE(bench.inserted, std::nullopt);
    EXPECT_FALSE(bench.state.asking.get());

    bench.writer.judgement = RecordingWriter::Judgement::ask;
    say("estoy en casa");
    EXPECT_THAT(routes, ElementsAre("assistantScreen"));
    EXPECT_TRUE(bench.state.asking.get());
    EXPECT_EQ(asked().shot->jpeg, "jpeg");

    say("qué dice este correo");
    EXPECT_EQ(bench.writer.judged.size(), 2U) << "clearly a question";
    EXPECT_THAT(routes, ElementsAre("assistantScreen"));
    bench.setFocus(false);
    say("estoy en casa");
    EXPECT_EQ(bench.writer.judged.size(), 2U) << "nowhere to write";
    EXPECT_THAT(routes, ElementsAre("assistantScreen"));
}

TEST_F(UtteranceRoadsTest, AQuestionTakesAlongWhatTheUserSees) {
    auto window = std::make_shared<FakeElement>();
    window->attributes["AXDocument"] = "file:///home/ana/Informe%20a%C3%B1o.TXT";
    bench.accessibility.application(DictationBench::appProcess).attributes["AXFocusedWindow"] = window;
    bench.documents.documents = {{"/home/ana/Informe año.TXT", std::string(400'001, 'x')},
                                 {"/home/ana/claves.txt", "secreto"}};
    say("cuánto suman los importes", Mode::ask);
    EXPECT_EQ(asked().kind, HistoryKind::screen);
    EXPECT_EQ(asked().shot->jpeg, "jpeg");
    ASSERT_TRUE(asked().document.has_value());
    EXPECT_EQ(asked().document->name, "Informe año.TXT");
    EXPECT_EQ(asked().document->text.size(), 400'000U);

    bench.documents.duration = 40;
    say("cuánto suman los importes", Mode::ask);
    EXPECT_EQ(asked().document, std::nullopt) << "the next dictation does not wait for a slow disk";
    bench.documents.duration = 0;

    for (const auto* url :
         {"file:///home/ana/claves.txt", "file:///home/ana/foto.png", "https://a.b/c.txt"}) {
        window->attributes["AXDocument"] = url;
        say("cuánto suman los importes", Mode::ask);
        EXPECT_EQ(asked().document, std::nullopt) << url;
    }

    bench.selection.selected = SelectedText{"12 + 30", false};
    say("cuánto suman los importes", Mode::ask);
    EXPECT_EQ(asked().kind, HistoryKind::seleccion);
    EXPECT_EQ(asked().selection->text, "12 + 30");
    EXPECT_EQ(asked().shot->jpeg, "jpeg");

    say("busca el contrato de Ana", Mode::ask);
    EXPECT_THAT(routes, ElementsAre("search")) << "commands are obeyed here too";
}

}  // namespace
}  // namespace dorix
