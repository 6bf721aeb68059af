#include "speech/models/ModelInstaller.h"

#include "base/Json.h"
#include "base/Log.h"
#include "base/Sha256.h"
#include "base/async/Completion.h"
#include "base/async/TaskScope.h"
#include "localdata/Language.h"
#include "speech/models/InstallError.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t spareSpace = 50'000'000;  // bytes that are left to everybody else
constexpr double smallestStep = 0.001;            // of the progress that is told
constexpr auto archiveName = "archive";
constexpr auto unpackedName = "unpacked";
constexpr auto engineRecord = "engine.json";

using Case = InstallError::Case;

[[noreturn]] void failed(const std::error_code& error) { throw InstallError::of(error); }

void makeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) failed(error);
}

void removeAll(const fs::path& path) {
    std::error_code error;
    fs::remove_all(path, error);
    if (error) logLine(path.string() + " could not be deleted: " + error.message());
}

void writeWhole(const fs::path& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    if (!stream) failed(std::make_error_code(std::errc::io_error));
}

bool isFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(fs::symlink_status(path, ignored));
}

std::uint64_t sizeOf(const fs::path& file) {
    std::error_code error;
    const auto size = fs::file_size(file, error);
    return error ? 0 : size;
}

/// What is not the model's: an earlier version of it may have stood there.
void keepOnly(const fs::path& folder, const std::map<std::string, RemoteFile>& files) {
    std::vector<fs::path> others;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const auto path = fs::relative(entry.path(), folder).generic_string();
        if (!entry.is_directory() && !files.contains(path)) others.push_back(entry.path());
    }
    for (const auto& other : others) removeAll(other);
}

/// The engine's own record, made of what has been unpacked.
std::string engineText(const CatalogueEngine& engine, const fs::path& folder) {
    Json record{{"version", engine.version}};
    for (const auto& file : engine.files) {
        const auto sum = sha256OfFile(folder / file);
        if (!isFile(folder / file) || !sum) throw InstallError(Case::notUnpacked, file);
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

/// A folder that goes at once for all who look, however long the deleting takes.
void removeFolder(const fs::path& folder) {
    const auto aside = folder.parent_path() / (".removed-" + folder.filename().string());
    std::error_code error;
    removeAll(aside);
    if (!fs::exists(fs::symlink_status(folder, error))) return;
    fs::rename(folder, aside, error);
    if (error) failed(error);
    removeAll(aside);
}

}  // namespace

/// One install, for as long as somebody waits for it.
struct ModelInstaller::Run {
    explicit Run(Executor& main) : scope(main) {}

    void tell(std::uint64_t heldOfFile) {
        const auto fraction =
            whole == 0 ? 1
                       : std::min(1.0, static_cast<double>(done + heldOfFile) / static_cast<double>(whole));
        if (fraction < told + smallestStep && fraction < 1) return;
        told = fraction;
        progress.notify(fraction);
    }

    Observers<double> progress;
    std::uint64_t whole = 0;  // bytes of all files
    std::uint64_t done = 0;   // of those that are complete
    double told = -1;
    std::optional<TaskHandle<void>> result;
    TaskScope scope;
};

/// What is known when an install begins.
struct ModelInstaller::Start {
    bool isInstalled = false;
    bool hasEngine = false;
    std::shared_ptr<FolderPublisher::Hold> hold;
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
                               [&](const auto& file) { return isFile(engines_ / engine.id() / file); });
}

/// With the files that were unpacked then; one that somebody put there by hand has no record of them. Reads
/// them all.
bool ModelInstaller::hasIntactEngine(const CatalogueEngine& engine) const {
    const auto folder = engines_ / engine.id();
    if (!hasEngine(engine) || !isFile(folder / engineRecord)) return hasEngine(engine);
    const auto recorded = recordedSums(folder);
    return std::ranges::all_of(engine.files, [&](const auto& file) {
        const auto sum = sha256OfFile(folder / file);
        const auto known = recorded.find(file);
        return sum && known != recorded.end() && known->second == *sum;
    });
}

/// As the catalogue has it, to the last byte. Reads all files.
bool ModelInstaller::isInstalled(const CatalogueModel& model) const {
    const auto folder = models_ / model.model.id;
    auto there = readSpeechModel(folder);
    if (!there) return false;
    there->folder.clear();
    return *there == model.model && std::ranges::all_of(model.files, [&](const auto& file) {
        const auto& [path, expected] = file;
        return sizeOf(folder / path) == expected.bytes && sha256OfFile(folder / path) == expected.sha256;
    });
}

