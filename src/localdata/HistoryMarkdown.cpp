#include "localdata/HistoryMarkdown.h"

#include "base/text/Text.h"
#include "localdata/Language.h"

#include <string_view>

namespace dorix {

namespace {

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

}  // namespace

HistoryMarkdown::HistoryMarkdown()
    : dayFormat_("EEEEdMMMMy", appLocaleIdentifier()), timeFormat_("jm", appLocaleIdentifier()) {}

std::string HistoryMarkdown::begin() { return "# " + plainLine(tr("Historial de DORIX")) + "\n\n"; }

std::string HistoryMarkdown::add(const HistoryItem& item) {
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

}  // namespace dorix
