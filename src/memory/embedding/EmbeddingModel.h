#pragma once

#include "base/Observable.h"
#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "download/FolderInstall.h"
#include "platform/HttpClient.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// A static embedding model that can be installed.
struct EmbeddingCatalogueEntry {
    std::string name;
    std::string licence;
    RemoteFiles files;
};

/// The one that is offered. Any thread.
const EmbeddingCatalogueEntry& catalogueEmbedding();

/// The model by which the memory finds texts of like meaning, as it is installed on this computer and taken
/// away again. Main executor, which nothing here blocks for longer than a look at the folder takes.
class EmbeddingModel {
 public:
    struct State {
        bool isInstalled = false;
        bool isRemoving = false;
        std::optional<double> progress;  // 0 to 1 while it is on its way
        std::string failure;             // of the last attempt, for the user

        bool operator==(const State&) const = default;
    };
    /// All outlive it.
    struct Tools {
        Executor& main;
        HttpClient& http;
        FolderPublisher& folders;
    };

    /// The model goes to "embedding" below `home`. `mirrors` outlives this.
    EmbeddingModel(const Tools& tools, const EmbeddingCatalogueEntry& entry,
                   const std::filesystem::path& home, const Observable<Mirrors>& mirrors,
                   FileFetch::Patience patience = {});
    EmbeddingModel(const EmbeddingModel&) = delete;
    EmbeddingModel& operator=(const EmbeddingModel&) = delete;

    /// The files are about to go or to change, or have just done so; whoever uses them lets go of them.
    std::function<void()> onLetGo = [] {};

    const Observable<State>& state() const { return state_; }
    const EmbeddingCatalogueEntry& entry() const { return entry_; }
    /// Where the model is, or would be.
    const std::filesystem::path& folder() const { return places_.folder; }
    /// What it takes up, and what of it is still to be fetched, in bytes. Looks at the disk.
    std::uint64_t bytes() const { return made().bytes(); }
    std::uint64_t bytesToFetch() const { return made().missing(); }

    /// Does nothing while it is installed or removed. What had come of an earlier attempt is gone on with.
    void install();
    void cancel();
    /// Takes it off this computer, with what had come of it.
    void remove();

 private:
    FolderInstall made() const { return {entry_.files, places_}; }
    bool isBusy() const { return state_.get().progress || state_.get().isRemoving; }
    Task<void> run(Task<void> work, std::string_view verb);
    Task<void> fetch();
    Task<void> takeAway();
    Task<void> change(std::function<void()> files);

    const Tools tools_;
    const EmbeddingCatalogueEntry& entry_;
    const FolderInstall::Places places_;
    const Observable<Mirrors>& mirrors_;
    Observable<State> state_;
    SerialExecutor disk_{SerialExecutor::AtEnd::drop};
    FileFetch fetch_;
    std::optional<TaskHandle<void>> running_;
    TaskScope tasks_;
};

}  // namespace dorix
