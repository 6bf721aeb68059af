#pragma once

#include <expected>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace dorix {

/// What a model's record is called in its folder.
inline constexpr auto recordName = "model.json";

/// A model that recognises speech, as it lies in a folder of this computer: what its "model.json" says. Pure
/// data; the functions below take any bytes, never throw for what they hold, and may be called on any thread.
struct SpeechModel {
    enum class Engine { pocketsphinx, sherpaOnnx };
    /// Better ones first.
    enum class Kind { streamingTransducer, nemoTransducer, transducer, whisper, embedded };
    /// An option of the engine's own.
    using Parameter = std::variant<double, std::string>;

    std::string id;
    Engine engine = Engine::sherpaOnnx;
    Kind kind = Kind::streamingTransducer;
    /// "es" serves every Spanish; "pt-BR" that one only.
    std::vector<std::string> languages;
    /// By role, relative to the folder: "encoder", "decoder", "joiner", "tokens"; "acoustic" (a folder),
    /// "dictionary", "language". Those that the kind needs are there.
    std::map<std::string, std::string> files;
    /// What is known of the files' contents, in hex, by their paths as above.
    std::map<std::string, std::string> sha256;
    std::map<std::string, Parameter> parameters;

    std::filesystem::path folder;

    /// Whether it understands a language ("es-MX").
    bool serves(std::string_view languageId) const;
    /// Where the file of a role lies, which must be one of `files`.
    std::filesystem::path fileFor(const std::string& role) const { return folder / files.at(role); }

    bool operator==(const SpeechModel&) const = default;
};

/// As they are stored: "sherpa-onnx", "streaming-transducer".
std::string_view storedName(SpeechModel::Engine engine);
std::string_view storedName(SpeechModel::Kind kind);

/// The record in the text of a "model.json", without a folder; or why it is none, in English.
std::expected<SpeechModel, std::string> parseSpeechModel(std::string_view json);

/// The text that parseSpeechModel reads back.
std::string speechModelText(const SpeechModel& model);

/// The model of a folder, which is called as the model: its record is in order, and the files that it names
/// are there. Nothing in the folder leads out of it. Or why there is none, in English. What the files hold is
/// not looked at.
std::expected<SpeechModel, std::string> readSpeechModel(const std::filesystem::path& folder);

/// The English model as the package of the system brings it, "en-us" in `folder`; none where it is not.
std::expected<SpeechModel, std::string> packagedEnglishModel(const std::filesystem::path& folder);

/// Whether a path is relative, plain (no "." and no ".."), and free of control characters.
bool staysInside(std::string_view path);

/// Whether the text is a SHA-256 as it is written, in lower case.
bool isSha256(std::string_view text);

/// Whether it can name a model and its folder: letters, digits, "-", "_" and ".", no "." in front.
bool isModelId(std::string_view text);

}  // namespace dorix
