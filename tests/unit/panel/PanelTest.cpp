#include "base/async/ManualExecutor.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "fakes/overlay/RecordingWindow.h"
#include "overlay/Placement.h"
#include "panel/PanelDeletions.h"
#include "panel/PanelDetail.h"
#include "panel/PanelExport.h"
#include "panel/PanelPlacement.h"
#include "panel/PanelPresenter.h"
#include "panel/PanelTexts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace dorix {
namespace {

using Persist = HistoryStore::Persist;
using testing::ElementsAre;
using testing::IsEmpty;

// Texts

TEST(PanelTextsTest, AnEmptyListSaysWhatWouldFillIt) {
    AppState state;
    state.keys.set({.hold = PushToTalkKey::rightControl});
    EXPECT_EQ(paneltext::emptyList(state),
              "Nada por aquí todavía.\nMantén pulsada ⌃ derecha y habla en cualquier campo de texto.");
    state.section.set(PanelSection::reunion);
    EXPECT_EQ(paneltext::emptyList(state), "Nada por aquí todavía.") << "there are no meetings to speak of";
    state.abilities.set({.meetings = true});
    state.keys.set({.shortcut = false});
    EXPECT_THAT(paneltext::emptyList(state), testing::HasSubstr("Di con ⌥ derecha «activa el modo reunión»"));
    state.query.set("100 %@");
    EXPECT_EQ(paneltext::emptyList(state), "Nada coincide con «100 %@».");
}

TEST(PanelDetailTest, TellsHowAnItemWasWritten) {
    const HistoryItem dictation{.kind = HistoryKind::dictado,
                                .answer = "ya",
                                .meta = {.tone = "Técnico", .engine = "Básico", .source = "voz"}};
    EXPECT_EQ(panelDetail(dictation), (PanelDetail{.heading = "Lo que dijiste",
                                                   .facts = {"Tono: Técnico", "Redactado en este Mac"}}));
    HistoryItem question{
        .kind = HistoryKind::seleccion,
        .app = "Correo",
        .answer = "",
        .meta = {.engine = "nube", .source = "pantalla", .context = "un texto", .sources = {{"a.pdf"}}}};
    EXPECT_EQ(panelDetail(question),
              (PanelDetail{.heading = "Sobre la selección",
                           .facts = {"Respondido en la nube de DORIX", "Con la ventana de Correo"},
                           .context = "un texto",
                           .sourcesHeading = "Fuentes",
                           .sources = {"a.pdf"}}))
        << "it was answered, without a word";
    question.meta = {};
    EXPECT_EQ(panelDetail(question).placeholder, "Pensando…");
    const HistoryItem elsewhere{.answer = "ya", .meta = {.engine = "servidor gpu.example.org"}};
    EXPECT_THAT(panelDetail(elsewhere).facts, ElementsAre("gpu.example.org"));
}

// Deleting

class PanelActsTest : public testing::Test {
 protected:
    std::vector<std::string> ids() const {
        std::vector<std::string> found;
        for (const auto& item : history.items()) found.push_back(item.id);
        return found;
    }

    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "dorix.sqlite";
    ManualExecutor executor;
    AppState state;
    HistoryStore history{file};
};

TEST_F(PanelActsTest, DeletionsAreTakenBackOneByOneToWhereTheItemsWere) {
    int newItems = 0;
    history.onNewItem = [&](const HistoryItem&) { ++newItems; };
    for (const auto* id : {"a", "b", "c"}) history.add({.id = id, .createdAt = 5}, Persist::yes);
    history.add({.id = "creciendo", .createdAt = 9}, Persist::no);
    PanelDeletions deletions(executor, state, history);
    deletions.remove("nadie");
    for (const auto* id : {"b", "creciendo", "a"}) deletions.remove(id);
    EXPECT_THAT(ids(), ElementsAre("c"));
    EXPECT_EQ(HistoryStore(file).items().size(), 1U) << "gone from the file at once";
    EXPECT_EQ(deletions.message(), "3 elementos borrados");

    history.add({.id = "d", .createdAt = 7}, Persist::yes);
    for (int i = 0; i < 4; ++i) deletions.undo();
    EXPECT_THAT(ids(), ElementsAre("creciendo", "d", "c", "b", "a"));
    EXPECT_EQ(state.selectedID.get(), "b");
    EXPECT_EQ(newItems, 4) << "what comes back is not new";
    EXPECT_EQ(HistoryStore(file).items().size(), 4U) << "what was not in the file is not put there";
    EXPECT_FALSE(executor.hasTimers());
}

TEST_F(PanelActsTest, DeletionsCanNoLongerBeTakenBackAfterAWhileOrWhenThePanelCloses) {
    for (const auto* id : {"a", "b", "c"}) history.add({.id = id}, Persist::yes);
    PanelDeletions deletions(executor, state, history);
    state.panelOpen.set(true);
    deletions.remove("a");
    executor.advanceBy(8);
    deletions.remove("b");
    executor.advanceBy(8);
    EXPECT_EQ(deletions.undoable.get(), 2U);
    executor.advanceBy(3);
    EXPECT_EQ(deletions.undoable.get(), 0U);
    deletions.remove("c");
    state.panelOpen.set(false);
    deletions.undo();
    EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(PanelActsTest, NothingComesBackAfterAllWasDeleted) {
    for (const auto* id : {"a", "b"}) history.add({.id = id}, Persist::yes);
    PanelDeletions deletions(executor, state, history);
    deletions.remove("a");
    history.clear();
    EXPECT_EQ(deletions.undoable.get(), 0U);
    deletions.undo();
    EXPECT_THAT(ids(), IsEmpty());
    EXPECT_TRUE(HistoryStore(file).items().empty());
    EXPECT_FALSE(executor.hasTimers());
}

// Exporting

/// Files in memory; `failure` is what the disk says.
class MemoryFiles final : public FileReplacer {
 public:
    std::error_code replace(const std::filesystem::path&, const Source& source) override {
        std::string written;
        const bool complete = source([&](std::string_view piece) {
            written += piece;
            return !failure;
        });
        if (failure) return failure;
        if (!complete) return std::make_error_code(std::errc::operation_canceled);
        contents = written;
        return {};
    }

    std::error_code failure;
    std::string contents = "antes";
};

class PanelExportTest : public PanelActsTest {
 protected:
    std::string exportTo(const std::filesystem::path& target) {
        std::string words = "not finished";
        exporter.onFinished = [&](const auto& told, bool) { words = told; };
        exporter.start(target, HistoryExportFormat::json);
        background.runPosted();
        executor.runPosted();
        return words;
    }

    ManualExecutor background;
    MemoryFiles files;
    UnavailableSavePanel savePanel;
    PanelExport exporter{executor, background, savePanel, files, file};
};

TEST_F(PanelExportTest, ReplacesTheFileOnlyWithAllOfTheHistoryOrSaysWhyNot) {
    history.add({.id = "a"}, Persist::yes);
    files.failure = std::make_error_code(std::errc::no_space_on_device);
    EXPECT_EQ(exportTo("x.json"), "No queda espacio en el disco.");
    files.failure = std::make_error_code(std::errc::permission_denied);
    EXPECT_EQ(exportTo("x.json"), "No tienes permiso para guardar ahí.");
    files.failure = {};
    EXPECT_EQ(exportTo(folder.path() / "dorix.sqlite-wal"),
              "Ese archivo es el propio historial de DORIX. Elige otro.");
    PanelExport nowhere(executor, background, savePanel, files, folder.path() / "nada.sqlite");
    std::string words;
    nowhere.onFinished = [&](const auto& told, bool) { words = told; };
    nowhere.start("x.json", HistoryExportFormat::markdown);
    background.runPosted();
    executor.runPosted();
    EXPECT_EQ(words, "No se ha podido leer el historial.");
    EXPECT_EQ(files.contents, "antes");
    EXPECT_EQ(exportTo("x.json"), "Historial guardado en x.json");
    EXPECT_EQ(Json::parse(files.contents).at("items").size(), 1U);
}

TEST_F(PanelExportTest, CanBeStopped) {
    history.add({.id = "a"}, Persist::yes);
    bool finished = false;
    exporter.onFinished = [&](const auto&, bool) { finished = true; };
    exporter.start("x.json", HistoryExportFormat::json);
    exporter.stop();
    background.runPosted();
    executor.runPosted();
    EXPECT_FALSE(finished);
    EXPECT_FALSE(exporter.running.get());
    EXPECT_EQ(files.contents, "antes");
}

// Place and time

class PanelPlacementTest : public testing::Test {
 protected:
    const Screens screens{{{0, 0, 1920, 1080}, {0, 40, 1920, 1000}}};
};

TEST_F(PanelPlacementTest, OpensBesideTheIconWithinTheWorkArea) {
    // The glyph's left edge is at 1622, its right edge at 274.
    const auto left = placePanel(iconFrame({1600, 600}), screens, panelmeasure::size);
    EXPECT_FALSE(left.anchorRight);
    EXPECT_EQ(left.frame, (Rect{1622 - 12 - 720, 648 - 260, 720, 520}));
    const auto right = placePanel(iconFrame({200, 10}), screens, panelmeasure::size);
    EXPECT_TRUE(right.anchorRight);
    EXPECT_EQ(right.frame, (Rect{274 + 12, 48, 720, 520})) << "not below the work area";
    EXPECT_FALSE(placePanel(iconFrame({960 - 48, 0}), screens, panelmeasure::size).anchorRight)
        << "in the very middle it opens to the left";
}

TEST_F(PanelPlacementTest, ASmallScreenHasAllOfIt) {
    const Screens small{{{0, 0, 800, 480}, {0, 0, 800, 480}}};
    EXPECT_EQ(placePanel(iconFrame({700, 0}), small, panelmeasure::size).frame, (Rect{8, 0, 720, 480}));
    const Screens tiny{{{0, 0, 500, 300}, {0, 0, 500, 300}}};
    EXPECT_EQ(placePanel(iconFrame({0, 0}), tiny, panelmeasure::size).frame, (Rect{0, 0, 500, 300}));
}

TEST_F(PanelPlacementTest, KeepsTheUsersSize) {
    MemoryUserDefaults defaults;
    EXPECT_EQ(savedPanelSize(defaults), (Size{720, 520}));
    savePanelSize(defaults, {900, 650});
    EXPECT_EQ(savedPanelSize(defaults), (Size{900, 650}));
    savePanelSize(defaults, {10, 2000});
    EXPECT_EQ(savedPanelSize(defaults), (Size{560, 2000}));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& damaged : {Json("x"), Json::array({1}), Json::array({"a", 5}), Json::array({nan, 5})}) {
        defaults.set("panelSize", damaged);
        EXPECT_EQ(savedPanelSize(defaults), (Size{720, 520})) << damaged;
    }
}

class PanelPresenterTest : public testing::Test {
 protected:
    ManualExecutor executor;
    AppState state;
    AppContext target;
    AppContext inFront{.app = RunningApplication{}, .displayName = "Correo"};
    std::vector<std::string> log;
    RecordingWindow window{log};
    AppWindows windows{.panel = &window};
    PanelPresenter presenter{
        executor,
        state,
        windows,
        target,
        {.capture =
             [this] {
                 log.emplace_back(state.panelOpen.get() ? "late" : "capture");
                 return inFront;
             },
         .dropRecording = [this] { log.emplace_back("drop"); },
         .watchOutsideClicks = [this](bool on) { log.emplace_back(on ? "watch" : "unwatch"); }}};
};

TEST_F(PanelPresenterTest, OpensAndClosesInOrder) {
    state.showFirstRunHint.set(true);
    presenter.open();
    presenter.open();
    EXPECT_THAT(log, ElementsAre("capture", "place", "show", "watch"));
    EXPECT_FALSE(state.showFirstRunHint.get());
    EXPECT_TRUE(state.panelOpen.get() && state.panelAnchorRight.get());
    log.clear();
    presenter.toggle();
    presenter.close();
    EXPECT_FALSE(state.panelOpen.get());
    executor.advanceBy(0.19);
    EXPECT_THAT(log, ElementsAre("drop", "unwatch"));
    executor.advanceBy(0.02);
    EXPECT_THAT(log, ElementsAre("drop", "unwatch", "hide"));
}

TEST_F(PanelPresenterTest, OpenedAgainWhileItFadesItStaysAndKeepsItsTarget) {
    presenter.open();
    presenter.close();
    executor.advanceBy(0.1);
    inFront = {};  // the panel itself is in front
    presenter.open();
    EXPECT_EQ(target.displayName, "Correo");
    executor.advanceBy(1);
    EXPECT_EQ(std::ranges::count(log, "hide"), 0);
    presenter.close();
    executor.advanceBy(1);
    presenter.open();
    EXPECT_FALSE(target.app) << "nothing is in front by then";
}

}  // namespace
}  // namespace dorix
