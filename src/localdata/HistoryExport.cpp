#include "localdata/HistoryExport.h"

#include "base/Json.h"
#include "localdata/HistoryMarkdown.h"
#include "localdata/HistoryMetaJson.h"
#include "localdata/HistoryRows.h"
#include "sqlite/Sqlite.h"

#include <optional>
#include <string>

namespace dorix {

namespace {

using Write = std::function<bool(std::string_view)>;

/// Whether all rows were read and all of `write` went well.
template <typename Writer>
bool exportRows(sqlite3* db, Writer& writer, const Write& write, const std::stop_token& stop) {
    const auto statement = sqlite::prepare(db, historyrows::selectNewestFirst);
    if (!statement || !write(writer.begin())) return false;
    int result = sqlite3_step(statement.get());
    for (; result == SQLITE_ROW && !stop.stop_requested(); result = sqlite3_step(statement.get())) {
        const auto item = historyrows::itemOf(statement.get());
        if (item && !write(writer.add(*item))) return false;
    }
    return result == SQLITE_DONE && write(writer.end());
}

/// The fields of an item under their own names; absent ones are left out.
nlohmann::ordered_json jsonOf(const HistoryItem& item) {
    nlohmann::ordered_json object{{"id", item.id}, {"kind", storedName(item.kind)}, {"app", item.app}};
    if (item.bundleID) object["bundleID"] = *item.bundleID;
    object["title"] = item.title;
    object["createdAt"] = item.createdAt;
    object["query"] = item.query;
    object["answer"] = item.answer;
    if (const auto meta = encodeMeta(item.meta)) object["meta"] = Json::parse(*meta);
    return object;
}

class JsonWriter {
 public:
    static std::string begin() { return R"({"format": "dorix-history", "version": 1, "items": [)"; }

    /// An item a line, for programs that read by lines. Bytes that are no UTF-8 become U+FFFD.
    std::string add(const HistoryItem& item) {
        const auto replace = nlohmann::ordered_json::error_handler_t::replace;
        std::string line = isFirst_ ? "\n" : ",\n";
        isFirst_ = false;
        return line + jsonOf(item).dump(-1, ' ', false, replace);
    }

    static std::string end() { return "\n]}\n"; }

 private:
    bool isFirst_ = true;
};

}  // namespace

bool exportHistory(const std::filesystem::path& database, HistoryExportFormat format, const Write& write,
                   const std::stop_token& stop) {
    const auto db = sqlite::openReadOnly(database);
    if (format == HistoryExportFormat::json) {
        JsonWriter writer;
        return exportRows(db.get(), writer, write, stop);
    }
    HistoryMarkdown writer;
    return exportRows(db.get(), writer, write, stop);
}

}  // namespace dorix
