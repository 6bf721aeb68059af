#include "modelserver/ChatAnswer.h"

#include "base/Json.h"
#include "base/text/Text.h"

#include <cstddef>

namespace dorix {

namespace {

/// How many braces are looked at that begin nothing of use.
constexpr int mostBeginnings = 64;

/// The text in a choice: the whole of it, or one piece.
const std::string* textOf(const Json& answer) {
    if (!answer.is_object() || !answer.contains("choices")) return nullptr;
    const auto& choices = answer["choices"];
    if (!choices.is_array() || choices.empty() || !choices[0].is_object()) return nullptr;
    for (const auto* holder : {"message", "delta"}) {
        const auto found = choices[0].find(holder);
        if (found == choices[0].end() || !found->is_object()) continue;
        const auto content = found->find("content");
        if (content != found->end() && content->is_string()) return &content->get_ref<const std::string&>();
    }
    return nullptr;
}

std::optional<std::string> textOfEvents(std::string_view body) {
    constexpr std::string_view prefix = "data:";
    std::optional<std::string> whole;
    for (auto line : text::split(body, '\n')) {
        if (!line.starts_with(prefix)) continue;
        const auto event = Json::parse(line.substr(prefix.size()), nullptr, false);
        if (const auto* piece = textOf(event)) whole = whole.value_or("") + *piece;
    }
    return whole;
}

/// From the brace that the text begins with to the one that closes it; empty where none does.
std::string_view objectAtBeginning(std::string_view text) {
    int depth = 0;
    bool isInString = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (isInString && c == '\\') {
            ++at;
        } else if (c == '"') {
            isInString = !isInString;
        } else if (!isInString && c == '{') {
            ++depth;
        } else if (!isInString && c == '}' && --depth == 0) {
            return text.substr(0, at + 1);
        }
    }
    return {};
}

std::optional<GeneratedContent> fieldsOf(const Json& object, const GenerationSchema& schema) {
    if (!object.is_object()) return std::nullopt;
    GeneratedContent content;
    for (const auto& field : schema.fields) {
        const auto found = object.find(field.name);
        if (found == object.end() || !found->is_string()) return std::nullopt;
        content[field.name] = found->get<std::string>();
    }
    return content;
}

}  // namespace

std::optional<std::string> chatText(std::string_view body) {
    const auto answer = Json::parse(body, nullptr, false);
    if (answer.is_discarded()) return textOfEvents(body);
    const auto* text = textOf(answer);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

std::optional<GeneratedContent> contentIn(std::string_view text, const GenerationSchema& schema) {
    // A model that thinks aloud may write several drafts before its answer.
    constexpr std::string_view thought = "</think>";
    if (const auto end = text.rfind(thought); end != text.npos) text.remove_prefix(end + thought.size());
    auto at = text.find('{');
    for (int tried = 0; at != text.npos && tried < mostBeginnings; ++tried) {
        const auto object = objectAtBeginning(text.substr(at));
        if (auto content = fieldsOf(Json::parse(object, nullptr, false), schema)) return content;
        at = text.find('{', at + 1);
    }
    return std::nullopt;
}

}  // namespace dorix
