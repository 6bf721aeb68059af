#include "service/ai/Requests.h"

#include "base/Json.h"
#include "base/text/Text.h"
#include "base/writing/Tones.h"

#include <utility>

namespace dorix::service {

namespace {

using enum RequestError::Problem;

constexpr int deepest = 4;  // an object in an array in an object, and one to spare

/// What is parsed of a body that holds nothing deeper than is allowed, whatever it claims: what lies deeper
/// is never kept. None when it is no such object.
std::optional<Json> parsedObject(std::string_view body) {
    bool tooDeep = false;
    const auto keep = [&tooDeep](int depth, Json::parse_event_t event, const Json&) {
        const bool opens =
            event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start;
        tooDeep |= opens && depth > deepest;
        return !tooDeep;
    };
    auto json = Json::parse(body, keep, false);
    if (tooDeep || !json.is_object()) return std::nullopt;
    return json;
}

/// What is longer than its bound: cut when it only tells of circumstances.
enum class Longer : std::uint8_t { cut, refused };

/// Reads the members of one object of a body. The first that is wrong is kept, and told at the end; the
/// values read until then are of no use.
class Members {
 public:
    Members(const Json& object, std::string path, std::optional<RequestError>& error)
        : object_(object), path_(std::move(path)), error_(error) {}

    /// A string; nothing if it is not there, or null.
    std::optional<std::string> text(const char* key, std::size_t bound, Longer longer = Longer::cut) {
        const auto* value = find(key);
        if (value == nullptr) return std::nullopt;
        if (!value->is_string()) return fail(wrongType, key);
        const auto& whole = value->get_ref<const std::string&>();
        const auto kept = text::prefix(whole, bound);
        if (kept.size() < whole.size() && longer == Longer::refused) return fail(tooLong, key);
        return std::string(kept);
    }

    std::string requiredText(const char* key, std::size_t bound, Longer longer = Longer::cut) {
        auto value = text(key, bound, longer);
        if (!value && !error_) fail(missing, key);
        return std::move(value).value_or("");
    }

    std::optional<bool> flag(const char* key) {
        const auto* value = find(key);
        if (value == nullptr) return std::nullopt;
        if (!value->is_boolean()) return fail(wrongType, key);
        return value->get<bool>();
    }

    std::optional<std::int64_t> integer(const char* key) {
        const auto* value = find(key);
        if (value == nullptr) return std::nullopt;
        if (!value->is_number_integer()) return fail(wrongType, key);
        return value->get<std::int64_t>();
    }

    std::optional<Picture> picture(const char* key) {
        const auto* value = find(key);
        if (value == nullptr) return std::nullopt;
        if (!value->is_string()) return fail(wrongType, key);
        if (value->get_ref<const std::string&>().size() > bounds::pictureBase64) return fail(tooLong, key);
        auto picture = pictureFromBase64(value->get<std::string>());
        if (!picture) fail(notPicture, key);
        return picture;
    }

    /// The value of a member that has to be an object, or an array, when it is there.
    const Json* object(const char* key) { return ofType(key, Json::value_t::object); }
    const Json* array(const char* key) { return ofType(key, Json::value_t::array); }

    Members inside(const Json& object, const std::string& key) { return {object, path_ + key + ".", error_}; }

    std::nullopt_t fail(RequestError::Problem problem, const std::string& key) {
        if (!error_) error_ = RequestError{.problem = problem, .field = path_ + key};
        return std::nullopt;
    }

 private:
    const Json* find(const char* key) const {
        const auto member = object_.find(key);
        return member == object_.end() || member->is_null() ? nullptr : &*member;
    }

    const Json* ofType(const char* key, Json::value_t type) {
        const auto* value = find(key);
        if (value == nullptr || value->type() == type) return value;
        fail(wrongType, key);
        return nullptr;
    }

