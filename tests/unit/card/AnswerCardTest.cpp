#include "base/async/ManualExecutor.h"
#include "card/AnswerCardPresenter.h"
#include "card/CardPlacement.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakePasteboard.h"
#include "fakes/MemoryUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The card without a window.
class AnswerCardTest : public testing::Test {
 protected:
    AnswerCardTest() {
        presenter.actions = {.close = [] {},
                             .retry = [this] { ++retries; },
                             .insert = [this](std::string text) { inserted = std::move(text); },
                             .speak = [this](const std::string&, const std::string& id) { spoken = id; }};
        subscription = presenter.onPieces([this](std::size_t) { ++frames; });
        said = presenter.spoken.said.subscribe([this](const std::string& text) { heard.push_back(text); });
    }

    void put(const AnswerCard& now) { card.set(now); }
    std::vector<std::string> offered(VerbPlace place) const {
        std::vector<std::string> labels;
        for (const auto& offer : cardOffers(presenter, place)) {
            labels.push_back((offer.isMain ? "!" : "") + offer.label);
        }
        return labels;
    }
    std::vector<std::string> shown() const {
        std::vector<std::string> pieces;
        for (const auto& piece : presenter.piecesFrom(0)) {
            pieces.push_back(std::string(piece.kind) + ":" + piece.content.text);
        }
        return pieces;
    }

    ManualExecutor executor;
    AnswerCardPresenter::Card card;
    FakePasteboard pasteboard;
    FakeUrlOpener urls;
    AnswerCardPresenter presenter{
        {.executor = executor, .card = card, .pasteboard = pasteboard, .urls = urls}};
    AnswerCard asked{.id = "1", .appName = "Notas", .question = "¿Qué dice?", .streaming = true};
    int frames = 0;
    int retries = 0;
    std::string inserted;
    std::string spoken;
    std::vector<std::string> heard;
    Subscription subscription;
    Subscription said;
};

TEST_F(AnswerCardTest, WaitsThenGrowsThenOffersWhatCanBeDone) {
    asked.hadScreen = true;
    asked.waiting = "Leyendo el documento…";
    EXPECT_EQ(waitingText(asked), "Leyendo el documento…");
    asked.waiting.reset();
    put(asked);
    presenter.show();
    EXPECT_EQ(presenter.head.get().waiting, "Mirando la pantalla…");
    EXPECT_THAT(shown(), ElementsAre("query:¿Qué dice?"));
    EXPECT_THAT(offered(VerbPlace::detail), IsEmpty()) << "half an answer is none";
    EXPECT_THAT(offered(VerbPlace::detailEnd), IsEmpty());

    asked.answer = "- uno\n- d";
    put(asked);
    executor.advanceBy(1);
    EXPECT_EQ(presenter.head.get().waiting, "");
    EXPECT_THAT(shown(), ElementsAre("query:¿Qué dice?", "divider:", "item:uno", "item:d"));

    asked.answer = "- uno\n- dos";
    asked.streaming = false;
    put(asked);
    executor.advanceBy(1);
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("!Insertar", "Copiar", "Escuchar"));
    EXPECT_THAT(offered(VerbPlace::detailEnd), ElementsAre("Regenerar"));
    asked.canReplace = true;
    put(asked);
    EXPECT_EQ(enterVerb(presenter), "") << "a stray Enter types nothing";
    EXPECT_FALSE(performOnCard(presenter, "insert"));
    EXPECT_TRUE(performOnCard(presenter, "replace"));
    EXPECT_EQ(inserted, "- uno\n- dos");
    performOnCard(presenter, "copy");
    performOnCard(presenter, "speak");
    EXPECT_EQ(spoken, "1");
    presenter.speakingID.set("1");
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("!Reemplazar", "Copiado", "Detener"));
    presenter.speakingID.set("another");
    executor.advanceBy(2);
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("!Reemplazar", "Copiar", "Escuchar"));
}

TEST_F(AnswerCardTest, AFailureKeepsWhatHasComeAndOffersToAskAgain) {
    asked.answer = "La mitad";
    asked.streaming = false;
    asked.error = "No hay conexión";
    put(asked);
    presenter.show();
    EXPECT_THAT(shown(),
                ElementsAre("query:¿Qué dice?", "divider:", "paragraph:La mitad", "error:No hay conexión"));
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("Copiar", "Escuchar"));
    EXPECT_THAT(offered(VerbPlace::detailEnd), ElementsAre("!Regenerar"));
    EXPECT_TRUE(performOnCard(presenter, enterVerb(presenter)));
    EXPECT_EQ(retries, 1);
}

