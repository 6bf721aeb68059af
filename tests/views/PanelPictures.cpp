#include "base/Json.h"
#include "base/text/Calendar.h"
#include "views/Exhibit.h"
#include "views/Tokens.h"
#include "views/panel/PanelWindow.h"

#include <ctime>
#include <fstream>

namespace dorix::testing {

namespace {

const Style light;
const Style dark{.dark = true};
const Style english{.language = "en"};
const Style englishDark{.language = "en", .dark = true};
// A laptop's screen of 1366 x 768 pixels has that many points where everything is twice as large.
constexpr QSize laptop(683, 384);

/// A state of the panel.
struct Scene {
    std::string name;
    PanelSection section = PanelSection::todo;
    std::string query;
    std::string selected;  // an item's id
    bool deletes = false;  // the selected item, at the end
    bool records = false;
    bool byKeyboard = false;
    bool isEmpty = false;  // there is no history at all
    std::string composer;
    std::string heard;  // by the composer's microphone, so far
    QSize size{720, 520};
    QSize screen{1280, 800};
    std::vector<Style> styles;
};

std::vector<Scene> scenes() {
    return {
        {.name = "dictation", .selected = "carlos", .styles = {light, {.composited = false}}},
        {.name = "by-keyboard", .selected = "carlos", .byKeyboard = true, .styles = {englishDark}},
        {.name = "answer", .selected = "velmar", .styles = {dark}},
        {.name = "answer-large", .selected = "velmar", .size = {900, 640}, .styles = {english}},
        {.name = "welcome", .styles = {light}},
        {.name = "empty", .isEmpty = true, .styles = {englishDark}},
        {.name = "no-match", .query = "factura de la luz", .styles = {light}},
        {.name = "empty-section", .section = PanelSection::accion, .selected = "lista", .styles = {dark}},
        {.name = "deleted",
         .selected = "lista",
         .deletes = true,
         .composer = "Resume la conversación de esta mañana con Ana\ny prepara una respuesta corta",
         .styles = {light}},
        {.name = "recording", .selected = "retraso", .records = true, .styles = {english}},
        {.name = "hearing",
         .selected = "old11",
         .records = true,
         .composer = "Resume lo de ayer.",
         .heard = "y dime qué queda por hacer antes del viernes con el contrato de Velmar porque Marta",
         .styles = {dark}},
        {.name = "narrow-list", .query = "presupuesto", .size = {560, 400}, .styles = {light}},
        {.name = "narrow-detail", .selected = "carlos", .size = {560, 400}, .styles = {dark}},
    };
}

std::vector<Scene> largeScenes() {
    return {{.name = "dictation", .selected = "carlos", .styles = {light}},
            {.name = "small-list", .screen = laptop, .styles = {dark}},
            {.name = "small-detail", .selected = "velmar", .screen = laptop, .styles = {english}}};
}

/// Some days' work in the language, all of it before `now`, in seconds since 1970.
std::vector<HistoryItem> sampleHistory(const std::string& language, double now) {
    std::vector<HistoryItem> items;
    std::ifstream file(DORIX_SAMPLE_HISTORY);
    for (const Json& row : Json::parse(file)) {
        const Json& words = row.at(language);
        HistoryItem& item = items.emplace_back();
        item.id = row.at("id");
        item.kind = historyKind(row.at("kind").get<std::string>()).value();
        item.app = row.at("app");
        if (row.contains("bundle")) item.bundleID = row.at("bundle");
        item.title = words.at("title");
        item.createdAt = now - row.at("hours").get<double>() * 3600;
        item.query = words.at("query");
        item.answer = words.at("answer");
        item.meta.engine = "Reglas básicas";
        if (item.kind == HistoryKind::dictado) item.meta.tone = "Profesional";
        if (row.contains("sources")) item.meta.sources = row.at("sources");
    }
    return items;
}

std::unique_ptr<PanelWindow> openWindow(Exhibit& exhibit, const Scene& scene) {
    PanelBench& bench = exhibit.bench;
    const Rect screen{0, 0, static_cast<double>(scene.screen.width()),
                      static_cast<double>(scene.screen.height())};
    exhibit.defaults.set("panelSize", Json::array({scene.size.width(), scene.size.height()}));
    auto window = std::make_unique<PanelWindow>(exhibit.context, bench.state, bench.settings, bench.panel);
    window->place({screen.width - 96, 2, 96, 96}, {{.frame = screen, .visibleFrame = screen}});
    bench.state.panelOpen.set(true);
    window->open();
    bench.panel.layout.detailOpen.set(!scene.selected.empty());
    window->view().insert("byKeyboard", scene.byKeyboard);
    return window;
}

std::unique_ptr<Exhibit> panelExhibit(const Scene& scene, const Style& style) {
    qputenv("TZ", "UTC");
    tzset();
    refreshTimeZone();
    auto exhibit = std::make_unique<Exhibit>(style);
    PanelBench& bench = exhibit->bench;
    if (!scene.isEmpty) {
        for (const auto& item : sampleHistory(style.language, exhibit->executor.date())) {
            bench.history.add(item, HistoryStore::Persist::no);
        }
    }
    bench.state.section.set(scene.section);
    bench.state.query.set(scene.query);
    bench.state.composerRecording.set(scene.records);
    auto window = openWindow(*exhibit, scene);
    if (!scene.selected.empty()) bench.state.selectedID.set(scene.selected);
    bench.state.composerText.set(scene.composer);
    bench.speech.partial.set(scene.heard);
    if (scene.deletes) bench.panel.deletions.remove(scene.selected);
    exhibit->hang(std::move(window), tokens::cardRadius);
    return exhibit;
}

std::vector<Picture> pictures(const std::vector<Scene>& scenes) {
    std::vector<Picture> pictures;
    for (const Scene& scene : scenes) {
        pictures.push_back({.name = "panel-" + scene.name,
                            .show = [scene](const Style& style) { return panelExhibit(scene, style); },
                            .styles = scene.styles});
    }
    return pictures;
}

}  // namespace

std::vector<Picture> panelPictures() { return pictures(scenes()); }

std::vector<Picture> largePanelPictures() { return pictures(largeScenes()); }

}  // namespace dorix::testing
