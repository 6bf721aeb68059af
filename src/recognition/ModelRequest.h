#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// A model for a recogniser to load, and with which engine. What is in the files is other people's bytes.
struct ModelRequest {
    std::string engine;    // "pocketsphinx", "sherpa-onnx" or "server"
    std::string kind;      // "embedded", "streaming-transducer", "transducer", "nemo-transducer", "whisper"
    std::string language;  // "es"
    std::filesystem::path folder;                   // of the model
    std::map<std::string, std::string> files;       // role to path within the folder
    std::map<std::string, std::string> sha256;      // path within the folder to hexadecimal digits
    std::map<std::string, std::string> parameters;  // the engine's own options; numbers as text
    std::filesystem::path engineFolder;  // where the engine's libraries lie, if it is loaded at run time

    /// Of an engine that asks a server. The key is a secret.
    struct Server {
        std::string address;
        std::string key;
        std::string model;

        bool operator==(const Server&) const = default;
    };
    Server server;

    /// The file of a role; empty when there is none.
    std::filesystem::path file(const std::string& role) const;

    bool operator==(const ModelRequest&) const = default;
};

std::string encoded(const ModelRequest& request);
/// None when the text is no request.
std::optional<ModelRequest> modelRequestIn(std::string_view text);

}  // namespace dorix
