#include "speech/models/ModelInstalls.h"

#include "base/Error.h"
#include "base/Log.h"
#include "localdata/Language.h"

#include <algorithm>
#include <utility>

namespace dorix {

ModelInstalls::ModelInstalls(Executor& executor, SpeechModels& models, ModelInstaller& installer)
    : models_(models), installer_(installer), tasks_(executor) {}

ModelInstalls::State ModelInstalls::of(const std::string& id) const {
    const auto found = states_.find(id);
    return found == states_.end() ? State() : found->second;
}

std::string ModelInstalls::underWay() const {
    const auto found =
        std::ranges::find_if(states_, [](const auto& entry) { return entry.second.progress.has_value(); });
    return found == states_.end() ? "" : found->first;
}

bool ModelInstalls::isBusy(const std::string& id) const {
    const auto state = of(id);
    return state.progress || state.isRemoving;
}

void ModelInstalls::set(const std::string& id, State state) {
    if (of(id) == state) return;
    states_[id] = std::move(state);
    changes_.notify(id);
}

void ModelInstalls::install(const std::string& id) {
    if (!isBusy(id)) tasks_.spawn(runInstall(id));
}

void ModelInstalls::remove(const std::string& id) {
    if (!isBusy(id)) tasks_.spawn(runRemove(id));
}

Task<void> ModelInstalls::runInstall(std::string id) {
    set(id, {.progress = 0.0});
    const auto folder = models_.folder() / id;
    State end;
    try {
        co_await installer_.install(id, ModelInstaller::Licence::accepted,
                                    [this, id](double fraction) { set(id, {.progress = fraction}); });
        models_.trust(folder);
        onModelsChanged();
    } catch (const Cancelled&) {
        // The user's own doing.
    } catch (const Error& error) {
        end.failure = error.localizedDescription();
        logLine("the speech model " + id +
                " could not be installed: " + describedIn(LogLanguage::english, error));
    }
    set(id, std::move(end));
}

Task<void> ModelInstalls::runRemove(std::string id) {
    set(id, {.isRemoving = true});
    State end;
    try {
        co_await installer_.remove(id);
        models_.trust(models_.folder() / id);
        onModelsChanged();
    } catch (const Error& error) {
        end.failure = error.localizedDescription();
        logLine("the speech model " + id +
                " could not be removed: " + describedIn(LogLanguage::english, error));
    }
    set(id, std::move(end));
}

}  // namespace dorix
