#include "panel/PanelVerbs.h"

#include "localdata/Language.h"
#include "panel/HistoryPanel.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace dorix {

namespace {

constexpr unsigned in(VerbPlace place) { return 1U << static_cast<unsigned>(place); }

struct Verb {
    using Label = std::string (*)(const HistoryPanel&);
    using Test = bool (*)(const HistoryPanel&);
    using Act = void (*)(HistoryPanel&);

    std::string_view id;
    Test isPossible;
    Act act;
    Label label = nullptr;                                    // for one that is offered
    Test isDone = [](const HistoryPanel&) { return false; };  // a moment ago, which its button says
    const char* doneLabel = "";
    unsigned places = 0;
    int group = 0;  // menus draw a line between groups
    bool isMain = false;
    VerbMark mark = VerbMark::none;
};

bool always(const HistoryPanel&) { return true; }
bool hasItem(const HistoryPanel& panel) { return panel.selection.item() != nullptr; }

template <PanelActions::ItemAction PanelActions::* action>
bool canWithItem(const HistoryPanel& panel) {
    return hasItem(panel) && panel.actions.*action;
}
template <PanelActions::ItemAction PanelActions::* action>
void doWithItem(HistoryPanel& panel) {
    (panel.actions.*action)(*panel.selection.item());
}
template <std::function<void()> PanelActions::* action>
bool can(const HistoryPanel& panel) {
    return static_cast<bool>(panel.actions.*action);
}
template <std::function<void()> PanelActions::* action>
void act(HistoryPanel& panel) {
    (panel.actions.*action)();
}

bool justCopied(const HistoryPanel& panel) {
    const HistoryItem* item = panel.selection.item();
    return item != nullptr && panel.clipboard.copiedID.get() == item->id;
}

bool isSpoken(const HistoryPanel& panel) {
    const HistoryItem* item = panel.selection.item();
    return item != nullptr && panel.speakingID.get() == item->id;
}

std::string insertLabel(const HistoryPanel& panel) {
    const HistoryItem* item = panel.selection.item();
    return tr(item != nullptr && item->kind == HistoryKind::dictado ? "Insertar de nuevo" : "Insertar");
}

template <int items>
void moveBy(HistoryPanel& panel) {
    panel.selection.move(items);
}

/// To the section so many further down, as far as there are any.
template <int sections>
void moveSection(HistoryPanel& panel) {
    panel.moveSection(sections);
}

constexpr int all = 100;

using enum VerbPlace;

constexpr std::array verbs{
    // On the selected item.
    Verb{.id = "insert",
         .isPossible = canWithItem<&PanelActions::reinsert>,
         .act = doWithItem<&PanelActions::reinsert>,
         .label = insertLabel,
         .places = in(detail) | in(itemMenu),
         .isMain = true},
    Verb{.id = "copy",
         .isPossible = canWithItem<&PanelActions::copy>,
         .act = doWithItem<&PanelActions::copy>,
         .label = [](const HistoryPanel&) { return tr("Copiar"); },
         .isDone = justCopied,
         .doneLabel = "Copiado",
         .places = in(detail) | in(itemMenu)},
    Verb{.id = "speak",
         .isPossible =
             [](const HistoryPanel& panel) {
                 return canWithItem<&PanelActions::speak>(panel) && !panel.selection.item()->answer.empty();
             },
         .act = doWithItem<&PanelActions::speak>,
         .label = [](const HistoryPanel& panel) { return tr(isSpoken(panel) ? "Detener" : "Escuchar"); },
         .places = in(detailEnd) | in(itemMenu),
         .mark = VerbMark::speak},
    Verb{.id = "remove",
         .isPossible = canWithItem<&PanelActions::remove>,
         .act = doWithItem<&PanelActions::remove>,
         .label = [](const HistoryPanel&) { return tr("Borrar"); },
         .places = in(detailEnd) | in(itemMenu),
         .group = 1,
         .mark = VerbMark::remove},
    // Of the panel.
    Verb{.id = "exportMarkdown",
         .isPossible = always,
         .act = [](HistoryPanel& panel) { panel.exportHistory(HistoryExportFormat::markdown); },
         .label = [](const HistoryPanel&) { return tr("Exportar como Markdown…"); },
         .places = in(panelMenu)},
    Verb{.id = "exportJson",
         .isPossible = always,
         .act = [](HistoryPanel& panel) { panel.exportHistory(HistoryExportFormat::json); },
         .label = [](const HistoryPanel&) { return tr("Exportar como JSON…"); },
         .places = in(panelMenu)},
    Verb{.id = "closeHistory",
         .isPossible = always,
         .act = [](HistoryPanel& panel) { perform(panel, "close"); },
         .label = [](const HistoryPanel&) { return tr("Cerrar historial"); },
         .places = in(panelMenu),
         .group = 1},
    Verb{.id = "close",
         .isPossible = can<&PanelActions::close>,
         .act = act<&PanelActions::close>,
         .label = [](const HistoryPanel&) { return tr("Cerrar (Esc)"); },
         .places = in(corner),
         .mark = VerbMark::close},
    Verb{
        .id = "toggleMic", .isPossible = can<&PanelActions::toggleMic>, .act = act<&PanelActions::toggleMic>},
    Verb{.id = "toggleScreen",
         .isPossible = can<&PanelActions::toggleScreen>,
         .act = act<&PanelActions::toggleScreen>},
    Verb{.id = "undo", .isPossible = always, .act = [](HistoryPanel& panel) { panel.deletions.undo(); }},
    // Ways about.
    Verb{.id = "next", .isPossible = always, .act = moveBy<1>},
    Verb{.id = "previous", .isPossible = always, .act = moveBy<-1>},
    Verb{.id = "nextPage",
         .isPossible = always,
         .act = [](HistoryPanel& panel) { panel.selection.move(panel.layout.rowsPerPage); }},
    Verb{.id = "previousPage",
         .isPossible = always,
         .act = [](HistoryPanel& panel) { panel.selection.move(-panel.layout.rowsPerPage); }},
    Verb{.id = "first",
         .isPossible = always,
         .act = [](HistoryPanel& panel) { panel.selection.moveToFirst(); }},
    Verb{
        .id = "last", .isPossible = always, .act = [](HistoryPanel& panel) { panel.selection.moveToLast(); }},
    Verb{.id = "openDetail",
         .isPossible = always,
         .act = [](HistoryPanel& panel) { panel.layout.detailOpen.set(hasItem(panel)); }},
    Verb{.id = "back",
         .isPossible = [](const HistoryPanel& panel) { return panel.layout.narrow.get(); },
         .act = [](HistoryPanel& panel) { panel.layout.detailOpen.set(false); }},
    Verb{.id = "nextSection", .isPossible = always, .act = moveSection<1>},
    Verb{.id = "previousSection", .isPossible = always, .act = moveSection<-1>},
    Verb{.id = "firstSection", .isPossible = always, .act = moveSection<-all>},
    Verb{.id = "lastSection", .isPossible = always, .act = moveSection<all>},
    // The rest of these two is about what only the window knows.
    Verb{.id = "find",
         .isPossible = always,
         .act = [](HistoryPanel& panel) { panel.layout.detailOpen.set(false); }},
    Verb{.id = "showItemMenu", .isPossible = hasItem, .act = [](HistoryPanel&) {}},
};

const Verb* possible(const HistoryPanel& panel, std::string_view id) {
    const auto found = std::ranges::find(verbs, id, &Verb::id);
    return found != verbs.end() && found->isPossible(panel) ? &*found : nullptr;
}

bool isOffered(const Verb& verb, const HistoryPanel& panel, VerbPlace place) {
    return (verb.places & in(place)) != 0 && verb.isPossible(panel);
}

}  // namespace

