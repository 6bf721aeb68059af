#include "service/model/ModelEvents.h"

#include "base/Json.h"

#include <utility>

namespace dorix::service {

namespace {

constexpr std::size_t longestLine = std::size_t{1024} * 1024;
constexpr std::string_view dataField = "data:";

/// The member, or null. A null member is what models send for nothing, too.
const Json& member(const Json& object, const char* name) {
    static const Json null;
    if (!object.is_object()) return null;
    const auto found = object.find(name);
    return found == object.end() ? null : *found;
}

const Json& firstChoice(const Json& answer) {
    static const Json null;
    const auto& choices = member(answer, "choices");
    return choices.is_array() && !choices.empty() ? choices.front() : null;
}

/// Whether it ends here for want of room. What is left out would be missing where the answer is put.
bool isCutShort(const Json& choice) { return member(choice, "finish_reason") == "length"; }

std::string textOf(const Json& message) {
    const auto& content = member(message, "content");
    return content.is_string() ? content.get<std::string>() : std::string();
}

Json parsed(std::string_view text) { return Json::parse(text, nullptr, false); }

}  // namespace

std::vector<std::string> ModelEvents::read(std::string_view bytes) {
    std::vector<std::string> texts;
    while (!bytes.empty() && !isDone_ && !hasFailed_) {
        const auto end = bytes.find('\n');
        line_ += bytes.substr(0, end);
        if (end == std::string_view::npos) {
            hasFailed_ = line_.size() > longestLine;
            break;
        }
        readLine(std::exchange(line_, {}), texts);
        bytes.remove_prefix(end + 1);
    }
    return texts;
}

void ModelEvents::readLine(std::string_view line, std::vector<std::string>& texts) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!line.starts_with(dataField)) return;
    line.remove_prefix(dataField.size());
    if (line.starts_with(' ')) line.remove_prefix(1);
    if (line == "[DONE]") {
        isDone_ = isWhole_ = true;
        return;
    }
    const auto event = parsed(line);
    const auto& choice = firstChoice(event);
    auto text = textOf(member(choice, "delta"));
    if (!text.empty()) texts.push_back(std::move(text));
    hasFailed_ = !member(event, "error").is_null() || isCutShort(choice);
    if (!member(choice, "finish_reason").is_null()) isWhole_ = !hasFailed_;
}

std::string textOfAnswer(std::string_view body) {
    const auto answer = parsed(body);
    const auto& choice = firstChoice(answer);
    return isCutShort(choice) ? std::string() : textOf(member(choice, "message"));
}

}  // namespace dorix::service