TEST_F(AnswerCardTest, SourcesLeadToPagesAndFilesAndNothingElse) {
    asked.sources = {{"Página", "https://a.example/x"},
                     {"Archivo", "/home/ana/Documentos/año nuevo.txt"},
                     {"Nota", std::nullopt},
                     {"Orden", "javascript:alert(1)"},
                     {"Historial", "dorix://historial/7"},
                     {"Relativo", "etc/passwd"}};
    put(asked);
    presenter.show();
    asked.sources[0].numbers = {1, 4};
    EXPECT_EQ(piecesUnder(asked).back().sources[0].numbers, "1, 4") << "as the answer cites it";
    EXPECT_EQ(piecesUnder(asked).back().sources[1].numbers, "");
    for (std::size_t i = 0; i <= asked.sources.size(); ++i) presenter.openSource(i);
    presenter.openLink("file:///etc/passwd");
    EXPECT_THAT(urls.opened,
                ElementsAre("https://a.example/x", "file:///home/ana/Documentos/a%C3%B1o%20nuevo.txt"));
}

TEST_F(AnswerCardTest, ManyPartsOfAnAnswerAreAFrameTogetherAndAHiddenCardHasNone) {
    put(asked);
    presenter.show();
    executor.advanceBy(1);
    const int before = frames;
    for (int i = 0; i < 500; ++i) {
        asked.answer += "palabra ";
        put(asked);
        executor.advanceBy(0.001);
    }
    EXPECT_GE(frames - before, 25);
    EXPECT_LE(frames - before, 31);
    executor.advanceBy(1);
    EXPECT_TRUE(asked.answer.ends_with(presenter.piecesFrom(0).back().content.text + " ")) << "all of it";
    presenter.hide();
    const int hidden = frames;
    asked.answer += "y más";
    put(asked);
    executor.advanceBy(1);
    EXPECT_EQ(frames, hidden);
    presenter.show();
    EXPECT_TRUE(shown().back().ends_with("y más"));
}

TEST_F(AnswerCardTest, WhoHearsTheScreenHearsSentencesAndAtTheEndTheRest) {
    put(asked);
    presenter.show();
    asked.answer = "Primera frase. Segunda";
    put(asked);
    executor.advanceBy(1);
    EXPECT_THAT(heard, ElementsAre("Pensando…")) << "nobody is interrupted for a word";
    executor.advanceBy(5);
    asked.answer += " frase. **Ter";
    put(asked);
    executor.advanceBy(1);
    asked.answer += "cera**";
    asked.streaming = false;
    put(asked);
    executor.advanceBy(1);
    EXPECT_THAT(heard, ElementsAre("Pensando…", "Primera frase. Segunda frase.", "Tercera"));
}

constexpr Rect screen{0, 0, 1280, 800};
const Screens screens{{.frame = screen, .visibleFrame = {0, 0, 1280, 770}}};

TEST(CardPlacementTest, StandsAtTheLowerEdgeClearOfTheIcon) {
    const Rect corner{1204, 24, 52, 52};
    const auto right = placeCard(corner, cardAlignsRight(corner, screens), screens, std::nullopt);
    EXPECT_EQ(right.frame(200), (Rect{1256 - 460, 76 + 12, 460, 200})) << "edge over edge, above the glyph";
    EXPECT_EQ(right.frame(5000), (Rect{1256 - 460, 88, 460, 770 - 8 - 88}));
    const Rect left{24, 24, 52, 52};
    EXPECT_EQ(placeCard(left, cardAlignsRight(left, screens), screens, std::nullopt).frame(200),
              (Rect{24, 88, 460, 200}));
    const Rect above{640, 600, 52, 52};
    const auto under = placeCard(above, true, screens, std::nullopt);
    EXPECT_EQ(under.frame(200), (Rect{692 - 460, 8, 460, 200}));
    EXPECT_EQ(under.frame(5000).maxY(), 600 - 12) << "nor does it cover the icon when it is long";
    const Rect atEdge{20, 300, 52, 52};
    EXPECT_EQ(placeCard(atEdge, true, screens, std::nullopt).frame(9).minX(), 24);
}

TEST(CardPlacementTest, StaysWhereTheUserLeftItIfThatIsThere) {
    const Rect icon{1204, 24, 52, 52};
    const auto placed = placeCard(icon, true, screens, Point{100, 500});
    EXPECT_TRUE(placed.userPlaced);
    EXPECT_EQ(placed.frame(200), (Rect{100, 300, 460, 200}));
    EXPECT_EQ(placed.frame(600), (Rect{100, 8, 460, 600})) << "first downwards, then upwards";
    EXPECT_FALSE(placeCard(icon, true, screens, Point{2000, 500}).userPlaced) << "unplugged";
    const Screens narrow{{.frame = {0, 0, 400, 300}, .visibleFrame = {0, 0, 400, 300}}};
    EXPECT_EQ(placeCard({324, 24, 52, 52}, true, narrow, std::nullopt).frame(100).width, 384);
}

TEST(CardPlacementTest, EachKindOfCardHasItsPlace) {
    MemoryUserDefaults defaults;
    saveCardPosition(defaults, "", {1, 2});
    saveCardPosition(defaults, "meeting", {3, 4});
    EXPECT_EQ(savedCardPosition(defaults, ""), (Point{1, 2}));
    EXPECT_EQ(defaults.value("cardPosition.meeting"), Json::array({3, 4}));
    defaults.set("cardPosition.", "nowhere");
    EXPECT_FALSE(savedCardPosition(defaults, ""));
}

}  // namespace
}  // namespace dorix
