#include "views/Exhibit.h"
#include "views/Tokens.h"
#include "views/card/AnswerCardWindow.h"

namespace dorix::testing {

namespace {

const Style light;
const Style dark{.dark = true};
const Style english{.language = "en"};
const Style solid{.language = "en", .composited = false};

constexpr QSize desktop(1280, 800);
// A laptop's screen of 1366 x 768 pixels has that many points where everything is twice as large.
constexpr QSize laptop(683, 384);
// A telephone's held upright.
constexpr QSize narrow(360, 640);

/// A state of the card, in both languages.
struct Scene {
    std::string name;
    AnswerCard card;
    std::string english;  // its answer in the other language; its own where there is none
    bool speaks = false;
    bool byKeyboard = false;
    QSize screen = desktop;
    std::vector<Style> styles;
};

AnswerCard asked() {
    return {.id = "1",
            .kind = HistoryKind::screen,
            .appName = "Firefox",
            .appIcon = Ph::browser,
            .question = "¿Cuándo se firma el contrato de Velmar y qué cambia?",
            .streaming = true};
}

AnswerCard answered(std::string answer) {
    AnswerCard card = asked();
    card.answer = std::move(answer);
    card.streaming = false;
    return card;
}

AnswerCard waiting(bool hadScreen) {
    AnswerCard card = asked();
    card.hadScreen = hadScreen;
    return card;
}

AnswerCard streaming() {
    AnswerCard card = answered(
        "El contrato de **Velmar** se firma el *jueves 19*, con estos cambios:\n\n1. El plazo pasa de 30 a "
        "**45 "
        "días**.\n2. La penalización se calcula");
    card.streaming = true;
    return card;
}

constexpr const char* everything =
    "## Lo acordado\n\nEl contrato de **Velmar** se firma el *jueves 19*:\n\n1. El plazo pasa de 30 a **45 "
    "días**.\n2. La penalización es `importe * 0,02` por semana.\n   - primera entrega, en julio\n\n> «Con "
    "eso "
    "firmamos», dijo Marta.\n\n| Entrega | Plazo   |\n|---------|---------|\n| Primera | julio   |\n| "
    "Segunda | "
    "octubre |\n\n```\ntotal = base + iva\n```\n\nEl borrador está en https://velmar.example/contratos/2025";
constexpr const char* everythingInEnglish =
    "## What was agreed\n\nThe **Velmar** contract is signed on *Thursday the 19th*:\n\n1. The term goes "
    "from 30 to "
    "**45 days**.\n2. The penalty is `amount * 0.02` a week.\n   - first delivery, in July\n\n> “With that "
    "we "
    "sign”, Marta said.\n\n| Delivery | Term    |\n|----------|---------|\n| First    | July    |\n| Second  "
    " | "
    "October |\n\n```\ntotal = base + vat\n```\n\nThe draft is at https://velmar.example/contracts/2025";

AnswerCard withSources() {
    AnswerCard card = answered("El contrato se firma el **jueves 19**, y el plazo pasa de 30 a 45 días.");
    card.kind = HistoryKind::busqueda;
    card.appName = "Memoria";
    card.appIcon = Ph::fileText;
    card.sources = {
        {"Contrato Velmar v3.docx", "/home/lucia/Documentos/Contrato Velmar v3.docx"},
        {"#velmar · Marta", "https://velmar.example/canal/7"},
        {"Nota dictada el martes", std::nullopt},
        {"Acta de la reunión de seguimiento con el equipo jurídico de Velmar.md", "/home/lucia/a.md"}};
    return card;
}

AnswerCard onSelection() {
    AnswerCard card = answered("The contract is signed on Thursday the 19th.");
    card.kind = HistoryKind::seleccion;
    card.question = "tradúcelo al inglés";
    card.selection = "El contrato se firma el jueves 19.";
    card.canReplace = true;
    return card;
}

AnswerCard failed() {
    AnswerCard card = answered("");
    card.error = "Para preguntar hace falta conexión o Apple Intelligence activado.";
    return card;
}

AnswerCard longAnswer() {
    std::string text;
    for (int i = 1; i <= 60; ++i) {
        text += "Párrafo " + std::to_string(i) +
                ": el informe de ventas crece un 12 % respecto al trimestre anterior, y Ana lo revisa.\n\n";
    }
    return answered(text);
}

std::vector<Scene> scenes() {
    return {
        {.name = "waiting", .card = waiting(false), .styles = {light}},
        {.name = "looking", .card = waiting(true), .styles = {dark}},
        {.name = "streaming", .card = streaming(), .styles = {dark}},
        {.name = "everything",
         .card = answered(everything),
         .english = everythingInEnglish,
         .styles = {dark, solid}},
        {.name = "sources", .card = withSources(), .styles = {light}},
        {.name = "replace", .card = onSelection(), .speaks = true, .byKeyboard = true, .styles = {english}},
        {.name = "failed", .card = failed(), .styles = {english}},
        {.name = "long", .card = longAnswer(), .styles = {dark}},
        {.name = "narrow", .card = withSources(), .screen = narrow, .styles = {english}}};
}

std::vector<Scene> largeScenes() {
    return {{.name = "everything", .card = answered(everything), .screen = laptop, .styles = {light}},
            {.name = "sources", .card = withSources(), .screen = laptop, .styles = {dark}}};
}

void put(Exhibit& exhibit, const Scene& scene, const Style& style) {
    auto& answer = exhibit.bench.answer;
    answer.actions = {.close = [] {},
                      .retry = [] {},
                      .insert = [](const std::string&) {},
                      .speak = [](const std::string&, const std::string&) {}};
    AnswerCard card = scene.card;
    if (style.language == "en" && !scene.english.empty()) card.answer = scene.english;
    exhibit.bench.card.set(card);
    if (scene.speaks) answer.speakingID.set(card.id);
    answer.show();
}

/// The card fills the picture, with its shadow; what lies around it in its window is nothing.
std::unique_ptr<Exhibit> cardExhibit(const Scene& scene, const Style& style) {
    auto exhibit = std::make_unique<Exhibit>(style);
    exhibit->theme.map().insert("reducesMotion", true);
    put(*exhibit, scene, style);
    const Rect screen{0, 0, static_cast<double>(scene.screen.width()),
                      static_cast<double>(scene.screen.height())};
    auto window =
        std::make_unique<AnswerCardWindow>(exhibit->context, exhibit->bench.settings, exhibit->bench.answer);
    window->place({screen.width - 98, 2, 96, 96}, {{.frame = screen, .visibleFrame = screen}});
    window->open();
    window->view().insert("byKeyboard", scene.byKeyboard);
    auto* shownWindow = window.get();
    const auto card = [shownWindow] { return shownWindow->rootObject()->property("cardRect").toRectF(); };
    exhibit->hang(std::move(window), tokens::cardRadius, {}, card);
    constexpr int reach = tokens::shadowReach;
    exhibit->size = card().size().toSize().grownBy({reach, reach, reach, reach});
    exhibit->windows.back().at = QPoint(reach, reach) - card().topLeft().toPoint();
    return exhibit;
}

std::vector<Picture> pictures(const std::vector<Scene>& scenes) {
    std::vector<Picture> pictures;
    for (const Scene& scene : scenes) {
        pictures.push_back({.name = "card-" + scene.name,
                            .show = [scene](const Style& style) { return cardExhibit(scene, style); },
                            .styles = scene.styles});
    }
    return pictures;
}

}  // namespace

std::vector<Picture> cardPictures() { return pictures(scenes()); }

std::vector<Picture> largeCardPictures() { return pictures(largeScenes()); }

}  // namespace dorix::testing
