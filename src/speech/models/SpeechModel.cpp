#include "speech/models/SpeechModel.h"

#include "base/Json.h"
#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t largestRecord = 256UZ * 1024;  // bytes
constexpr int mostEntries = 1000;                       // of a folder, with those below

using Kind = SpeechModel::Kind;
using Engine = SpeechModel::Engine;

constexpr std::array engineNames{
    std::pair{Engine::pocketsphinx, std::string_view("pocketsphinx")},
    std::pair{Engine::sherpaOnnx, std::string_view("sherpa-onnx")},
};

constexpr std::array transducerRoles{"encoder", "decoder", "joiner", "tokens"};
constexpr std::array whisperRoles{"encoder", "decoder", "tokens"};
constexpr std::array embeddedRoles{"acoustic", "dictionary", "language"};

struct KindRow {
    Kind kind;
    std::string_view name;
    Engine engine;
    std::span<const char* const> roles;
};

constexpr std::array kinds{
    KindRow{Kind::streamingTransducer, "streaming-transducer", Engine::sherpaOnnx, transducerRoles},
    KindRow{Kind::nemoTransducer, "nemo-transducer", Engine::sherpaOnnx, transducerRoles},
    KindRow{Kind::transducer, "transducer", Engine::sherpaOnnx, transducerRoles},
    KindRow{Kind::whisper, "whisper", Engine::sherpaOnnx, whisperRoles},
    KindRow{Kind::embedded, "embedded", Engine::pocketsphinx, embeddedRoles},
};

const KindRow& rowOf(Kind kind) { return *std::ranges::find(kinds, kind, &KindRow::kind); }

/// A folder, where the others are files.
bool isFolderRole(std::string_view role) { return role == "acoustic"; }

bool isLowerAscii(char c) { return c >= 'a' && c <= 'z'; }
bool isAsciiWordPart(char c) {
    return isLowerAscii(c) || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
}

/// "es", "pt-BR".
bool isLanguage(std::string_view text) {
    const auto primary = text.substr(0, text.find('-'));
    return (primary.size() == 2 || primary.size() == 3) && std::ranges::all_of(primary, isLowerAscii) &&
           text.size() <= 16 && std::ranges::all_of(text, isAsciiWordPart) && !text.ends_with('-');
}

std::string spoken(std::string_view languageId) {
    return text::replaceAll(text::lowercase(languageId), "_", "-");
}

/// Reads a record, and keeps what is wrong with it first.
class RecordReader {
 public:
    std::expected<SpeechModel, std::string> read(std::string_view text) {
        const auto json = Json::parse(text, nullptr, false);
        if (!json.is_object()) return std::unexpected("no JSON object");
        readIdentity(json);
        readLanguages(member(json, "languages"));
        readFiles(member(json, "files"));
        readChecksums(member(json, "sha256"));
        readParameters(member(json, "parameters"));
        if (complaint_) return std::unexpected(*complaint_);
        return std::move(model_);
    }

 private:
    static Json member(const Json& json, const char* name) { return json.value(name, Json()); }

    void complain(const std::string& words) {
        if (!complaint_) complaint_ = words;
    }

    std::string stringAt(const Json& json, const char* name) {
        const auto value = member(json, name);
        if (value.is_string()) return value.get<std::string>();
        complain(std::string(name) + " is no string");
        return {};
    }

    void readIdentity(const Json& json) {
        model_.id = stringAt(json, "id");
        if (!isModelId(model_.id)) complain("id cannot name a folder");
        const auto engine = stringAt(json, "engine");
        const auto* engineRow =
            std::ranges::find(engineNames, engine, [](const auto& row) { return row.second; });
        const auto kind = stringAt(json, "kind");
        const auto* kindRow = std::ranges::find(kinds, kind, &KindRow::name);
        if (engineRow == engineNames.end()) return complain("engine is unknown");
        if (kindRow == kinds.end()) return complain("kind is unknown");
        if (kindRow->engine != engineRow->first) complain("the engine has no models of that kind");
        model_.engine = engineRow->first;
        model_.kind = kindRow->kind;
    }

    void readLanguages(const Json& list) {
        if (!list.is_array() || list.empty()) return complain("languages is no list, or empty");
        for (const auto& entry : list) {
            if (!entry.is_string() || !isLanguage(entry.get<std::string>()))
                return complain("a language is none");
            model_.languages.push_back(entry.get<std::string>());
        }
    }

    void readFiles(const Json& roles) {
        if (!roles.is_object()) return complain("files is no object");
        for (const auto& [role, path] : roles.items()) {
            if (!path.is_string() || !staysInside(path.get<std::string>()))
                return complain("the path of " + role + " does not stay in the folder");
            model_.files[role] = path.get<std::string>();
        }
        for (const auto* role : rowOf(model_.kind).roles) {
            if (!model_.files.contains(role)) complain(std::string(role) + " is missing");
        }
    }

    void readChecksums(const Json& sums) {
        if (sums.is_null()) return;
        if (!sums.is_object()) return complain("sha256 is no object");
        for (const auto& [path, sum] : sums.items()) {
            const auto hex = sum.is_string() ? text::lowercase(sum.get<std::string>()) : std::string();
            if (!staysInside(path) || !isSha256(hex)) return complain("sha256 holds what is no checksum");
            model_.sha256[path] = hex;
        }
    }