std::vector<PanelOffer> panelOffers(const HistoryPanel& panel, VerbPlace place) {
    std::vector<PanelOffer> offers;
    for (const Verb& verb : verbs) {
        if (!isOffered(verb, panel, place)) continue;
        if (verb.isDone(panel)) {
            offers.push_back({verb.id, tr(verb.doneLabel), VerbMark::done, verb.isMain});
        } else {
            const bool silences = verb.mark == VerbMark::speak && isSpoken(panel);
            const auto mark = silences ? VerbMark::silence : verb.mark;
            offers.push_back({verb.id, verb.label(panel), mark, verb.isMain});
        }
    }
    return offers;
}

Menu panelMenu(HistoryPanel& panel, VerbPlace place) {
    Menu menu;
    int group = 0;
    for (const Verb& verb : verbs) {
        if (!isOffered(verb, panel, place)) continue;
        if (!menu.empty() && verb.group != group) menu.push_back(ClosureMenuItem::separator());
        group = verb.group;
        menu.push_back({verb.label(panel), [&panel, id = verb.id] { perform(panel, id); }});
    }
    return menu;
}

bool canPerform(const HistoryPanel& panel, std::string_view verb) { return possible(panel, verb) != nullptr; }

bool canPerformByKey(const HistoryPanel& panel, std::string_view verb) {
    const Verb* const found = possible(panel, verb);
    if (found == nullptr) return false;
    const bool isOnItem = (found->places & in(itemMenu)) != 0;
    return !isOnItem || panel.selection.row();
}

bool perform(HistoryPanel& panel, std::string_view verb) {
    const Verb* const found = possible(panel, verb);
    if (found != nullptr) found->act(panel);
    return found != nullptr;
}

}  // namespace dorix
