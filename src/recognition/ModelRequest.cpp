#include "recognition/ModelRequest.h"

#include "base/Json.h"

namespace dorix {

std::filesystem::path ModelRequest::file(const std::string& role) const {
    const auto found = files.find(role);
    return found == files.end() ? std::filesystem::path() : folder / found->second;
}

std::string encoded(const ModelRequest& request) {
    const Json json = {{"engine", request.engine},
                       {"kind", request.kind},
                       {"language", request.language},
                       {"folder", request.folder.string()},
                       {"files", request.files},
                       {"sha256", request.sha256},
                       {"parameters", request.parameters},
                       {"engineFolder", request.engineFolder.string()},
                       {"server",
                        {{"address", request.server.address},
                         {"key", request.server.key},
                         {"model", request.server.model}}}};
    // A file may have a name that is no UTF-8; the request is refused then, as the file is not found.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<ModelRequest> modelRequestIn(std::string_view text) {
    try {
        const auto json = Json::parse(text);
        const auto& server = json.at("server");
        return ModelRequest{
            .engine = json.at("engine"),
            .kind = json.at("kind"),
            .language = json.at("language"),
            .folder = json.at("folder").get<std::string>(),
            .files = json.at("files"),
            .sha256 = json.at("sha256"),
            .parameters = json.at("parameters"),
            .engineFolder = json.at("engineFolder").get<std::string>(),
            .server = {
                .address = server.at("address"), .key = server.at("key"), .model = server.at("model")}};
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

}  // namespace dorix