    const Json& object_;
    std::string path_;
    std::optional<RequestError>& error_;
};

/// Parses a body by `read`, which fills the request out of its members.
template <typename Request, typename Read>
Parsed<Request> parsed(std::string_view body, Read read) {
    const auto json = parsedObject(body);
    if (!json) return std::unexpected(RequestError{.problem = notJson});
    std::optional<RequestError> error;
    Request request;
    read(Members(*json, "", error), request);
    if (error) return std::unexpected(std::move(*error));
    return request;
}

void readStyle(Members members, WriteRequest& request) {
    const auto* style = members.object("style");
    if (style == nullptr) return;
    auto inside = members.inside(*style, "style");
    request.styleNotes = inside.text("notes", bounds::styleNotes).value_or("");
    const auto* examples = inside.array("examples");
    if (examples == nullptr) return;
    for (const auto& example : *examples) {
        if (request.styleExamples.size() == bounds::styleExamples) return;
        if (!example.is_string()) {
            inside.fail(wrongType, "examples");
            return;
        }
        request.styleExamples.emplace_back(
            text::prefix(example.get_ref<const std::string&>(), bounds::styleExample));
    }
}

void readMemory(Members members, AskRequest& request) {
    const auto* hits = members.array("memory");
    if (hits == nullptr) return;
    for (const auto& hit : *hits) {
        if (request.memory.size() == bounds::memoryHits) return;
        if (!hit.is_object()) {
            members.fail(wrongType, "memory");
            return;
        }
        auto inside = members.inside(hit, "memory");
        const auto position = static_cast<std::int64_t>(request.memory.size()) + 1;
        request.memory.push_back({.n = inside.integer("n").value_or(position),
                                  .title = inside.text("title", bounds::memoryTitle).value_or(""),
                                  .date = inside.text("date", bounds::name).value_or(""),
                                  .text = inside.requiredText("text", bounds::memoryText)});
    }
}

/// The end of a conversation matters more than its start.
std::string_view lastCharacters(std::string_view text, std::size_t count) {
    if (text.size() <= count) return text;  // a character has one byte at least
    const auto length = text::length(text);
    return length <= count ? text : text.substr(text::prefix(text, length - count).size());
}

}  // namespace

Parsed<WriteRequest> parseWriteRequest(std::string_view body) {
    return parsed<WriteRequest>(body, [](Members members, WriteRequest& request) {
        request.transcript = members.requiredText("transcript", bounds::dictation, Longer::refused);
        request.appName = members.requiredText("appName", bounds::name);
        request.tone = members.requiredText("tone", bounds::name);
        if (!toneInstruction(request.tone)) members.fail(unknown, "tone");
        request.allowAsk = members.flag("allowAsk").value_or(false);
        request.windowTitle = members.text("windowTitle", bounds::windowTitle).value_or("");
        request.signatureName = members.text("signatureName", bounds::name).value_or("");
        request.screenshot = members.picture("screenshot");
        request.editableFocus = members.flag("editableFocus");
        readStyle(members, request);
    });
}

Parsed<AskRequest> parseAskRequest(std::string_view body) {
    return parsed<AskRequest>(body, [](Members members, AskRequest& request) {
        request.question = members.requiredText("question", bounds::question, Longer::refused);
        request.appName = members.requiredText("appName", bounds::name);
        request.windowTitle = members.text("windowTitle", bounds::windowTitle).value_or("");
        request.selection = members.text("selection", bounds::askedSelection);
        request.screenshot = members.picture("screenshot");
        if (const auto* document = members.object("document")) {
            auto inside = members.inside(*document, "document");
            request.document = {.name = inside.requiredText("name", bounds::name),
                                .text = inside.requiredText("text", bounds::document)};
        }
        request.mode = members.text("mode", bounds::name).value_or("");
        request.recap = members.text("recap", bounds::recap);
        if (auto whole = members.text("transcript", std::string_view::npos)) {
            request.transcript = lastCharacters(*whole, bounds::transcript);
        }
        request.meetingTitle = members.text("meetingTitle", bounds::meetingTitle).value_or("");
        readMemory(members, request);
    });
}

Parsed<TransformRequest> parseTransformRequest(std::string_view body) {
    return parsed<TransformRequest>(body, [](Members members, TransformRequest& request) {
        request.instruction = members.requiredText("instruction", bounds::instruction, Longer::refused);
        request.selection = members.requiredText("selection", bounds::rewrittenSelection, Longer::refused);
    });
}

}  // namespace dorix::service
