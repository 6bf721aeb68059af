#include "speech/models/SpeechModels.h"

#include "base/Log.h"
#include "base/text/Text.h"

#include <algorithm>
#include <system_error>
#include <tuple>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

/// What was made for one language comes before what knows many.
auto rank(const SpeechModel& model) { return std::tuple(model.kind, model.languages.size(), model.id); }

/// What begins with a dot is not meant to be looked at.
bool isShown(const fs::path& folder) { return !folder.filename().string().starts_with('.'); }

}  // namespace

std::string languageCode(std::string_view languageId) {
    return text::lowercase(languageId.substr(0, languageId.find_first_of("-_")));
}

SpeechModels::SpeechModels(fs::path folder, fs::path packaged, const Observable<SpeechModelChoices>& choices)
    : folder_(std::move(folder)), packaged_(std::move(packaged)), choices_(choices) {}

std::vector<SpeechModel> SpeechModels::installed() const {
    std::vector<SpeechModel> models;
    std::error_code error;
    for (fs::directory_iterator at(folder_, error); !error && at != fs::directory_iterator();
         at.increment(error)) {
        std::error_code ignored;
        if (!isShown(at->path()) || !at->is_directory(ignored)) continue;
        auto model = readSpeechModel(at->path());
        if (model) {
            models.push_back(*std::move(model));
        } else {
            tell(at->path(), model.error());
        }
    }
    std::ranges::sort(models, {}, rank);
    if (auto model = packagedEnglishModel(packaged_)) models.push_back(*std::move(model));
    return models;
}

void SpeechModels::tell(const fs::path& folder, const std::string& complaint) const {
    if (std::exchange(told_[folder], complaint) == complaint) return;
    logLine("the speech model in " + folder.string() + " is not used: " + complaint);
}

std::optional<SpeechModel> SpeechModels::choose(std::string_view languageId) const {
    const auto models = installed();
    const auto serves = [&](const SpeechModel& model) {
        return model.serves(languageId) && isUsable(model) && !isSetAside(model.folder);
    };
    const auto choice = choices_.get().find(languageCode(languageId));
    const auto isChosen = [&](const SpeechModel& model) {
        return choice != choices_.get().end() && model.id == choice->second && serves(model);
    };
    auto found = std::ranges::find_if(models, isChosen);
    if (found == models.end()) found = std::ranges::find_if(models, serves);
    return found == models.end() ? std::nullopt : std::optional(*found);
}

std::optional<SpeechModel> SpeechModels::find(std::string_view id) const {
    const auto models = installed();
    const auto found = std::ranges::find(models, id, &SpeechModel::id);
    return found == models.end() ? std::nullopt : std::optional(*found);
}

}  // namespace dorix
