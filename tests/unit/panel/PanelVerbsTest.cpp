#include "base/async/ManualExecutor.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakePasteboard.h"
#include "fakes/TemporaryFolder.h"
#include "fakes/dictation/FakeSpeechInput.h"
#include "panel/HistoryPanel.h"
#include "panel/PanelKeys.h"
#include "platform/UserFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using With = PanelKeyPress::With;

/// The panel without a window, over three items: "c", "b" and, the oldest, "a".
class PanelVerbsTest : public testing::Test {
 protected:
    PanelVerbsTest() {
        for (const auto* id : {"a", "b", "c"}) {
            history.add({.id = id, .answer = id, .meta = {}}, HistoryStore::Persist::no);
        }
    }

    std::vector<std::string> offered(VerbPlace place) const {
        std::vector<std::string> labels;
        for (const auto& offer : panelOffers(panel, place)) labels.push_back(offer.label);
        return labels;
    }
    /// What a key does; false when it means nothing.
    bool press(PanelArea area, PanelKey key, With with = With::nothing) {
        const auto verb = verbOf(area, {.key = key, .with = with});
        return canPerformByKey(panel, verb) && perform(panel, verb);
    }

    TemporaryFolder folder;
    ManualExecutor executor;
    AppState state;
    FakeSpeechInput speech{executor};
    HistoryStore history{folder.path() / "dorix.sqlite"};
    FakePasteboard pasteboard;
    FakeUrlOpener urls;
    UnavailableSavePanel savePanel;
    UnavailableFileReplacer files;
    PanelExport exporter{executor, executor, savePanel, files, folder.path() / "dorix.sqlite"};
    HistoryPanel panel{executor, state, speech, history, pasteboard, urls, exporter};
};

TEST_F(PanelVerbsTest, OffersWhatCanBeDone) {
    EXPECT_THAT(offered(VerbPlace::detail), IsEmpty()) << "nothing is selected";
    state.selectedID.set("b");
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("Copiar")) << "nobody inserts";
    panel.actions.reinsert = [](const HistoryItem&) {};
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("Insertar de nuevo", "Copiar"));
    perform(panel, "copy");
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("Insertar de nuevo", "Copiado"));
    EXPECT_THAT(pasteboard.log, ElementsAre("clear", "setString b")) << "and no transient marker";

    Menu menu = panelMenu(panel, VerbPlace::itemMenu);
    ASSERT_EQ(menu.size(), 4U);
    EXPECT_EQ(menu[1].label, "Copiar") << "a menu says what it does, not what was done";
    EXPECT_TRUE(menu[2].isSeparator());
    executor.advanceBy(2);
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("Insertar de nuevo", "Copiar"));
    menu[3].handler();
    EXPECT_EQ(history.items().size(), 2U);
    EXPECT_FALSE(perform(panel, "close")) << "without anybody who could";
}

TEST_F(PanelVerbsTest, OneItemIsReadAloudAtATime) {
    std::string read;
    panel.actions.speak = [&](const HistoryItem& item) { read = item.id; };
    state.selectedID.set("b");
    EXPECT_THAT(offered(VerbPlace::detailEnd), ElementsAre("Escuchar", "Borrar"));
    EXPECT_TRUE(perform(panel, "speak"));
    panel.speakingID.set(read);
    EXPECT_THAT(offered(VerbPlace::detailEnd), ElementsAre("Detener", "Borrar"));
    state.selectedID.set("c");
    EXPECT_THAT(offered(VerbPlace::detailEnd), ElementsAre("Escuchar", "Borrar"));
}

TEST_F(PanelVerbsTest, EveryKeyOfEveryPlaceAsksForAVerbThatThereIs) {
    state.selectedID.set("c");
    panel.layout.setWidth(100);
    panel.actions.reinsert = [](const HistoryItem&) {};
    for (const auto area :
         {PanelArea::search, PanelArea::list, PanelArea::detail, PanelArea::sections, PanelArea::elsewhere}) {
        for (int key = 0; key <= static_cast<int>(PanelKey::find); ++key) {
            const auto verb = verbOf(area, {.key = PanelKey(key)});
            EXPECT_TRUE(verb.empty() || canPerform(panel, verb)) << verb;
        }
    }
    EXPECT_EQ(verbOf(PanelArea::detail, {.key = PanelKey::down}), "") << "there it scrolls";
}

