#pragma once

#include "base/Observable.h"
#include "base/async/Executor.h"
#include "base/async/SerialExecutor.h"
#include "base/async/Task.h"
#include "base/async/Turns.h"
#include "download/FileFetch.h"
#include "download/FolderInstall.h"
#include "platform/ArchiveUnpacker.h"
#include "platform/FolderPublisher.h"
#include "platform/HttpClient.h"
#include "speech/models/ModelCatalogue.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What installing a model asks of the computer, in bytes.
struct ModelNeeds {
    std::uint64_t download = 0;  // still to come
    std::uint64_t disk = 0;      // at most, while it is installed
    std::uint64_t memory = 0;    // while it runs, estimated

    bool operator==(const ModelNeeds&) const = default;
};

/// A model that could be installed for a language.
struct ModelOffer {
    std::string id;
    std::string line;  // what tells it from the others, in the app's language
    std::string licence;
    bool isLicenceClear = false;
    ModelNeeds needs;
    bool hasSpace = true;   // on the disk
    bool hasMemory = true;  // in the computer
};

/// What a language could be recognised with.
struct ModelSuggestion {
    ModelOffer best;  // for this computer
    std::vector<ModelOffer> others;
};

/// Puts models of the catalogue, and the engines that they run on, into folders of this computer, and takes
/// them away again. A folder appears there whole or not at all; what has come of an install that was cut
/// short waits in a folder ".downloads" beside them for the next one. Main executor, which nothing here
/// blocks. Whoever waits in a task lets go of it before the installer goes.
class ModelInstaller {
 public:
    /// All outlive the installer.
    struct Tools {
        Executor& main;
        HttpClient& http;
        ArchiveUnpacker& unpacker;
        FolderPublisher& folders;
    };
    /// Models go to "models" below `home`, engines to "engines". `memory` is what the computer has, in bytes;
    /// 0 where that is not known.
    ModelInstaller(const Tools& tools, const ModelCatalogue& catalogue, std::filesystem::path home,
                   const Observable<Mirrors>& mirrors, std::uint64_t memory,
                   FileFetch::Patience patience = {});
    ~ModelInstaller();
    ModelInstaller(const ModelInstaller&) = delete;
    ModelInstaller& operator=(const ModelInstaller&) = delete;

    /// The files of a model are about to go or to change; whoever uses them lets go of them.
    std::function<void(const std::string& id)> onLetGo;

    ModelNeeds needs(const CatalogueModel& model) const;

    /// What to install for a language ("es-MX"); none where the catalogue has nothing. Reads the disk, some
    /// milliseconds.
    std::optional<ModelSuggestion> suggestionFor(std::string_view languageId) const;

    enum class Licence { notAsked, accepted };
    /// 0 to 1.
    using Progress = std::function<void(double fraction)>;

    /// Installs a model with what it needs; one that is there already, in order, is left as it is. Several
    /// who want the same one wait for the same work, which ends when the last of them is cancelled. Throws
    /// InstallError, and then leaves nothing but what the next time goes on with.
    Task<void> install(std::string id, Licence licence, Progress progress);

    /// All who wait for it get Cancelled.
    void cancel(const std::string& id);

    /// Takes a model away, with what had come of it, also one that was put there by hand. Throws
    /// InstallError. One that is not there is gone.
    Task<void> remove(std::string id);

 private:
    struct Run;
    struct Start;

    std::shared_ptr<Run> join(const CatalogueModel& model);
    Task<void> work(const CatalogueModel* model, Run* run);
    Task<std::shared_ptr<Start>> start(const CatalogueModel& model);
    Task<void> installEngine(const CatalogueEngine* engine, Run* run);
    Task<void> unpackEngine(const CatalogueEngine* engine, std::filesystem::path parts);

    bool hasEngine(const CatalogueEngine& engine) const;
    bool hasIntactEngine(const CatalogueEngine& engine) const;
    FolderInstall installOf(const CatalogueModel& model) const;
    bool isInstalled(const CatalogueModel& model, const FolderInstall& install) const;
    ModelOffer offer(const CatalogueModel& model) const;
    std::filesystem::path partsOf(const std::string& id) const { return models_ / ".downloads" / id; }
    std::filesystem::path partsOf(const CatalogueEngine& engine) const {
        return engines_ / ".downloads" / engine.id();
    }

    const Tools tools_;
    const ModelCatalogue& catalogue_;
    const std::filesystem::path models_;
    const std::filesystem::path engines_;
    const Observable<Mirrors>& mirrors_;
    const std::uint64_t memory_;
    std::map<std::string, std::weak_ptr<Run>> runs_;
    Turns engineTurns_;
    SerialExecutor disk_{SerialExecutor::AtEnd::drop};  // its work may use all above
    FileFetch fetch_;
};

}  // namespace dorix
