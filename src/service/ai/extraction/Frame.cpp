#include "service/ai/extraction/Frame.h"

#include "base/text/Text.h"
#include "service/ai/extraction/Quotation.h"

namespace dorix::service {

namespace {

constexpr std::size_t longestQuotation = 600;  // characters
constexpr std::size_t longestName = 120;

}  // namespace

const Frame& frameIn(Language language) {
    static constexpr Frame spanish{.open = "«",
                                   .close = "»",
                                   .document = "documento",
                                   .selection = "texto seleccionado",
                                   .transcript = "reunión",
                                   .recap = "tu actividad",
                                   .activity = "Tu actividad reciente:",
                                   .withDorix = "Con DORIX:",
                                   .gist = "Las frases que mejor lo recogen, citadas tal cual:",
                                   .decisions = "Decisiones",
                                   .tasks = "Tareas",
                                   .user = "Tú",
                                   .others = "Ellos"};
    static constexpr Frame english{.open = "“",
                                   .close = "”",
                                   .document = "document",
                                   .selection = "selected text",
                                   .transcript = "meeting",
                                   .recap = "your activity",
                                   .activity = "Your recent activity:",
                                   .withDorix = "With DORIX:",
                                   .gist = "The sentences that say most of it, quoted as they stand:",
                                   .decisions = "Decisions",
                                   .tasks = "Tasks",
                                   .user = "You",
                                   .others = "They"};
    return language == Language::spanish ? spanish : english;
}

std::string quoted(std::string_view text, const Frame& frame) {
    return std::string(frame.open) + plainLine(withoutLineMarks(text), longestQuotation) +
           std::string(frame.close);
}

std::string nameOf(const Source& source, const Frame& frame) {
    using enum Source::Kind;
    const auto title = plainLine(text::trim(source.title), longestName);
    switch (source.kind) {
        case document:
            return title.empty() ? std::string(frame.document) : title;
        case memory:
            return title + (title.empty() ? "[" : " [") + std::to_string(source.number) + "]";
        case selection:
            return std::string(frame.selection) + (title.empty() ? "" : " (" + title + ")");
        case transcript:
            return title.empty() ? std::string(frame.transcript) : title;
        case recap:
            return std::string(frame.recap);
    }
    return {};
}

}  // namespace dorix::service
