#include "speech/models/ModelInstaller.h"

#include "base/Json.h"
#include "base/Log.h"
#include "base/Sha256.h"
#include "base/async/Completion.h"
#include "base/async/TaskScope.h"
#include "download/FolderInstall.h"
#include "download/InstallError.h"
#include "localdata/Language.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

constexpr auto archiveName = "archive";
constexpr auto unpackedName = "unpacked";
constexpr auto engineRecord = "engine.json";

using Case = InstallError::Case;

[[noreturn]] void failed(const std::error_code& error) { throw InstallError::of(error); }

/// The engine's own record, made of what has been unpacked.
std::string engineText(const CatalogueEngine& engine, const fs::path& folder) {
    Json record{{"version", engine.version}};
    for (const auto& file : engine.files) {
        const auto sum = sha256OfFile(folder / file);
        if (!isPlainFile(folder / file) || !sum) throw InstallError(Case::notUnpacked, file);
        record["sha256"][file] = *sum;
    }
    return record.dump(2) + "\n";
}

/// What that record says of the files; empty where it cannot be read.
std::map<std::string, std::string> recordedSums(const fs::path& folder) {
    try {
        std::ifstream stream(folder / engineRecord);
        return Json::parse(stream).at("sha256").get<std::map<std::string, std::string>>();
    } catch (const Json::exception&) {
        return {};
    }
}

}  // namespace

/// One install, for as long as somebody waits for it.
struct ModelInstaller::Run {
    explicit Run(Executor& main) : scope(main) {}

    DownloadProgress progress;
    std::optional<TaskHandle<void>> result;
    TaskScope scope;
};

/// What is known when an install begins.
struct ModelInstaller::Start {
    explicit Start(FolderInstall install) : folder(std::move(install)) {}

    FolderInstall folder;
    bool isInstalled = false;
    bool hasEngine = false;
};

ModelInstaller::ModelInstaller(const Tools& tools, const ModelCatalogue& catalogue, fs::path home,
                               const Observable<Mirrors>& mirrors, std::uint64_t memory,
                               FileFetch::Patience patience)
    : tools_(tools),
      catalogue_(catalogue),
      models_(home / "models"),
      engines_(home / "engines"),
      mirrors_(mirrors),
      memory_(memory),
      fetch_(disk_, tools.http, patience) {}

ModelInstaller::~ModelInstaller() = default;

bool ModelInstaller::hasEngine(const CatalogueEngine& engine) const {
    return std::ranges::all_of(engine.files,
                               [&](const auto& file) { return isPlainFile(engines_ / engine.id() / file); });
}

/// With the files that were unpacked then; one that somebody put there by hand has no record of them. Reads
/// them all.
bool ModelInstaller::hasIntactEngine(const CatalogueEngine& engine) const {
    const auto folder = engines_ / engine.id();
    if (!hasEngine(engine) || !isPlainFile(folder / engineRecord)) return hasEngine(engine);
    const auto recorded = recordedSums(folder);
    return std::ranges::all_of(engine.files, [&](const auto& file) {
        const auto sum = sha256OfFile(folder / file);
        const auto known = recorded.find(file);
        return sum && known != recorded.end() && known->second == *sum;
    });
}

FolderInstall ModelInstaller::installOf(const CatalogueModel& model) const {
    return {model.files, {.parts = partsOf(model.model.id), .folder = models_ / model.model.id}};
}

/// As the catalogue has it, to the last byte. Reads all files.
bool ModelInstaller::isInstalled(const CatalogueModel& model, const FolderInstall& install) const {
    auto there = readSpeechModel(models_ / model.model.id);
    if (!there) return false;
    there->folder.clear();
    return *there == model.model && install.isInstalled();
}

ModelNeeds ModelInstaller::needs(const CatalogueModel& model) const {
    ModelNeeds needs{.download = installOf(model).missing(), .memory = model.memory};
    const auto* engine = catalogue_.engineOf(model);
    const bool lacksEngine = engine != nullptr && !hasEngine(*engine);
    if (lacksEngine) {
        needs.download +=
            engine->archive.bytes - std::min(engine->archive.bytes, sizeOf(partsOf(*engine) / archiveName));
    }
    needs.disk = needs.download + (lacksEngine ? engine->unpacked : 0);
    return needs;
}

ModelOffer ModelInstaller::offer(const CatalogueModel& model) const {
    const auto needed = needs(model);
    return {.id = model.model.id,
            .line = tr(model.line),
            .licence = model.licence,
            .isLicenceClear = model.isLicenceClear,
            .needs = needed,
            .hasSpace = needed.disk + spareSpace <= freeSpaceAt(models_),
            // The other half is what everything else runs in.
            .hasMemory = memory_ == 0 || needed.memory <= memory_ / 2};
}

