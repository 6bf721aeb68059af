#include "modelserver/ChatAnswer.h"

#include "base/Json.h"
#include "base/text/Text.h"

#include <cstddef>

namespace dorix {

namespace {

/// Bytes that are looked through, as what begins with a brace that is of no use is read again from the next
/// one.
constexpr std::size_t mostRead = 1024UZ * 1024;

constexpr std::string_view thought = "<think>";
constexpr std::string_view endOfThought = "</think>";

/// The first choice, or nothing.
const Json* choiceOf(const Json& answer) {
    if (!answer.is_object() || !answer.contains("choices")) return nullptr;
    const auto& choices = answer["choices"];
    return choices.is_array() && !choices.empty() && choices[0].is_object() ? &choices[0] : nullptr;
}

/// The text in a choice: the whole of it, or one piece.
const std::string* textOf(const Json& choice) {
    for (const auto* holder : {"message", "delta"}) {
        const auto found = choice.find(holder);
        if (found == choice.end() || !found->is_object()) continue;
        const auto content = found->find("content");
        if (content != found->end() && content->is_string()) return &content->get_ref<const std::string&>();
    }
    return nullptr;
}

bool isCut(const Json& choice) {
    const auto reason = choice.find("finish_reason");
    return reason != choice.end() && *reason == "length";
}

std::optional<ChatText> textOfEvents(std::string_view body) {
    constexpr std::string_view prefix = "data:";
    std::optional<ChatText> whole;
    bool wasCut = false;  // what tells of it need not bring a piece
    for (auto line : text::split(body, '\n')) {
        if (!line.starts_with(prefix)) continue;
        const auto event = Json::parse(line.substr(prefix.size()), nullptr, false);
        const auto* choice = choiceOf(event);
        if (choice == nullptr) continue;
        wasCut = wasCut || isCut(*choice);
        const auto* piece = textOf(*choice);
        if (piece == nullptr) continue;
        if (!whole) whole.emplace();
        whole->text += *piece;
    }
    if (whole) whole->isCut = wasCut;
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

std::optional<ChatText> chatText(std::string_view body) {
    const auto answer = Json::parse(body, nullptr, false);
    if (answer.is_discarded()) return textOfEvents(body);
    const auto* choice = choiceOf(answer);
    const auto* text = choice == nullptr ? nullptr : textOf(*choice);
    if (text == nullptr) return std::nullopt;
    return ChatText{.text = *text, .isCut = isCut(*choice)};
}

std::optional<std::string_view> withoutThought(std::string_view text) {
    const auto trimmed = text::trim(text);
    if (!trimmed.starts_with(thought)) return text;
    const auto end = trimmed.find(endOfThought);
    if (end == trimmed.npos) return std::nullopt;
    return text::trim(trimmed.substr(end + endOfThought.size()));
}

std::optional<GeneratedContent> contentIn(std::string_view text, const GenerationSchema& schema) {
    // A model that thinks aloud may write several drafts before its answer.
    if (const auto end = text.rfind(endOfThought); end != text.npos)
        text.remove_prefix(end + endOfThought.size());
    auto at = text.find('{');
    for (std::size_t read = 0; at != text.npos && read < mostRead;) {
        const auto object = objectAtBeginning(text.substr(at));
        read += object.empty() ? text.size() - at : object.size();
        if (auto content = fieldsOf(Json::parse(object, nullptr, false), schema)) return content;
        at = text.find('{', at + 1);
    }
    return std::nullopt;
}

}  // namespace dorix
