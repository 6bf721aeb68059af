#include "localdata/HistoryExport.h"

#include "base/Json.h"
#include "base/text/Calendar.h"
#include "base/text/Text.h"
#include "localdata/HistoryRows.h"
#include "localdata/Language.h"
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

/// One line, in which nothing is markup.
std::string plainLine(std::string_view text) {
    constexpr std::string_view markup = R"(\`*_[]<>#&~|)";
    constexpr std::string_view listMarkup = "+-.)";  // in a line's first word only
    bool isFirstWord = true;
    std::string line;
    for (const char c : text::join(text::words(text), " ")) {
        if (c == ' ') isFirstWord = false;
        if (markup.contains(c) || (isFirstWord && listMarkup.contains(c))) line += '\\';
        line += c;
    }
    return line;
}

std::string quotation(std::string_view text) {
    // Markdown ends lines in three ways.
    const auto lines = text::replaceAll(text::replaceAll(text, "\r\n", "\n"), "\r", "\n");
    std::string quoted;
    for (const auto line : text::split(lines, '\n')) {
        quoted += line.empty() ? ">" : "> ";
        quoted += line;
        quoted += '\n';
    }
    return quoted;
}

/// Nothing for a text that is empty.
std::string part(std::string_view heading, std::string_view text) {
    if (text.empty()) return {};
    return "**" + plainLine(heading) + "**\n\n" + quotation(text) + '\n';
}

std::string sourceList(const HistoryItem& item) {
    if (!item.meta.sources || item.meta.sources->empty()) return {};
    std::string list = "**" + plainLine(tr("Fuentes")) + "**\n\n";
    for (const auto& source : *item.meta.sources) list += "- " + plainLine(source) + '\n';
    return list + '\n';
}

/// The history as a Markdown document (CommonMark) for people, in the app language and in local time: a
/// heading for a day, one below it for an item, and what was said and written as quotations, which keep
/// headings, fences and lists of theirs to themselves. Taking "> " off the lines of one gives its text back.
class MarkdownWriter {
 public:
    MarkdownWriter();

    /// The document's own heading, what follows it for each item, newest first, and its end.
    static std::string begin();
    std::string add(const HistoryItem& item);
    static std::string end() { return {}; }

 private:
    DateFormat dayFormat_;
    DateFormat timeFormat_;
    DaySpan day_;  // the one whose heading was written last
};

MarkdownWriter::MarkdownWriter()
    : dayFormat_("EEEEdMMMMy", appLocaleIdentifier()), timeFormat_("jm", appLocaleIdentifier()) {}

std::string MarkdownWriter::begin() { return "# " + plainLine(tr("Historial de DORIX")) + "\n\n"; }

std::string MarkdownWriter::add(const HistoryItem& item) {
    std::string out;
    if (!day_.contains(item.createdAt)) {
        day_ = dayOf(item.createdAt);
        out += "## " + plainLine(dayFormat_.format(day_.start)) + "\n\n";
    }
    out += "### " + plainLine(timeFormat_.format(item.createdAt) + " · " + item.title) + "\n\n";
    std::string facts = label(item.kind);
    if (!item.app.empty()) facts += " · " + tr(item.app);
    if (item.meta.tone) facts += " · " + formatText(tr("Tono: %@"), {tr(*item.meta.tone)});
    out += plainLine(facts) + "\n\n";
    out += part(questionTitle(item.kind), item.query);
    out += part(tr("Contexto"), item.meta.context.value_or(""));
    out += part(tr(item.kind == HistoryKind::dictado ? "Texto" : "Respuesta"), item.answer);
    out += sourceList(item);
    return out;
}

}  // namespace

bool exportHistory(const std::filesystem::path& database, HistoryExportFormat format, const Write& write,
                   const std::stop_token& stop) {
    const auto db = sqlite::openReadOnly(database);
    if (format == HistoryExportFormat::json) {
        JsonWriter writer;
        return exportRows(db.get(), writer, write, stop);
    }
    MarkdownWriter writer;
    return exportRows(db.get(), writer, write, stop);
}

}  // namespace dorix
