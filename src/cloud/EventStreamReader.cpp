#include "cloud/EventStreamReader.h"

#include "base/Json.h"
#include "cloud/APIError.h"
#include "cloud/WireCoding.h"
#include "localdata/Language.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {
bool endsLine(char c) { return c == '\n' || c == '\r'; }
}  // namespace

void EventStreamReader::read(std::string_view bytes) {
    while (true) {
        // Both characters of "\r\n" end a line; that of no characters between them is passed over.
        const auto* const end = std::ranges::find_if(bytes, endsLine);
        const std::string_view piece(bytes.begin(), end);
        if (!line_.empty() || end == bytes.end()) extend(line_, piece);
        if (end == bytes.end()) return;
        takeLine(line_.empty() ? piece : std::exchange(line_, {}));
        bytes.remove_prefix(piece.size() + 1);
    }
}

std::string EventStreamReader::finish() {
    takeLine(std::exchange(line_, {}));
    return std::move(text_);
}

void EventStreamReader::takeLine(std::string_view line) {
    constexpr std::string_view prefix = "data: ";
    if (!line.starts_with(prefix)) return;
    const auto event = Json::parse(line.substr(prefix.size()), nullptr, false);
    if (!event.is_object()) return;
    const auto* type = stringAt(event, "type");
    if (type == nullptr) return;
    if (*type == "text") {
        const auto* text = stringAt(event, "text");
        append(text ? *text : "");
    } else if (*type == "error") {
        const auto* message = stringAt(event, "message");
        throw APIError::server(message ? *message : tr("Error"));
    }
}

void EventStreamReader::append(std::string_view text) {
    extend(text_, text);
    if (onText_) onText_(text_);
}

void EventStreamReader::extend(std::string& held, std::string_view more) const {
    if (more.size() > longest_ - held.size()) throw APIError::server(tr("Respuesta no válida."));
    held += more;
}

}  // namespace dorix
