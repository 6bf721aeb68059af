#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A piece of a document's text, with its embedding if one was made: of unit length.
struct MemoryChunk {
    std::string text;
    std::optional<std::vector<float>> vec;
};

/// A document that is to be remembered. One without chunks is one that yielded no text.
struct MemoryDocument {
    std::string path;  // absolute; of a history item, its address
    std::string title;
    std::string kind;     // "file" or "history"
    double modified = 0;  // seconds since 1970
    std::vector<MemoryChunk> chunks;
    bool isBare = false;  // without vectors because there was no model; not where the model made none
};

/// A piece of a document that was found.
struct MemoryHit {
    std::string path;
    std::string title;
    std::string text;
    double modified = 0;  // seconds since 1970
    std::string kind;     // "file", "history" or "slack"

    bool operator==(const MemoryHit&) const = default;
};

struct MemoryCounts {
    std::int64_t documents = 0;  // that are files
    std::int64_t chunks = 0;     // of all documents

    bool operator==(const MemoryCounts&) const = default;
};

/// What the user worked with, from a moment on.
struct ActivityRow {
    double time = 0;  // seconds since 1970
    std::string app;
    std::string title;
    std::optional<std::string> document;  // the file's path

    bool operator==(const ActivityRow&) const = default;
};

}  // namespace dorix
