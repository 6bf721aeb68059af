#include "fakes/TemporaryFolder.h"
#include "localdata/HistoryRows.h"
#include "localdata/HistoryStore.h"
#include "unit/localdata/HistoryFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = HistoryChange::Kind;
using Persist = HistoryStore::Persist;

class HistoryStoreTest : public testing::Test {
 protected:
    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "datos" / "DORIX" / "dorix.sqlite";
};

const HistoryItem fullItem{.id = "F1",
                           .kind = HistoryKind::seleccion,
                           .app = "Correo «ñ»",
                           .bundleID = "org.example.mail",
                           .title = "Título",
                           .createdAt = 1'700'000'000.123456,
                           .query = "¿qué\n dice?",
                           .answer = "Dice \"hola\" 👋",
                           .meta = {.tone = "Natural",
                                    .engine = "nube",
                                    .inserted = false,
                                    .durationMs = 1234,
                                    .source = "voz",
                                    .context = "",
                                    .sources = std::vector<std::string>{"a", "b"}}};

TEST_F(HistoryStoreTest, KeepsAllOfAnItemFromOneRunToTheNext) {
    const auto bare = historyItem("F2", fullItem.createdAt + 1);
    {
        HistoryStore store(file);
        store.add(fullItem, Persist::yes);
        store.add(bare, Persist::yes);
    }
    EXPECT_THAT(HistoryStore(file).items(), ElementsAre(bare, fullItem));
    EXPECT_THAT(
        query(file, "SELECT kind || typeof(created_at) || quote(bundle_id) || meta FROM history"),
        ElementsAre(R"(seleccionreal'org.example.mail'{"context":"","durationMs":1234,"engine":"nube",)"
                    R"("inserted":false,"source":"voz","sources":["a","b"],"tone":"Natural"})",
                    "dictadorealNULL{}"));
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_EQ(std::filesystem::status(file.parent_path()).permissions(), perms::owner_all);
}

TEST_F(HistoryStoreTest, ShowsTheNewestFirstAndTellsWhatChanged) {
    HistoryStore store(file);
    std::vector<HistoryChange> changes;
    const auto subscription = store.observe([&](const HistoryChange& change) { changes.push_back(change); });
    for (const auto& item : {historyItem("a", 10), historyItem("b", 30), historyItem("c", 20),
                             historyItem("d", 30), historyItem("e", 5)}) {
        store.add(item, Persist::no);
    }
    EXPECT_THAT(ids(store.items()), ElementsAre("d", "b", "c", "a", "e")) << "of one date, the last to come";
    EXPECT_THAT(changes, ElementsAre(HistoryChange{Kind::inserted, 0}, HistoryChange{Kind::inserted, 0},
                                     HistoryChange{Kind::inserted, 1}, HistoryChange{Kind::inserted, 0},
                                     HistoryChange{Kind::inserted, 4}));

    changes.clear();
    auto changed = historyItem("c", 99);
    changed.answer = "otra";
    store.add(changed, Persist::no);
    store.add(changed, Persist::yes);
    EXPECT_THAT(ids(store.items()), ElementsAre("d", "b", "c", "a", "e")) << "it keeps its place";
    EXPECT_EQ(store.items()[2], changed);
    store.add(historyItem("f", 1), Persist::no);
    EXPECT_THAT(ids(store.items()), ElementsAre("c", "d", "b", "a", "e", "f")) << "until an item is new";
    store.add(historyItem("g", 40), Persist::no);
    store.remove("a");
    EXPECT_THAT(ids(store.items()), ElementsAre("c", "g", "d", "b", "e", "f"));
    EXPECT_THAT(changes, ElementsAre(HistoryChange{Kind::updated, 2}, HistoryChange{Kind::reset, 0},
                                     HistoryChange{Kind::inserted, 1}, HistoryChange{Kind::removed, 4}));
}

TEST_F(HistoryStoreTest, TellsOfANewItemOnceWhenItIsFirstWritten) {
    std::vector<std::string> told;
    auto item = historyItem("a", 1);
    for (const bool again : {false, true}) {
        HistoryStore store(file);
        store.onNewItem = [&](const HistoryItem& one) { told.push_back(one.id + one.answer); };
        if (!again) store.add(item, Persist::no);
        if (!again) EXPECT_THAT(store.load(10), IsEmpty());
        for (const auto* answer : {" entera", " corregida"}) {
            item.answer = answer;
            store.add(item, Persist::no);
            store.add(item, Persist::yes);
        }
        EXPECT_THAT(store.loadAll(), ElementsAre(item));
    }
    EXPECT_THAT(told, ElementsAre("a entera"));
}

TEST_F(HistoryStoreTest, ForgetsOneItemOrAll) {
    HistoryStore store(file);
    EXPECT_EQ(store.firstDate(), std::nullopt);
    for (const auto* id : {"a", "b", "c"}) store.add(historyItem(id, 2.5 + *id), Persist::yes);
    store.add(historyItem("sin guardar", 1), Persist::no);
    EXPECT_EQ(store.firstDate(), 2.5 + 'a');
    for (const auto* id : {"nadie", "a", "sin guardar"}) store.remove(id);
    EXPECT_THAT(ids(store.items()), ElementsAre("c", "b"));
    EXPECT_EQ(ids(store.loadAll()), ids(store.items()));
    store.add(historyItem("a", 1), Persist::yes);
    EXPECT_THAT(ids(store.items()), ElementsAre("c", "b", "a")) << "it may come back";

    auto confided = historyItem("d", 3);
    confided.answer = "entre nosotros";
    store.add(confided, Persist::yes);
    const auto onDisk = [&] { return bytes(file) + bytes(file.string() + "-wal"); };
    ASSERT_TRUE(onDisk().contains(confided.answer));
    std::vector<HistoryChange> changes;
    const auto subscription = store.observe([&](const HistoryChange& change) { changes.push_back(change); });
    store.clear();
    EXPECT_FALSE(onDisk().contains(confided.answer));
    EXPECT_THAT(store.items(), IsEmpty());
    EXPECT_THAT(store.loadAll(), IsEmpty());
    EXPECT_EQ(store.firstDate(), std::nullopt);
    EXPECT_THAT(changes, ElementsAre(HistoryChange{Kind::reset, 0}));
}

