#include "memory/embedding/EmbeddingModel.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/Completion.h"
#include "localdata/Language.h"

#include <exception>
#include <memory>
#include <utility>

namespace dorix {

const EmbeddingCatalogueEntry& catalogueEmbedding() {
    static const EmbeddingCatalogueEntry entry = [] {
        const std::string base =
            "https://huggingface.co/minishlab/potion-multilingual-128M/resolve/"
            "73908c3438cf03b6a01bcb9611d62b23d0726f08/";
        return EmbeddingCatalogueEntry{
            .name = "potion-multilingual-128M",
            .licence = "MIT",
            .files = {{"config.json",
                       {.url = base + "config.json",
                        .bytes = 271,
                        .sha256 = "595e4cab2093732efd5dbe084fd5c1826b5eea693b73b4c1fd971672867d2e54"}},
                      {"model.safetensors",
                       {.url = base + "model.safetensors",
                        .bytes = 512361560,
                        .sha256 = "14b5eb39cb4ce5666da8ad1f3dc6be4346e9b2d601c073302fa0a31bf7943397"}},
                      {"tokenizer.json",
                       {.url = base + "tokenizer.json",
                        .bytes = 18616131,
                        .sha256 = "19f1909063da3cfe3bd83a782381f040dccea475f4816de11116444a73e1b6a1"}}}};
    }();
    return entry;
}

EmbeddingModel::EmbeddingModel(const Tools& tools, const EmbeddingCatalogueEntry& entry,
                               const std::filesystem::path& home, const Observable<Mirrors>& mirrors,
                               FileFetch::Patience patience)
    : tools_(tools),
      entry_(entry),
      places_{.parts = home / "embedding" / ".downloads" / entry.name,
              .folder = home / "embedding" / entry.name},
      mirrors_(mirrors),
      state_({.isInstalled = made().looksInstalled()}),
      fetch_(disk_, tools.http, patience),
      tasks_(tools.main) {}

void EmbeddingModel::install() {
    if (isBusy()) return;
    state_.set({.isInstalled = state_.get().isInstalled, .progress = 0.0});
    running_ = tasks_.spawn(run(fetch(), "installed"));
}

void EmbeddingModel::cancel() {
    if (running_ && state_.get().progress) running_->cancel();
}

void EmbeddingModel::remove() {
    if (isBusy()) return;
    state_.set({.isInstalled = state_.get().isInstalled, .isRemoving = true});
    running_ = tasks_.spawn(run(takeAway(), "removed"));
}

Task<void> EmbeddingModel::run(Task<void> work, std::string_view verb) {
    State end;
    try {
        co_await std::move(work);
    } catch (const Cancelled&) {
        // The user's own doing.
    } catch (const Error& error) {
        end.failure = error.localizedDescription();
        logLine("the embedding model could not be " + std::string(verb) + ": " +
                describedIn(LogLanguage::english, error));
    }
    end.isInstalled = made().looksInstalled();
    state_.set(std::move(end));
}

Task<void> EmbeddingModel::fetch() {
    const auto install = std::make_shared<FolderInstall>(entry_.files, places_);
    const bool isThere = co_await runOn(disk_, [this, install] {
        if (install->isInstalled()) return true;
        install->begin(tools_.folders);
        return false;
    });
    if (isThere) co_return;
    DownloadProgress progress;
    const auto told = progress.observers.add([this](double fraction) {
        state_.set({.isInstalled = state_.get().isInstalled, .progress = fraction});
    });
    progress.begin(install->bytes());
    co_await install->fetch(fetch_, mirrors_.get(), progress);
    // There may be an earlier one.
    co_await change([this, install] { install->finish(tools_.folders); });
}

Task<void> EmbeddingModel::takeAway() {
    co_await change([this] {
        removeFolder(places_.folder);
        removeAll(places_.parts);
    });
}

/// A search may find the old files once more while they change.
Task<void> EmbeddingModel::change(std::function<void()> files) {
    onLetGo();
    std::exception_ptr failure;
    try {
        co_await runOn(disk_, std::move(files));
    } catch (const Error&) {
        failure = std::current_exception();
    }
    onLetGo();
    if (failure) std::rethrow_exception(failure);
}

}  // namespace dorix
