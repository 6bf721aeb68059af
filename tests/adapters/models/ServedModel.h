#pragma once

#include "base/Json.h"
#include "base/Sha256.h"
#include "fakes/TemporaryFolder.h"
#include "platform/ArchiveUnpacker.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

inline std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The files of a model and an engine, of nothing but noise, in a folder that a server can serve.
class ServedModel {
 public:
    ServedModel() {
        for (const auto& [name, size] : {std::pair{"encoder.onnx", 3'000'000},
                                         {"decoder.onnx", 1000},
                                         {"joiner.onnx", 70'000},
                                         {"tokens.txt", 300},
                                         {"engine.tar", 200'000}}) {
            std::ofstream stream(folder.path() / name, std::ios::binary);
            for (int i = 0; i < size; ++i) stream.put(static_cast<char>(noise_() & 0xFFU));
        }
    }

    /// A catalogue with that one model, called "noise", whose files come from below `base`; the engine's from
    /// below `engineBase`.
    std::string catalogue(const std::string& base, const std::string& engineBase,
                          bool isLicenceClear = true) const {
        Json files = Json::array();
        for (const auto* role : {"encoder", "decoder", "joiner", "tokens"}) {
            const auto path = std::string(role) + (role == std::string("tokens") ? ".txt" : ".onnx");
            auto file = remote(path);
            file.update({{"role", role}, {"path", path}});
            files.push_back(file);
        }
        auto archive = remote("engine.tar");
        archive["url"] = engineBase + "engine.tar";
        const Json engine{
            {"engine", "sherpa-onnx"},       {"version", "1"},     {"licence", "MIT"}, {"archive", archive},
            {"files", {"one.so", "two.so"}}, {"unpacked", 400'000}};
        const Json model{{"id", "noise"},
                         {"engine", "sherpa-onnx"},
                         {"kind", "transducer"},
                         {"languages", {"es"}},
                         {"base", base},
                         {"files", files},
                         {"licence", {{"name", "MIT"}, {"clear", isLicenceClear}}},
                         {"cadence", 0},
                         {"memory", 6'000'000},
                         {"line", "Habla"}};
        return Json{{"engines", {engine}}, {"models", {model}}}.dump();
    }

    TemporaryFolder folder;

 private:
    Json remote(const std::string& name) const {
        const auto file = folder.path() / name;
        return {{"bytes", std::filesystem::file_size(file)}, {"sha256", sha256OfFile(file).value()}};
    }

    std::mt19937 noise_;  // NOLINT(bugprone-random-generator-seed)
};

/// Puts the archive itself into each of the files.
class CopyingUnpacker final : public ArchiveUnpacker {
 public:
    Task<void> unpack(UnpackRequest request) override {
        ++calls;
        if (fails) throw MessageError("not an archive");
        for (const auto& file : request.files)
            std::filesystem::copy_file(request.archive, request.folder / file);
        co_return;
    }

    int calls = 0;
    bool fails = false;
};

}  // namespace dorix
