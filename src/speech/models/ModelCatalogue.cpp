#include "speech/models/ModelCatalogue.h"

#include "base/Json.h"
#include "base/text/Url.h"
#include "speech/models/embedded/speechModels.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

namespace dorix {

namespace {

/// What is missing or of the wrong type is thrown by the JSON library, in parse's one handler.
RemoteFile remoteFile(const Json& json, const std::string& url) {
    RemoteFile file{.url = url, .bytes = json.at("bytes"), .sha256 = json.at("sha256")};
    if (!isWebAddress(file.url) || !hostOf(file.url)) throw std::runtime_error("no web address: " + file.url);
    if (file.bytes == 0 || !isSha256(file.sha256)) throw std::runtime_error("no checksum: " + file.url);
    return file;
}

CatalogueEngine engineIn(const Json& json) {
    const auto& archive = json.at("archive");
    CatalogueEngine engine{.version = json.at("version"),
                           .licence = json.at("licence"),
                           .processor = json.value("processor", ""),
                           .archive = remoteFile(archive, archive.at("url")),
                           .files = json.at("files"),
                           .unpacked = json.at("unpacked")};
    if (json.at("engine") != storedName(engine.engine) || !isModelId(engine.id()))
        throw std::runtime_error("an engine that is none");
    for (const auto& file : engine.files) {
        if (!staysInside(file) || file.contains('/')) throw std::runtime_error("no file name: " + file);
    }
    return engine;
}

bool runsHere(const CatalogueEngine& engine) {
#ifdef __x86_64__
    constexpr std::string_view processor = "x86_64";
#else
    constexpr std::string_view processor = "another";
#endif
    return engine.processor.empty() || engine.processor == processor;
}

/// The record that is going to lie beside the files.
Json recordOf(const Json& json) {
    Json record{{"id", json.at("id")},
                {"engine", json.at("engine")},
                {"kind", json.at("kind")},
                {"languages", json.at("languages")},
                {"parameters", json.value("parameters", Json::object())}};
    for (const auto& file : json.at("files")) {
        const std::string path = file.at("path");
        record["files"][file.at("role").get<std::string>()] = path;
        record["sha256"][path] = file.at("sha256");
    }
    return record;
}

CatalogueModel modelIn(const Json& json) {
    const auto model = parseSpeechModel(recordOf(json).dump());
    if (!model) throw std::runtime_error(json.at("id").get<std::string>() + ": " + model.error());
    CatalogueModel entry{.model = *model,
                         .licence = json.at("licence").at("name"),
                         .isLicenceClear = json.at("licence").at("clear"),
                         .cadence = json.at("cadence"),
                         .memory = json.at("memory"),
                         .line = json.at("line")};
    const std::string base = json.at("base");
    for (const auto& file : json.at("files")) {
        const std::string path = file.at("path");
        if (path == recordName) throw std::runtime_error(entry.model.id + ": no name for a file");
        entry.files[path] = remoteFile(file, base + path);
    }
    return entry;
}

}  // namespace

std::uint64_t CatalogueModel::bytes() const {
    std::uint64_t sum = 0;
    for (const auto& [path, file] : files) sum += file.bytes;
    return sum;
}

std::expected<ModelCatalogue, std::string> ModelCatalogue::parse(std::string_view text) {
    try {
        const auto json = Json::parse(text);
        ModelCatalogue catalogue;
        for (const auto& engine : json.at("engines")) catalogue.engines_.push_back(engineIn(engine));
        for (const auto& entry : json.at("models")) {
            auto model = modelIn(entry);
            const auto* engine = catalogue.engineOf(model);
            if (engine == nullptr || runsHere(*engine)) catalogue.models_.push_back(std::move(model));
        }
        return catalogue;
    } catch (const std::exception& error) {
        return std::unexpected(error.what());
    }
}

const ModelCatalogue& ModelCatalogue::packaged() {
    static const ModelCatalogue catalogue = [] {
        const auto& bytes = embedded::speechModels;
        return parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()}).value();
    }();
    return catalogue;
}

const CatalogueModel* ModelCatalogue::find(std::string_view id) const {
    const auto found = std::ranges::find(models_, id, [](const auto& entry) { return entry.model.id; });
    return found == models_.end() ? nullptr : &*found;
}

const CatalogueEngine* ModelCatalogue::engineOf(const CatalogueModel& model) const {
    const auto found = std::ranges::find(engines_, model.model.engine, &CatalogueEngine::engine);
    return found == engines_.end() ? nullptr : &*found;
}

std::vector<const CatalogueModel*> ModelCatalogue::forLanguage(std::string_view languageId) const {
    std::vector<const CatalogueModel*> serving;
    for (const auto& entry : models_) {
        if (entry.model.serves(languageId)) serving.push_back(&entry);
    }
    return serving;
}

}  // namespace dorix