ModelNeeds ModelInstaller::needs(const CatalogueModel& model) const {
    ModelNeeds needs{.memory = model.memory};
    for (const auto& [path, file] : model.files) {
        needs.download += file.bytes - std::min(file.bytes, sizeOf(partsOf(model.model.id) / path));
    }
    const auto* engine = catalogue_.engineOf(model);
    const bool lacksEngine = engine != nullptr && !hasEngine(*engine);
    if (lacksEngine) {
        needs.download +=
            engine->archive.bytes - std::min(engine->archive.bytes, sizeOf(partsOf(*engine) / archiveName));
    }
    needs.disk = needs.download + (lacksEngine ? engine->unpacked : 0);
    return needs;
}

/// Where the models go, or are going to.
std::uint64_t ModelInstaller::freeSpace() const {
    std::error_code error;
    auto place = models_;
    while (!fs::exists(place, error) && place.has_relative_path()) place = place.parent_path();
    const auto space = fs::space(place, error);
    return error ? 0 : space.available;
}

ModelOffer ModelInstaller::offer(const CatalogueModel& model) const {
    const auto needed = needs(model);
    return {.id = model.model.id,
            .line = tr(model.line),
            .licence = model.licence,
            .isLicenceClear = model.isLicenceClear,
            .needs = needed,
            .hasSpace = needed.disk + spareSpace <= freeSpace(),
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
    const auto told = progress ? run->progress.add(std::move(progress)) : Subscription();
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
    run->whole = model->bytes() + (engine != nullptr ? engine->archive.bytes : 0);
    run->tell(0);
    if (engine != nullptr) co_await installEngine(engine, run);
    co_await fetchFiles(model, run);
    if (onLetGo) onLetGo(model->model.id);  // there may be an earlier one
    co_await finish(*model, started);
    run->done = run->whole;
    run->tell(0);
}

/// Everything that can be known before the first byte comes.
Task<std::shared_ptr<ModelInstaller::Start>> ModelInstaller::start(const CatalogueModel& model) {
    return runOn(disk_, [this, entry = &model] {
        auto started = std::make_shared<Start>();
        const auto* engine = catalogue_.engineOf(*entry);
        started->hasEngine = engine == nullptr || hasIntactEngine(*engine);
        started->isInstalled = started->hasEngine && isInstalled(*entry);
        // What a process left that was killed when all was in its place.
        if (started->hasEngine && engine != nullptr) removeAll(partsOf(*engine));
        if (started->isInstalled) removeAll(partsOf(entry->model.id));
        if (started->isInstalled) return started;
        const auto needed = needs(*entry).disk + spareSpace;
        if (freeSpace() < needed) throw InstallError::tooLittleSpace(needed, freeSpace());
        const auto parts = partsOf(entry->model.id);
        for (const auto& [path, file] : entry->files) makeFolder((parts / path).parent_path());
        started->hold = tools_.folders.hold(parts);
        if (!started->hold) throw InstallError(Case::underWayElsewhere);
        return started;
    });
}

Task<void> ModelInstaller::fetch(RemoteFile file, fs::path to, Run* run) {
    file.url = mirrored(file.url, mirrors_.get());
    co_await fetch_.fetch(file, std::move(to), [run](std::uint64_t held) { run->tell(held); });
    run->done += file.bytes;
    run->tell(0);
}

Task<void> ModelInstaller::fetchFiles(const CatalogueModel* model, Run* run) {
    for (const auto& [path, file] : model->files) co_await fetch(file, partsOf(model->model.id) / path, run);
}

Task<void> ModelInstaller::finish(const CatalogueModel& model, std::shared_ptr<Start> started) {
    return runOn(disk_, [this, entry = &model, started = std::move(started)] {
        const auto parts = partsOf(entry->model.id);
        try {
            keepOnly(parts, entry->files);
        } catch (const fs::filesystem_error& error) {
            failed(error.code());
        }
        writeWhole(parts / recordName, speechModelText(entry->model));
        if (const auto error = tools_.folders.publish(parts, models_ / entry->model.id)) failed(error);
        removeAll(parts);  // what it replaced
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
        co_await fetch(engine->archive, parts / archiveName, run);
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