TEST_F(HistoryStoreTest, ShowsAtMost2000OfAnOldFile) {
    HistoryStore(file).clear();
    query(
        file,
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2100) INSERT INTO history "
        "SELECT i, 'dictado', '', NULL, '', i, '', '', NULL FROM n");
    HistoryStore store(file);
    EXPECT_EQ(store.items().size(), 2000U);
    EXPECT_EQ(store.items().front().id, "2100");
    EXPECT_EQ(store.items().back().id, "101");
    EXPECT_THAT(ids(store.load(2)), ElementsAre("2100", "2099"));
    EXPECT_EQ(store.loadAll().size(), 2100U);
    EXPECT_EQ(store.firstDate(), 1);

    store.onNewItem = [](const HistoryItem& /*item*/) { FAIL() << "it is in the file, if not on the list"; };
    store.add(historyItem("7", 7), Persist::yes);
    EXPECT_EQ(store.items().back().id, "7");
}

TEST_F(HistoryStoreTest, MakesTheBestOfRowsThatOthersWrote) {
    std::filesystem::create_directories(file.parent_path());
    query(file, "CREATE TABLE history (id, kind, app, bundle_id, title, created_at, query, answer, meta)");
    query(file,
          "INSERT INTO history VALUES"
          "(NULL, 'dictado', NULL, NULL, NULL, 40, NULL, NULL, NULL),"
          "('b', 'otro', 'x', 'x', 'x', 1, 'x', 'x', '{}'),"
          "('c', NULL, 'x', 'x', 'x', 30, 'x', 'x', '{}'),"
          "('d', 'Dictado', 'x', 'x', 'x', 30, 'x', 'x', '{}'),"
          "('e', 'accion', 'x', '', 'x', NULL, 'x', 'x', '{'),"
          "('f', 'accion', 7, 'x', x'41', 'ayer', 'x', 'x', x'ff'),"
          "('g', 'accion', 'x', 'x', 'x', 20, 'x', 'x', '{\"tone\":\"a\",\"inserted\":1}')");
    HistoryStore store(file);
    ASSERT_THAT(ids(store.items()), ElementsAre("f", testing::SizeIs(36), "g", "e"));
    const auto bare = store.items()[1];
    EXPECT_EQ(bare, (HistoryItem{.id = bare.id, .createdAt = 40}));
    EXPECT_EQ(store.items()[0].app, "7");
    EXPECT_EQ(store.items()[0].title, "A");
    for (const auto& item : store.items()) EXPECT_EQ(item.meta, HistoryItem::Meta{}) << item.id;
    EXPECT_EQ(store.items()[3].bundleID, "");
    EXPECT_EQ(store.firstDate(), 1) << "rows that are not shown count";
    store.add(historyItem("h", 10), Persist::yes);
    EXPECT_THAT(ids(store.items()), ElementsAre(bare.id, "g", "h", "f", "e"));
    EXPECT_THAT(query(file, "SELECT count(*) FROM history"), ElementsAre("8")) << "none is lost";

    query(file, "INSERT INTO history SELECT * FROM history WHERE id = 'g'");
    HistoryStore withTwins(file);
    withTwins.remove("g");
    EXPECT_THAT(ids(withTwins.items()), ElementsAre("f", testing::_, "h", "e"));
}

TEST(HistoryMetaTest, DecodesWhatItEncodesAndNothingByHalves) {
    EXPECT_EQ(decodeMeta(encodeMeta(fullItem.meta).value()), fullItem.meta);
    EXPECT_EQ(encodeMeta({.tone = "\xff"}), std::nullopt);
    EXPECT_EQ(decodeMeta(R"({"tone":null,"nuevo":{"a":[1]},"engine":"x","durationMs":12.0})"),
              (HistoryItem::Meta{.engine = "x", .durationMs = 12}));
    EXPECT_EQ(decodeMeta(R"({"durationMs":-9223372036854775808})").durationMs, INT64_MIN);
    for (const auto& text :
         {"", "null", "[]", R"({"tone":"a")", "{\"tone\":\"\xff\"}", R"({"engine":"x","tone":1})",
          R"({"engine":"x","sources":["a",1]})", R"({"engine":"x","inserted":"true"})",
          R"({"engine":"x","durationMs":1.5})", R"({"engine":"x","durationMs":9223372036854775808})",
          R"({"engine":"x","durationMs":1e300})", R"({"engine":"x","durationMs":1e999})"}) {
        EXPECT_EQ(decodeMeta(text), HistoryItem::Meta{}) << text;
    }
    EXPECT_EQ(decodeMeta(std::string(100'000, '[')), HistoryItem::Meta{});
}

}  // namespace
}  // namespace dorix
