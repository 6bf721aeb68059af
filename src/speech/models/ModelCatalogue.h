#pragma once

#include "download/RemoteFile.h"
#include "speech/models/SpeechModel.h"

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// The libraries of an engine, which all its models share.
struct CatalogueEngine {
    SpeechModel::Engine engine = SpeechModel::Engine::sherpaOnnx;
    std::string version;
    std::string licence;
    std::string processor;  // that it was compiled for; empty for any
    RemoteFile archive;
    std::vector<std::string> files;  // what is needed of it
    std::uint64_t unpacked = 0;      // bytes, at most

    /// Of the folder that it is installed in.
    std::string id() const { return std::string(storedName(engine)) + "-" + version; }
};

/// A model that can be installed.
struct CatalogueModel {
    SpeechModel model;  // as it will be, but for its folder
    RemoteFiles files;  // by their paths in the folder
    std::string licence;
    /// Whether it says for sure what may be done with the model; otherwise the user is asked.
    bool isLicenceClear = false;
    double cadence = 0;  // seconds between two partial texts; 0 where the text comes when the key is let go
    std::uint64_t memory = 0;  // bytes while it runs, estimated
    std::string line;          // what tells it from the others, in Spanish

    std::uint64_t bytes() const;
};

/// What can be installed. Pure data, any thread.
class ModelCatalogue {
 public:
    /// Reads a catalogue, of which it leaves out what does not run on this processor; or says why it is none,
    /// in English.
    static std::expected<ModelCatalogue, std::string> parse(std::string_view json);

    /// The one that is part of the program.
    static const ModelCatalogue& packaged();

    const std::vector<CatalogueModel>& models() const { return models_; }
    const std::vector<CatalogueEngine>& engines() const { return engines_; }

    /// nullptr when it is not there.
    const CatalogueModel* find(std::string_view id) const;
    /// What the model runs on; nullptr where that is part of the program.
    const CatalogueEngine* engineOf(const CatalogueModel& model) const;

    /// Those that serve a language ("es-MX"), the one for most people first.
    std::vector<const CatalogueModel*> forLanguage(std::string_view languageId) const;

 private:
    std::vector<CatalogueModel> models_;
    std::vector<CatalogueEngine> engines_;
};

}  // namespace dorix
