#include "base/Json.h"
#include "fakes/TemporaryFolder.h"
#include "localdata/HistoryExport.h"
#include "localdata/HistoryRows.h"
#include "unit/localdata/HistoryFile.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace dorix {
namespace {

class HistoryExportTest : public testing::Test {
 protected:
    std::string exported(HistoryExportFormat format) const {
        std::string out;
        const auto write = [&](std::string_view piece) {
            out += piece;
            return true;
        };
        EXPECT_TRUE(exportHistory(file, format, write, {}));
        return out;
    }
    void add(const HistoryItem& item) { store.add(item, HistoryStore::Persist::yes); }

    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "dorix.sqlite";
    HistoryStore store{file};
};

TEST_F(HistoryExportTest, JsonHoldsEveryRowOfTheFileWithAllItsFields) {
    EXPECT_TRUE(Json::parse(exported(HistoryExportFormat::json)).at("items").empty());
    // More than the list shows.
    query(
        file,
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000) INSERT INTO history "
        "SELECT 'id' || i, 'dictado', 'App', NULL, 'T', i, 'q', 'a', NULL FROM n");
    HistoryItem item = historyItem("último \xFF", 1'700'000'000.123456);
    item.kind = HistoryKind::busqueda;
    item.bundleID = "org.example";
    item.answer = "uno\n\"dos\" 👋";
    item.meta = {.engine = "nube", .sources = {{"a", "b"}}};
    add(item);
    const auto root = Json::parse(exported(HistoryExportFormat::json));
    EXPECT_EQ(root.at("format"), "dorix-history");
    const auto& items = root.at("items");
    ASSERT_EQ(items.size(), 3001U);
    EXPECT_EQ(items[0], Json::parse(R"({"id": "último \uFFFD", "kind": "busqueda", "app": "Editor",
        "bundleID": "org.example", "title": "Nota", "createdAt": 1700000000.123456, "query": "",
        "answer": "uno\n\"dos\" 👋", "meta": {"engine": "nube", "sources": ["a", "b"]}})"));
    EXPECT_EQ(items[3000].at("id"), "id1") << "newest first";
    EXPECT_FALSE(items[3000].contains("bundleID"));
}

TEST_F(HistoryExportTest, MarkdownKeepsWhatIsInAnItemInsideIt) {
    HistoryItem item = historyItem("a", 1'763'726'400);
    item.title = "# Título *con*\n`marcas`";
    item.query = "- no\r\n# soy\rtítulo";
    item.answer = "```\nsin cerrar\n\n<!-- tampoco\n## Título";
    item.meta = {.tone = "Técnico", .sources = {{"1. [x](y)"}}};
    add(item);
    const auto document = exported(HistoryExportFormat::markdown);
    EXPECT_TRUE(document.contains(" · \\# Título \\*con\\* \\`marcas\\`\n")) << document;
    EXPECT_TRUE(document.contains("> - no\n> # soy\n> título\n")) << document;
    EXPECT_TRUE(document.contains("> ```\n> sin cerrar\n>\n> <!-- tampoco\n> ## Título\n")) << document;
    EXPECT_TRUE(document.contains("- 1\\. \\[x\\](y)\n")) << document;
    // Nothing of the item's begins a line of the document.
    std::istringstream lines(document);
    int headings = 0;
    for (std::string line; std::getline(lines, line);) {
        headings += line.starts_with('#') ? 1 : 0;
        EXPECT_FALSE(line.starts_with("```") || line.contains('\r')) << line;
    }
    EXPECT_EQ(headings, 3) << "the document, the day, the item";
}

TEST_F(HistoryExportTest, GivesUpOnADamagedFileAndWhenNobodyTakesThePieces) {
    EXPECT_FALSE(exportHistory(file, HistoryExportFormat::json, [](auto) { return false; }, {}));
    std::ofstream(folder.path() / "roto") << std::string(8192, 'x');
    EXPECT_FALSE(
        exportHistory(folder.path() / "roto", HistoryExportFormat::json, [](auto) { return true; }, {}));
}

}  // namespace
}  // namespace dorix