    void readParameters(const Json& options) {
        if (options.is_null()) return;
        if (!options.is_object()) return complain("parameters is no object");
        for (const auto& [name, value] : options.items()) {
            if (value.is_number()) {
                model_.parameters[name] = value.get<double>();
            } else if (value.is_string()) {
                model_.parameters[name] = value.get<std::string>();
            } else {
                return complain("a parameter is neither number nor string");
            }
        }
    }

    SpeechModel model_;
    std::optional<std::string> complaint_;
};

std::expected<std::string, std::string> recordText(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) return std::unexpected("there is no model.json");
    if (fs::file_size(file, error) > largestRecord || error) return std::unexpected("model.json is too long");
    std::ifstream stream(file, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(stream), {});
    if (!stream) return std::unexpected("model.json cannot be read");
    return text;
}

bool isBelow(const fs::path& path, const fs::path& folder) {
    return std::ranges::mismatch(folder, path).in1 == folder.end();
}

/// Why the folder is not closed in itself; nothing when it is.
std::optional<std::string> wayOut(const fs::path& folder) {
    std::error_code error;
    const auto real = fs::canonical(folder, error);
    if (error) return "the folder cannot be read";
    int entries = 0;
    for (fs::recursive_directory_iterator at(folder, error);
         !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        if (++entries > mostEntries) return "the folder holds too much";
        if (!at->is_symlink(error)) continue;
        const auto target = fs::canonical(at->path(), error);
        if (error || !isBelow(target, real)) return "a link leads out of the folder";
    }
    return error ? std::optional<std::string>("the folder cannot be read") : std::nullopt;
}

/// The role whose file is not there, or is of the wrong sort.
std::optional<std::string> missingRole(const SpeechModel& model) {
    for (const auto& [role, path] : model.files) {
        std::error_code ignored;
        const auto status = fs::status(model.folder / path, ignored);
        const bool isThere = isFolderRole(role) ? fs::is_directory(status) : fs::is_regular_file(status);
        if (!isThere) return role;
    }
    return std::nullopt;
}

Json parameterValue(const SpeechModel::Parameter& parameter) {
    return std::visit([](const auto& value) { return Json(value); }, parameter);
}

}  // namespace

std::string_view storedName(SpeechModel::Engine engine) {
    return std::ranges::find(engineNames, engine, [](const auto& row) { return row.first; })->second;
}

std::string_view storedName(SpeechModel::Kind kind) { return rowOf(kind).name; }

bool SpeechModel::serves(std::string_view languageId) const {
    const auto wanted = spoken(languageId);
    return std::ranges::any_of(languages, [&](const auto& language) {
        const auto known = spoken(language);
        return wanted == known || wanted.starts_with(known + "-");
    });
}

std::expected<SpeechModel, std::string> parseSpeechModel(std::string_view json) {
    return RecordReader().read(json);
}

std::string speechModelText(const SpeechModel& model) {
    Json json{{"id", model.id},
              {"engine", storedName(model.engine)},
              {"kind", storedName(model.kind)},
              {"languages", model.languages},
              {"files", model.files}};
    if (!model.sha256.empty()) json["sha256"] = model.sha256;
    for (const auto& [name, value] : model.parameters) json["parameters"][name] = parameterValue(value);
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::expected<SpeechModel, std::string> readSpeechModel(const fs::path& folder) {
    const auto text = recordText(folder / recordName);
    if (!text) return std::unexpected(text.error());
    auto model = parseSpeechModel(*text);
    if (!model) return model;
    if (folder.filename() != model->id) return std::unexpected("the folder is not called as its model");
    if (const auto complaint = wayOut(folder)) return std::unexpected(*complaint);
    model->folder = folder;
    if (const auto role = missingRole(*model)) return std::unexpected("the file of " + *role + " is missing");
    return model;
}

std::expected<SpeechModel, std::string> packagedEnglishModel(const fs::path& folder) {
    SpeechModel model{.id = "pocketsphinx-en-us",
                      .engine = Engine::pocketsphinx,
                      .kind = Kind::embedded,
                      .languages = {"en"},
                      .files = {{"acoustic", "en-us/en-us"},
                                {"dictionary", "en-us/cmudict-en-us.dict"},
                                {"language", "en-us/en-us.lm.bin"}},
                      .folder = folder};
    if (const auto role = missingRole(model)) return std::unexpected("the file of " + *role + " is missing");
    return model;
}

bool staysInside(std::string_view path) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; };
    if (path.empty() || path.size() > 1000 || std::ranges::any_of(path, isControl)) return false;
    return std::ranges::all_of(text::split(path, '/'), [](std::string_view part) {
        return !part.empty() && part != "." && part != ".." && part.size() <= 255;
    });
}

bool isSha256(std::string_view text) {
    return text.size() == 64 &&
           std::ranges::all_of(text, [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

bool isModelId(std::string_view text) {
    return !text.empty() && text.size() <= 100 && text.front() != '.' &&
           std::ranges::all_of(text, [](char c) { return isAsciiWordPart(c) || c == '_' || c == '.'; });
}

}  // namespace dorix
