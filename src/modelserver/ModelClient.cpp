#include "modelserver/ModelClient.h"

#include "base/Json.h"
#include "localdata/Language.h"
#include "modelserver/ChatAnswer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace dorix {

namespace {

using Kind = ModelServerError::Kind;
using OrderedJson = nlohmann::ordered_json;  // a model writes fields in the order in which it reads of them

// Bytes. They are read between two steps of the program, which must not stand still over them.
constexpr std::size_t largestText = 256UZ * 1024;
constexpr std::size_t largestList = 1024UZ * 1024;  // some servers have hundreds of models
constexpr std::size_t largestVector = 256UZ * 1024;
constexpr std::size_t largestDimension = 1UZ << 16;

std::string addressOf(const ModelEndpoint& at, std::string_view path) {
    std::string_view base = at.url;
    while (base.ends_with('/')) base.remove_suffix(1);
    if (base.ends_with("/v1")) base.remove_suffix(3);
    return std::string(base).append(path);
}

HttpHeaders headersFor(const ModelEndpoint& at) {
    HttpHeaders headers{{"content-type", "application/json"}};
    if (!at.key.empty()) headers.emplace_back("authorization", "Bearer " + at.key);
    return headers;
}

OrderedJson formOf(const GenerationSchema& schema) {
    OrderedJson properties = OrderedJson::object();
    OrderedJson required = OrderedJson::array();
    for (const auto& field : schema.fields) {
        properties[field.name] = {{"type", "string"}, {"description", field.guide}};
        required.push_back(field.name);
    }
    return {{"type", "object"},
            {"properties", std::move(properties)},
            {"required", std::move(required)},
            {"additionalProperties", false}};
}

/// Servers that do not hold the model to the schema leave it to the prompt to tell of it.
std::string promptOf(const ModelClient::Chat& chat) {
    if (!chat.schema) return chat.prompt;
    return chat.prompt + "\n\nResponde solo con un objeto JSON que cumpla este esquema:\n" +
           formOf(*chat.schema).dump();
}

enum class Hold { toSchema, toNothing };

std::string bodyOf(const ModelClient::Chat& chat, Hold hold) {
    OrderedJson body{{"model", chat.model},
                     {"stream", false},
                     {"messages",
                      {{{"role", "system"}, {"content", chat.instructions}},
                       {{"role", "user"}, {"content", promptOf(chat)}}}}};
    if (chat.temperature) body["temperature"] = *chat.temperature;
    if (chat.mostTokens) body["max_tokens"] = *chat.mostTokens;
    if (chat.schema && hold == Hold::toSchema) {
        body["response_format"] = {
            {"type", "json_schema"},
            {"json_schema",
             {{"name", chat.schema->name}, {"strict", true}, {"schema", formOf(*chat.schema)}}}};
    }
    return body.dump(-1, ' ', false, OrderedJson::error_handler_t::replace);
}

Kind kindOf(int status) {
    switch (status) {
        case 400:
        case 422:
            return Kind::badRequest;
        case 401:
        case 403:
            return Kind::refused;
        case 503:
            return Kind::loading;
        default:
            return Kind::invalid;
    }
}

Kind kindOf(HttpError::Kind kind) {
    switch (kind) {
        case HttpError::Kind::timedOut:
            return Kind::late;
        case HttpError::Kind::badRequest:
        case HttpError::Kind::unreachable:
        case HttpError::Kind::untrusted:
            return Kind::unreachable;
        default:
            return Kind::invalid;
    }
}

/// Nothing where the answer holds no vector.
std::optional<std::vector<float>> vectorIn(const std::string& body) {
    try {
        const auto answer = Json::parse(body);
        const auto& vector = answer.at("data").at(0).at("embedding").get_ref<const Json::array_t&>();
        if (vector.empty() || vector.size() > largestDimension) return std::nullopt;
        std::vector<float> numbers;
        for (const auto& number : vector) numbers.push_back(number.get<float>());
        if (!std::ranges::all_of(numbers, [](float number) { return std::isfinite(number); }))
            return std::nullopt;
        return numbers;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

}  // namespace

std::string ModelServerError::localizedDescription() const {
    if (status_) return formatText(tr("El servidor del modelo local no ha respondido (%d)."), {*status_});
    switch (kind_) {
        case Kind::unreachable:
            return tr("No se puede llegar al modelo local.");
        case Kind::late:
            return tr("El modelo local no ha respondido a tiempo.");
        default:
            return tr("El modelo local no ha respondido lo que se le pidió.");
    }
}

Task<std::string> ModelClient::call(HttpRequest request, std::size_t largestAnswer) {
    request.largestBody = largestAnswer;
    std::optional<HttpResponse> answer;
    try {
        answer = co_await http_.send(std::move(request));
    } catch (const HttpError& error) {
        throw ModelServerError(kindOf(error.kind()));
    }
    if (answer->status != 200) throw ModelServerError(kindOf(answer->status), answer->status);
    co_return std::move(answer->body);
}

Task<std::vector<std::string>> ModelClient::models(ModelEndpoint at, double timeout) {
    const auto body = co_await call(
        {.url = addressOf(at, "/v1/models"), .headers = headersFor(at), .timeout = timeout}, largestList);
    const auto list = Json::parse(body, nullptr, false);
    if (!list.is_object() || !list.contains("data")) throw ModelServerError(Kind::invalid);
    std::vector<std::string> names;
    // Without a model some servers have no list.
    if (list["data"].is_null()) co_return names;
    if (!list["data"].is_array()) throw ModelServerError(Kind::invalid);
    for (const auto& model : list["data"]) {
        const Json id = model.is_object() ? model.value("id", Json()) : Json();
        if (id.is_string()) names.push_back(id.get<std::string>());
    }
    co_return names;
}

Task<std::string> ModelClient::chat(ModelEndpoint at, Chat chat, double timeout) {
    const auto request = [&](Hold hold) {
        return HttpRequest{.method = HttpRequest::Method::post,
                           .url = addressOf(at, "/v1/chat/completions"),
                           .headers = headersFor(at),
                           .body = bodyOf(chat, hold),
                           .timeout = timeout};
    };
    const bool mayHold = chat.schema && takesNoSchema_ != at.url;
    std::optional<std::string> answer;
    try {
        answer = co_await call(request(mayHold ? Hold::toSchema : Hold::toNothing), largestText);
    } catch (const ModelServerError& error) {
        if (!mayHold || error.kind() != Kind::badRequest) throw;
    }
    if (!answer) {
        answer = co_await call(request(Hold::toNothing), largestText);
        takesNoSchema_ = at.url;
    }
    auto text = chatText(*answer);
    if (!text || (text->isCut && chat.cut == CutText::fails)) throw ModelServerError(Kind::invalid);
    co_return std::move(text->text);
}

Task<std::vector<float>> ModelClient::embedding(ModelEndpoint at, std::string model, std::string text,
                                                double timeout) {
    const OrderedJson body{{"model", std::move(model)}, {"input", std::move(text)}};
    HttpRequest request{.method = HttpRequest::Method::post,
                        .url = addressOf(at, "/v1/embeddings"),
                        .headers = headersFor(at),
                        .body = body.dump(-1, ' ', false, OrderedJson::error_handler_t::replace),
                        .timeout = timeout};
    auto vector = vectorIn(co_await call(std::move(request), largestVector));
    if (!vector) throw ModelServerError(Kind::invalid);
    co_return *std::move(vector);
}

}  // namespace dorix
