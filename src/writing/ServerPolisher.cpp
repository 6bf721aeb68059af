#include "writing/ServerPolisher.h"

#include "base/text/Base64.h"
#include "base/text/Text.h"
#include "base/writing/Faithfulness.h"
#include "cloud/DorixAPI.h"

#include <algorithm>
#include <cstddef>

namespace dorix {

namespace {

constexpr double timeout = 20;  // seconds

// Characters.
constexpr std::size_t longestTitle = 500;
constexpr std::size_t longestNotes = 600;
constexpr std::size_t longestExample = 800;
constexpr std::size_t mostExamples = 3;

// With a picture the service may well take words from there: a name, what is replied to.
constexpr double leastFaithful = 0.3;
constexpr double leastFaithfulWithPicture = 0.2;

struct Response {
    std::string accion;
    std::string titulo;
    std::string texto;

    static Response decode(const Json& json, const Decoder&) {
        return {json.at("accion").get<std::string>(), json.at("titulo").get<std::string>(),
                json.at("texto").get<std::string>()};
    }
};

Json styleOf(const PolishRequest& request) {
    Json examples = Json::array();
    for (const auto& example : request.styleExamples) {
        if (examples.size() == mostExamples) break;
        examples.push_back(text::prefix(example, longestExample));
    }
    return {{"notes", text::prefix(request.styleNotes, longestNotes)}, {"examples", std::move(examples)}};
}

Json bodyOf(const PolishRequest& request, ServerPolisher::AllowAsk allowAsk) {
    Json body{{"transcript", request.transcript},
              {"appName", request.appName},
              {"tone", toneName(request.tone)},
              {"allowAsk", allowAsk == ServerPolisher::AllowAsk::yes}};
    if (request.windowTitle) body["windowTitle"] = text::prefix(*request.windowTitle, longestTitle);
    if (!request.signatureName.empty()) body["signatureName"] = request.signatureName;
    if (request.screenshot) body["screenshot"] = text::base64(*request.screenshot);
    if (request.editableFocus) body["editableFocus"] = *request.editableFocus;
    if (!request.styleNotes.empty() || !request.styleExamples.empty()) body["style"] = styleOf(request);
    return body;
}

bool isFaithful(std::string_view text, const PolishRequest& request) {
    const double least = request.screenshot ? leastFaithfulWithPicture : leastFaithful;
    return !text.empty() && faithfulnessScore(text, request.transcript) >= least;
}

}  // namespace

Task<PolishResult> ServerPolisher::polish(PolishRequest request) {
    auto result = co_await write(std::move(request), AllowAsk::no);
    if (!result) throw APIError::server("Respuesta no válida.");
    co_return *std::move(result);
}

Task<std::optional<PolishResult>> ServerPolisher::write(PolishRequest request, AllowAsk allowAsk) {
    const auto response = co_await api_.post<Response>("v1/ai/write", bodyOf(request, allowAsk),
                                                       DorixAPI::Session::required, timeout);
    if (allowAsk == AllowAsk::yes && response.accion == "preguntar") co_return std::nullopt;
    std::string written = typeable(response.texto);
    if (!isFaithful(written, request)) throw APIError::server("La redacción se alejó de lo dictado.");
    auto title = withoutControls(response.titulo);
    if (title.empty()) title = titleFrom(written);
    co_return PolishResult{.title = std::move(title), .text = std::move(written), .engine = name_};
}

}  // namespace dorix
