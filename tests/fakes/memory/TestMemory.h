#pragma once

#include "memory/DocumentReader.h"
#include "memory/MemoryController.h"
#include "memory/embedding/Embedder.h"
#include "platform/BackgroundWork.h"
#include "platform/FileTree.h"

#include <filesystem>
#include <type_traits>
#include <vector>

namespace dorix {

/// A memory with a file of its own; the ports that it is not given are missing.
class TestMemory {
 public:
    /// All outlive it.
    struct Ports {
        Embedder* embedder = nullptr;
        DocumentReader* reader = nullptr;
        FileTree* files = nullptr;
        BackgroundWork* background = nullptr;
        MessageSearch* messages = nullptr;
        std::filesystem::path home;
        std::vector<std::filesystem::path> documentFolders;
    };

    TestMemory(Executor& executor, UserDefaults& defaults, const HistoryStore& history,
               const std::filesystem::path& database, const Ports& ports)
        : store(executor, database),
          memory({.executor = executor,
                  .store = store,
                  .embedder = orMissing(ports.embedder, noEmbedder_),
                  .indexed = orMissing(ports.reader, noReader_),
                  .asked = orMissing(ports.reader, noReader_),
                  .history = history,
                  .defaults = defaults,
                  .files = orMissing(ports.files, noFiles_),
                  .background = orMissing(ports.background, asOthers_),
                  .messages = ports.messages,
                  .home = ports.home,
                  .documentFolders = ports.documentFolders}) {}

 private:
    template <typename Port>
    static Port& orMissing(Port* given, std::type_identity_t<Port>& missing) {
        return given != nullptr ? *given : missing;
    }

    NoEmbedder noEmbedder_;
    NoDocumentReader noReader_;
    UnavailableFileTree noFiles_;
    UnavailableBackgroundWork asOthers_;

 public:
    MemoryStore store;
    MemoryController memory;
};

}  // namespace dorix