std::optional<ModelSuggestion> ModelInstaller::suggestionFor(std::string_view languageId) const {
    std::vector<ModelOffer> offers;
    for (const auto* model : catalogue_.forLanguage(languageId)) offers.push_back(offer(*model));
    if (offers.empty()) return std::nullopt;
    auto best = std::ranges::find_if(offers, [](const auto& one) { return one.hasSpace && one.hasMemory; });
    if (best == offers.end()) best = offers.begin();
    ModelSuggestion suggestion{.best = std::move(*best)};
    offers.erase(best);
    suggestion.others = std::move(offers);
    return suggestion;
}

Task<void> ModelInstaller::install(std::string id, Licence licence, Progress progress) {
    const auto* model = catalogue_.find(id);
    if (model == nullptr) throw InstallError(Case::unknownModel);
    if (!model->isLicenceClear && licence != Licence::accepted) throw InstallError(Case::licenceNotAccepted);
    const auto run = join(*model);
    const auto told = progress ? run->progress.observers.add(std::move(progress)) : Subscription();
    co_await *run->result;
}

std::shared_ptr<ModelInstaller::Run> ModelInstaller::join(const CatalogueModel& model) {
    auto& known = runs_[model.model.id];
    if (auto run = known.lock(); run && !run->result->isDone()) return run;
    auto run = std::make_shared<Run>(tools_.main);
    known = run;
    run->result = run->scope.spawn(work(&model, run.get()));
    return run;
}

void ModelInstaller::cancel(const std::string& id) {
    const auto run = runs_[id].lock();
    if (run) run->result->cancel();
}

Task<void> ModelInstaller::work(const CatalogueModel* model, Run* run) {
    const auto started = co_await start(*model);
    if (started->isInstalled) co_return;
    const auto* engine = started->hasEngine ? nullptr : catalogue_.engineOf(*model);
    run->progress.begin(started->folder.bytes() + (engine != nullptr ? engine->archive.bytes : 0));
    if (engine != nullptr) co_await installEngine(engine, run);
    co_await started->folder.fetch(fetch_, mirrors_.get(), run->progress);
    if (onLetGo) onLetGo(model->model.id);  // there may be an earlier one
    co_await runOn(disk_, [this, model, started] {
        started->folder.finish(tools_.folders, recordName, speechModelText(model->model));
    });
    run->progress.end();
}

/// Everything that can be known before the first byte comes.
Task<std::shared_ptr<ModelInstaller::Start>> ModelInstaller::start(const CatalogueModel& model) {
    return runOn(disk_, [this, entry = &model] {
        auto started = std::make_shared<Start>(installOf(*entry));
        const auto* engine = catalogue_.engineOf(*entry);
        started->hasEngine = engine == nullptr || hasIntactEngine(*engine);
        started->isInstalled = started->hasEngine && isInstalled(*entry, started->folder);
        // What a process left that was killed when all was in its place.
        if (started->hasEngine && engine != nullptr) removeAll(partsOf(*engine));
        if (started->isInstalled) {
            removeAll(partsOf(entry->model.id));
        } else {
            started->folder.begin(tools_.folders, needs(*entry).disk - started->folder.missing());
        }
        return started;
    });
}

Task<void> ModelInstaller::installEngine(const CatalogueEngine* engine, Run* run) {
    const auto turn = co_await engineTurns_.next();
    const auto parts = partsOf(*engine);
    const auto hold = co_await runOn(disk_, [this, parts] {
        makeFolder(parts);
        return std::shared_ptr(tools_.folders.hold(parts));
    });
    if (!hold) throw InstallError(Case::underWayElsewhere);
    const bool isThere = co_await runOn(disk_, [this, engine] { return hasIntactEngine(*engine); });
    if (!isThere) {
        co_await fetchMirrored(fetch_, engine->archive, parts / archiveName, mirrors_.get(), run->progress);
        co_await unpackEngine(engine, parts);
    }
    co_await runOn(disk_, [parts, hold] { removeAll(parts); });
}

Task<void> ModelInstaller::unpackEngine(const CatalogueEngine* engine, fs::path parts) {
    const auto unpacked = parts / unpackedName;
    co_await runOn(disk_, [unpacked] {
        removeAll(unpacked);
        makeFolder(unpacked);
    });
    try {
        co_await tools_.unpacker.unpack({.archive = parts / archiveName,
                                         .folder = unpacked,
                                         .files = engine->files,
                                         .largest = engine->unpacked});
    } catch (const Error& error) {
        throw InstallError(Case::notUnpacked, error.localizedDescription());
    }
    co_await runOn(disk_, [this, engine, unpacked] {
        writeWhole(unpacked / engineRecord, engineText(*engine, unpacked));
        makeFolder(engines_);
        if (const auto error = tools_.folders.publish(unpacked, engines_ / engine->id())) failed(error);
    });
}

Task<void> ModelInstaller::remove(std::string id) {
    if (!isModelId(id)) throw InstallError(Case::notOurs);
    cancel(id);
    if (onLetGo) onLetGo(id);
    co_await runOn(disk_, [this, id] {
        removeFolder(models_ / id);
        removeAll(partsOf(id));
    });
}

}  // namespace dorix
