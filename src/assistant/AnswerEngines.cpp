#include "assistant/AnswerEngines.h"

#include "assistant/AnswerText.h"
#include "assistant/AskBody.h"
#include "assistant/DevicePrompt.h"
#include "base/text/CodeFence.h"
#include "base/text/Text.h"
#include "cloud/DorixAPI.h"
#include "localdata/FarEngine.h"
#include "localdata/Language.h"
#include "platform/LanguageModel.h"
#include "writing/TextPolisher.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace dorix {

namespace {

constexpr const char* fromService = "nube";
constexpr const char* fromHere = "en este Mac";

constexpr double rewriteTimeout = 60;  // seconds
constexpr std::size_t longestSelection = 60'000;

struct Out {
    std::string texto;

    static Out decode(const Json& json, const Decoder&) { return {json.at("texto").get<std::string>()}; }
};

std::string insertable(std::string_view rewritten, std::string_view selected) {
    return inPlaceOf(withoutControls(selected), withoutControls(rewritten));
}

}  // namespace

std::string AssistantError::localizedDescription() const {
    return tr("Para preguntar hace falta conexión o Apple Intelligence activado.");
}

std::string SelectionTooLong::localizedDescription() const {
    return tr("La selección es demasiado larga para reescribirla entera.");
}

Task<AnswerEngines::Answer> AnswerEngines::answer(std::shared_ptr<const Assistant::Request> request,
                                                  OnText onText) {
    if (parts_.writer.cloudEnabled()) {
        auto text = co_await parts_.api.stream("v1/ai/ask", askBody(*request), std::move(onText));
        co_return Answer{.text = std::move(text), .engine = fromService};
    }
    auto engine = nameOfModel();
    auto text = co_await answerHere(std::move(request));
    onText(text);
    co_return Answer{.text = std::move(text), .engine = std::move(engine)};
}

bool AnswerEngines::hasModel() const {
    return parts_.model.availability() == SystemLanguageModel::Availability::available;
}

std::string AnswerEngines::nameOfModel() const {
    const auto host = parts_.model.farHost();
    return host ? farEngine(*host) : fromHere;
}

Task<std::string> AnswerEngines::answerHere(std::shared_ptr<const Assistant::Request> request) {
    if (!hasModel()) throw AssistantError();
    std::optional<std::string> screenText;
    if (request->shot) {
        screenText.emplace();
        if (parts_.screen != nullptr) screenText = co_await parts_.screen->text(*request->shot);
    }
    const auto session = parts_.model.makeSession(answerInstructions(*request));
    co_return co_await session->respond(answerPrompt(*request, screenText), CutText::isTaken);
}

Task<Assistant::Rewrite> AnswerEngines::transform(std::string instruction, std::string selected) {
    if (parts_.writer.cloudEnabled()) {
        const auto text = co_await rewrittenByService(std::move(instruction), selected);
        co_return Assistant::Rewrite{.text = insertable(text, selected), .engine = fromService};
    }
    if (!hasModel()) throw AssistantError();
    if (!hasRoomToRewrite(instruction, selected)) throw SelectionTooLong();
    auto engine = nameOfModel();
    const auto session = parts_.model.makeSession(std::string(rewriteSelectionInstructions()));
    const auto text =
        co_await session->respond(rewriteSelectionPrompt(instruction, selected), CutText::fails);
    co_return Assistant::Rewrite{.text = insertable(text::withoutFence(text, selected), selected),
                                 .engine = std::move(engine)};
}

Task<std::string> AnswerEngines::rewrittenByService(std::string instruction, std::string selected) {
    if (text::length(selected) > longestSelection) throw SelectionTooLong();
    const Json body{{"instruction", instruction}, {"selection", selected}};
    auto out =
        co_await parts_.api.post<Out>("v1/ai/transform", body, DorixAPI::Session::required, rewriteTimeout);
    co_return std::move(out.texto);
}

}  // namespace dorix
