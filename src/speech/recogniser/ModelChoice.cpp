#include "speech/recogniser/ModelChoice.h"

#include <array>
#include <charconv>
#include <system_error>
#include <utility>

namespace dorix {

namespace {

constexpr auto sherpaFolder = "sherpa-onnx-1.13.8";

std::string parameterText(const SpeechModel::Parameter& parameter) {
    if (const auto* text = std::get_if<std::string>(&parameter)) return *text;
    std::array<char, 32> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), std::get<double>(parameter)).ptr;
    return {digits.data(), end};
}

ModelRequest request(const SpeechModel& model, std::string language, const std::filesystem::path& engines) {
    ModelRequest request{.engine = std::string(storedName(model.engine)),
                         .kind = std::string(storedName(model.kind)),
                         .language = std::move(language),
                         .folder = model.folder,
                         .files = model.files,
                         .sha256 = model.sha256,
                         .parameters = {},
                         .engineFolder = {},
                         .server = {}};
    for (const auto& [name, parameter] : model.parameters)
        request.parameters.emplace(name, parameterText(parameter));
    if (model.engine == SpeechModel::Engine::sherpaOnnx) request.engineFolder = engines / sherpaFolder;
    return request;
}

}  // namespace

SpeechModels::Usable withEngineIn(std::filesystem::path engines) {
    return [engines = std::move(engines)](const SpeechModel& model) {
        std::error_code error;
        return model.engine != SpeechModel::Engine::sherpaOnnx ||
               std::filesystem::exists(engines / sherpaFolder, error);
    };
}

LocalRecognition::ChooseModel modelChoice(const SpeechModels& models, std::filesystem::path engines) {
    return
        [&models, engines = std::move(engines)](const std::string& language) -> std::optional<ModelRequest> {
            const auto model = models.choose(language);
            if (!model) return std::nullopt;
            return request(*model, languageCode(language), engines);
        };
}

LocalRecognition::ChooseModel serverOr(const SpeechServer& server, LocalRecognition::ChooseModel models) {
    return [&server, models = std::move(models)](const std::string& language) {
        auto asked = server.request(languageCode(language));
        if (asked && !server.isResting()) return asked;
        auto model = models(language);
        return model ? model : asked;
    };
}

}  // namespace dorix
