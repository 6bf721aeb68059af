#include "base/async/ManualExecutor.h"
#include "base/text/Text.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "localdata/Language.h"
#include "panel/OlderItems.h"
#include "panel/PanelList.h"
#include "panel/PanelSections.h"
#include "panel/PanelSelection.h"
#include "sqlite/Sqlite.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace dorix {
namespace {

using Persist = HistoryStore::Persist;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double day = 86400;
const double noon = dayOf(1'763'719'200).start + day / 2;  // Friday, 21 November 2025

HistoryItem historyItem(std::string id, double createdAt, HistoryKind kind = HistoryKind::dictado) {
    return {.id = std::move(id), .kind = kind, .app = "Correo", .title = "Título", .createdAt = createdAt};
}

class PanelListTest : public testing::Test {
 protected:
    PanelListTest() { state.panelOpen.set(true); }

    /// Days by their label in brackets, items by their id.
    std::string shown(const PanelRow& row) const {
        return row.kind == PanelRow::Kind::day ? "[" + *row.day + "]" : list.item(row).id;
    }
    std::vector<std::string> shown() const {
        std::vector<std::string> all;
        for (const auto& row : list.rows()) all.push_back(shown(row));
        return all;
    }
    void add(const HistoryItem& item) { history.add(item, Persist::no); }
    std::vector<std::string> find(std::string query) {
        state.query.set(std::move(query));
        return shown();
    }

    /// What a list shows that is only told of changes; it must be the same at each of them.
    void follow(const PanelListChange& change) {
        using enum PanelListChange::Kind;
        const auto first = mirror.begin() + static_cast<std::ptrdiff_t>(change.first);
        const auto rows = shown();
        if (change.kind == reset) mirror = rows;
        if (change.kind == removed) mirror.erase(first, first + static_cast<std::ptrdiff_t>(change.count));
        for (std::size_t i = 0; i < change.count; ++i) {
            const auto row = change.first + i;
            const auto at = mirror.begin() + static_cast<std::ptrdiff_t>(row);
            if (change.kind == inserted) mirror.insert(at, rows.at(row));
            if (change.kind == changed) *at = rows.at(row);
        }
        changes.push_back(change);
        EXPECT_EQ(mirror, rows);
    }

    TemporaryFolder folder;
    ManualExecutor executor{noon};
    AppState state;
    HistoryStore history{folder.path() / "dorix.sqlite"};
    PanelList list{executor, state, history};
    PanelSelection selection{state, history, list};
    std::vector<std::string> mirror;
    std::vector<PanelListChange> changes;
    Subscription following = list.observe([this](const auto& change) { follow(change); });
};

TEST_F(PanelListTest, GroupsByDayInTheAppLanguage) {
    add(historyItem("hoy", noon - 60));
    add(historyItem("ayer", noon - day));
    for (const auto* id : {"semana a", "semana b"}) add(historyItem(id, noon - 7 * day));
    EXPECT_THAT(shown(),
                ElementsAre("[Hoy]", "hoy", "[Ayer]", "ayer", "[viernes, 14 nov]", "semana b", "semana a"));
    MemoryUserDefaults english(Json{{"appLanguage", "en"}});
    installLanguage(english, {});
    list.retranslate();
    uninstallLanguage();
    EXPECT_EQ(shown().at(2), "[Yesterday]");
    EXPECT_EQ(shown().at(4), "[Friday, Nov 14]");
}

TEST_F(PanelListTest, NamesTheDaysAnewAtMidnightWhileItIsOpen) {
    add(historyItem("a", noon));
    add(historyItem("b", noon - day));
    changes.clear();
    const double midnight = dayOf(noon).end;
    executor.advanceTo(midnight - noon - 1);
    EXPECT_THAT(changes, IsEmpty());
    executor.advanceTo(midnight - noon + 1);
    EXPECT_THAT(shown(), ElementsAre("[Ayer]", "a", "[jueves, 20 nov]", "b"));
    EXPECT_EQ(changes.size(), 1U) << "no row comes or goes";
    executor.advanceBy(day);
    EXPECT_EQ(shown().front(), "[viernes, 21 nov]");

    state.panelOpen.set(false);
    EXPECT_FALSE(executor.hasTimers()) << "a closed panel wakes nobody";
    executor.advanceBy(day);
    add(historyItem("c", executor.date()));
    EXPECT_EQ(shown().front(), "[Hoy]");
}

TEST_F(PanelListTest, FollowsTheTimeZoneWhenItOpens) {
    const auto moveTo = [&](const char* zone) {
        state.panelOpen.set(false);
        setenv("TZ", zone, 1);
        changes.clear();
        state.panelOpen.set(true);
    };
    moveTo("UTC");
    const double midnight = dayOf(noon).start;
    add(historyItem("a", midnight + 60));
    const DateFormat time("jm", "es_ES");
    EXPECT_EQ(time.format(midnight), "0:00");
    moveTo("America/New_York");
    EXPECT_EQ(time.format(midnight), "19:00");
    EXPECT_THAT(shown(), ElementsAre("[Ayer]", "a"));
    EXPECT_THAT(changes, ElementsAre(PanelListChange{PanelListChange::Kind::changed, 0, 2}));
    moveTo("America/Lima");  // the same hour in winter
    EXPECT_THAT(changes, ElementsAre(PanelListChange{PanelListChange::Kind::changed, 0, 2}));
    moveTo("America/Lima");
    EXPECT_THAT(changes, IsEmpty());
    unsetenv("TZ");
    refreshTimeZone();
}

TEST_F(PanelListTest, FindsWithoutCaseAndDiacriticsInEveryField) {
    auto item = historyItem("a", noon);
    item.title = "Íñigo";
    item.query = "El CAMIÓN";
    item.answer = "llegó tarde";
    item.app = "Gráficos";
    add(item);
    EXPECT_THAT(find("inigoel"), IsEmpty()) << "not across two fields";
    for (const auto* query : {"tarde", "inigo", "ÍÑ", "camion", "llego", "GRAFICOS", ""}) {
        EXPECT_THAT(find(query), ElementsAre("[Hoy]", "a")) << query;
    }
    EXPECT_THAT(find("inigoel"), IsEmpty()) << "nor when all of them were looked through";
}

TEST_F(PanelListTest, AGrowingAnswerChangesItsRowOnly) {
    auto item = historyItem("a", noon, HistoryKind::pregunta);
    add(item);
    add(historyItem("b", noon + 1));
    changes.clear();
    item.answer = "Según";
    add(item);
    EXPECT_THAT(changes,
                ElementsAre(PanelListChange{.kind = PanelListChange::Kind::changed, .first = 2, .count = 1}));
}

/// Whatever happens, the list shows what going through all items would find, and has told every change.
TEST_F(PanelListTest, IsAlwaysWhatGoingThroughAllItemsFinds) {
    std::mt19937 random(7);  // NOLINT(cert-msc32-c,cert-msc51-cpp): a failure must come again
    const auto pick = [&](int count) { return std::uniform_int_distribution(0, count - 1)(random); };
    const std::vector<std::string> words{"", "uno", "DÓS", "tres", "uno dos", "unò"};
    for (int step = 0; step < 3000; ++step) {
        auto item = historyItem("i" + std::to_string(pick(12)), noon - pick(5) * day / 2,
                                allHistoryKinds.at(static_cast<std::size_t>(pick(7))));
        item.answer = words.at(static_cast<std::size_t>(pick(6)));
        switch (pick(8)) {
            case 0:
                history.remove(item.id);
                break;
            case 1:
                state.section.set(allPanelSections.at(static_cast<std::size_t>(pick(6))));
                break;
            case 2:
                state.query.set(words.at(static_cast<std::size_t>(pick(6))));
                break;
            case 3:
                if (pick(40) == 0) history.clear();
                break;
            default:
                add(item);
        }
        std::vector<std::string> expected;
        for (const auto& one : history.items()) {
            if (!shows(state.section.get(), one.kind)) continue;
            if (!text::fold(one.answer).contains(text::fold(state.query.get()))) continue;
            const auto label = *DayLabels(noon).label(one.createdAt);
            const auto isDay = [](const std::string& row) { return row.starts_with('['); };
            const auto last = std::find_if(expected.rbegin(), expected.rend(), isDay);
            if (last == expected.rend() || *last != "[" + label + "]") expected.push_back("[" + label + "]");
            expected.push_back(one.id);
        }
        ASSERT_EQ(shown(), expected) << "step " << step;
        ASSERT_EQ(mirror, expected) << "step " << step;
        if (const auto row = selection.row()) {
            ASSERT_EQ(shown().at(*row), *state.selectedID.get());
        }
        selection.move(pick(3) - 1);
    }
}

// The selection

TEST_F(PanelListTest, TheSelectionMovesOverItemsAndPastDays) {
    selection.move(1);
    EXPECT_EQ(selection.item(), nullptr);
    for (int i = 0; i < 5; ++i) add(historyItem(std::to_string(i), noon - i * day / 2));
    std::string path;
    for (const int by : {1, 2, 10, -1, -10}) {
        selection.move(by);
        path += selection.item()->id;
    }
    EXPECT_EQ(path, "02430");
    selection.moveToLast();
    EXPECT_EQ(selection.item()->id, "4");
    selection.select(0);
    EXPECT_EQ(selection.item()->id, "4") << "a day cannot be selected";
    selection.moveToFirst();
    EXPECT_EQ(selection.item()->id, "0");
    selection.clear();
    selection.move(-1);
    EXPECT_EQ(selection.item()->id, "4");
}

TEST_F(PanelListTest, WhatIsHiddenStaysSelectedAndWhatIsDeletedHandsOn) {
    for (int i = 0; i < 4; ++i) {
        auto item = historyItem(std::to_string(i), noon - i);
        item.answer = i == 1 ? "otro" : "este";
        add(item);
    }
    find("este");
    for (const auto& [by, next] : {std::pair(1, "2"), std::pair(-1, "0")}) {
        state.selectedID.set("1");
        EXPECT_EQ(selection.row(), std::nullopt);
        EXPECT_EQ(selection.item()->id, "1");
        selection.move(by);
        EXPECT_EQ(selection.item()->id, next);
    }
    find("");
    state.selectedID.set("1");
    for (const auto* next : {"2", "3", "0"}) {
        history.remove(*state.selectedID.get());
        EXPECT_EQ(selection.item()->id, next) << "the next older, or newer at the end";
    }
    history.remove("0");
    EXPECT_EQ(state.selectedID.get(), std::nullopt);
}

TEST_F(PanelListTest, TellsAnotherItemFromAnotherAnswer) {
    std::vector<PanelSelection::Change> told;
    const auto subscription = selection.observe([&](auto change) { told.push_back(change); });
    using enum PanelSelection::Change;
    auto question = historyItem("a", noon);
    state.selectedID.set("a");
    add(question);
    EXPECT_THAT(told, ElementsAre(item, item)) << "an item may be selected before it is there";
    told.clear();
    add(historyItem("b", noon + 1));
    question.answer = "ya";
    add(question);
    EXPECT_THAT(told, ElementsAre(contents));
    EXPECT_EQ(selection.item()->answer, "ya");
}

/// A history that is longer than what is read at the start: the five oldest items are in the file alone.
class OlderItemsTest : public testing::Test {
 protected:
    static std::filesystem::path filled(const std::filesystem::path& file) {
        const HistoryStore made(file);  // for its table
        const auto db = sqlite::open(file);
        sqlite::exec(db.get(),
                     "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 2004) "
                     "INSERT INTO history SELECT 'id' || i, 'dictado', 'Correo', NULL, "
                     "CASE WHEN i < 5 OR i = 2000 THEN 'Camión ' ELSE 'Título ' END || i, "
                     "1000000000 + i * 10, '', '', NULL FROM n");
        return file;
    }
    /// What a user who pauses after typing comes to see.
    std::vector<std::string> find(const std::string& query) {
        state.query.set(query);
        executor.advanceBy(1);
        for (int i = 0; i < 5000 && state.searchesOlder.get(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            executor.runPosted();
        }
        std::vector<std::string> shown;
        for (const auto& row : list.rows()) {
            if (row.kind == PanelRow::Kind::item) shown.push_back(list.item(row).id);
            if (row.kind == PanelRow::Kind::day && *row.day == "Más antiguo") shown.emplace_back("older");
        }
        return shown;
    }

    TemporaryFolder folder;
    ManualExecutor executor{noon};
    AppState state;
    const std::filesystem::path database = filled(folder.path() / "dorix.sqlite");
    HistoryStore history{database};
    PanelList list{executor, state, history};
    OlderItems older{executor, state, history, database};
};

TEST_F(OlderItemsTest, WhatIsInTheFileAloneIsFoundBelowTheRestWhileItIsSought) {
    EXPECT_EQ(history.items().size(), 2000U);
    state.query.set("camion");
    EXPECT_TRUE(state.searchesOlder.get());
    EXPECT_EQ(list.rows().size(), 2U) << "nobody waits for the disk";
    EXPECT_THAT(find("camion"), ElementsAre("id2000", "older", "id4", "id3", "id2", "id1", "id0"));
    EXPECT_THAT(find("camion 3"), ElementsAre("older", "id3"));
    history.remove("id3");
    EXPECT_THAT(find("camion"), ElementsAre("id2000", "older", "id4", "id2", "id1", "id0"));
    EXPECT_EQ(find("").size(), 2000U) << "the list without a search has no gaps";
    history.clear();
    EXPECT_THAT(find("camion"), IsEmpty());
    EXPECT_FALSE(state.searchesOlder.get());
}

}  // namespace
}  // namespace dorix
