#include "service/ai/ModelAnswer.h"

#include "base/Json.h"
#include "base/text/Text.h"

namespace dorix::service {

namespace {

constexpr int mostObjectsTried = 16;

/// Where the object ends that begins at `start`: behind the brace that closes it, strings left aside.
std::optional<std::size_t> endOfObject(std::string_view text, std::size_t start) {
    int depth = 0;
    bool inString = false;
    for (std::size_t at = start; at < text.size(); ++at) {
        const char c = text[at];
        if (inString) {
            if (c == '\\') ++at;
            inString = c != '"';
        } else if (c == '"') {
            inString = true;
        } else if (c == '{') {
            ++depth;
        } else if (c == '}' && --depth == 0) {
            return at + 1;
        }
    }
    return std::nullopt;
}

std::optional<std::string> member(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

std::optional<WriteAnswer> answerOf(const Json& object) {
    auto action = member(object, "accion");
    auto title = member(object, "titulo");
    auto text = member(object, "texto");
    if (!action || !title || !text) return std::nullopt;
    if (*action != WriteAnswer::ask && text::trim(*text).empty()) return std::nullopt;
    return WriteAnswer{.accion = std::move(*action), .titulo = std::move(*title), .texto = std::move(*text)};
}

}  // namespace

std::optional<WriteAnswer> readWriteAnswer(std::string_view answer) {
    std::optional<WriteAnswer> last;  // what a model considers aloud comes before what it answers
    std::size_t start = answer.find('{');
    for (int tried = 0; start != std::string_view::npos && tried < mostObjectsTried; ++tried) {
        std::size_t next = start + 1;
        if (const auto end = endOfObject(answer, start)) {
            const auto object = Json::parse(answer.substr(start, *end - start), nullptr, false);
            if (object.is_object()) next = *end;
            if (object.is_object() && answerOf(object)) last = answerOf(object);
        }
        start = answer.find('{', next);
    }
    return last;
}

}  // namespace dorix::service