TEST_F(PanelVerbsTest, KeysMoveOverTheItemsAndSections) {
    panel.layout.rowsPerPage = 2;
    EXPECT_TRUE(press(PanelArea::search, PanelKey::down));
    EXPECT_EQ(state.selectedID.get(), "c");
    EXPECT_FALSE(press(PanelArea::search, PanelKey::down, With::shift)) << "the line of text wants that";
    EXPECT_FALSE(press(PanelArea::search, PanelKey::home));
    EXPECT_TRUE(press(PanelArea::list, PanelKey::pageDown));
    EXPECT_EQ(state.selectedID.get(), "a");
    EXPECT_TRUE(press(PanelArea::list, PanelKey::home, With::command));
    EXPECT_EQ(state.selectedID.get(), "c");
    EXPECT_TRUE(press(PanelArea::list, PanelKey::remove));
    EXPECT_EQ(state.selectedID.get(), "b");
    EXPECT_TRUE(press(PanelArea::elsewhere, PanelKey::undo, With::command));
    EXPECT_EQ(state.selectedID.get(), "c");

    EXPECT_TRUE(press(PanelArea::sections, PanelKey::up));
    EXPECT_EQ(state.section.get(), PanelSection::todo);
    EXPECT_TRUE(press(PanelArea::sections, PanelKey::down));
    EXPECT_EQ(state.section.get(), PanelSection::dictado);
    EXPECT_TRUE(press(PanelArea::sections, PanelKey::end));
    EXPECT_EQ(state.section.get(), PanelSection::accion);
}

TEST_F(PanelVerbsTest, KeysLeaveAloneWhatTheListDoesNotShow) {
    int inserted = 0;
    panel.actions.reinsert = [&](const HistoryItem&) { ++inserted; };
    const auto pressAll = [&] {
        return std::vector{press(PanelArea::search, PanelKey::enter),
                           press(PanelArea::search, PanelKey::copy, With::command),
                           press(PanelArea::detail, PanelKey::copy, With::command),
                           press(PanelArea::list, PanelKey::enter),
                           press(PanelArea::list, PanelKey::remove),
                           press(PanelArea::detail, PanelKey::remove)};
    };
    state.selectedID.set("b");
    state.query.set("c");
    EXPECT_THAT(pressAll(), testing::Each(false));
    state.query.set("");
    state.section.set(PanelSection::reunion);
    EXPECT_THAT(pressAll(), testing::Each(false));
    EXPECT_EQ(history.items().size(), 3U);
    EXPECT_THAT(pasteboard.log, IsEmpty());
    EXPECT_EQ(inserted, 0);
    EXPECT_THAT(offered(VerbPlace::detail), IsEmpty()) << "nor is it shown among what it is not";
    EXPECT_FALSE(perform(panel, "insert"));
    state.section.set(PanelSection::todo);
    state.query.set("c");
    EXPECT_THAT(offered(VerbPlace::detail), ElementsAre("Insertar de nuevo", "Copiar"))
        << "the buttons stand beside what they act on";
    EXPECT_TRUE(perform(panel, "insert"));
    state.query.set("");
    EXPECT_TRUE(press(PanelArea::search, PanelKey::enter));
    EXPECT_EQ(inserted, 2);
}

TEST_F(PanelVerbsTest, InANarrowWindowTheDetailTakesTheListsPlace) {
    state.selectedID.set("b");
    panel.layout.setWidth(660);
    EXPECT_FALSE(press(PanelArea::detail, PanelKey::left)) << "both show";
    panel.layout.setWidth(659);
    EXPECT_TRUE(panel.layout.showsList() && !panel.layout.showsDetail());
    EXPECT_FALSE(press(PanelArea::list, PanelKey::right, With::command));
    EXPECT_TRUE(press(PanelArea::list, PanelKey::right));
    EXPECT_TRUE(panel.layout.showsDetail() && !panel.layout.showsList());
    EXPECT_TRUE(press(PanelArea::detail, PanelKey::left));
    EXPECT_TRUE(panel.layout.showsList());
    perform(panel, "openDetail");
    EXPECT_TRUE(press(PanelArea::elsewhere, PanelKey::find, With::command));
    EXPECT_TRUE(panel.layout.showsList()) << "the search is there";
    perform(panel, "openDetail");
    for (const auto* id : {"a", "b", "c"}) panel.deletions.remove(id);
    EXPECT_TRUE(panel.layout.showsList()) << "there is nothing left to look at";
    perform(panel, "openDetail");
    EXPECT_TRUE(panel.layout.showsList());
}

TEST_F(PanelVerbsTest, TheComposerSendsATextToWhoeverAnswers) {
    state.composerText.set(" \n");
    EXPECT_TRUE(panel.composer.send()) << "nothing to be told";
    state.composerText.set("¿y eso?");
    EXPECT_FALSE(panel.composer.maySend());
    EXPECT_FALSE(panel.composer.send());
    EXPECT_EQ(panel.composer.refusal(), "Todavía no hay asistente que responda. Tu texto se queda aquí.");
    int sent = 0;
    panel.actions.submitComposer = [&] { ++sent; };
    EXPECT_TRUE(panel.composer.maySend() && panel.composer.send());
    state.composerText.set("");
    EXPECT_TRUE(panel.composer.send());
    EXPECT_EQ(sent, 1);
    EXPECT_EQ(panel.composer.refusal(), "");
}

}  // namespace
}  // namespace dorix
