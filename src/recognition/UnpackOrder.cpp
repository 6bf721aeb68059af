#include "recognition/UnpackOrder.h"

#include "base/Json.h"

namespace dorix {

std::string encoded(const UnpackOrder& order) {
    const Json json = {{"archive", order.archive.string()},
                       {"folder", order.folder.string()},
                       {"files", order.files},
                       {"largest", order.largest}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<UnpackOrder> unpackOrderIn(std::string_view text) {
    try {
        const auto json = Json::parse(text);
        return UnpackOrder{.archive = json.at("archive").get<std::string>(),
                           .folder = json.at("folder").get<std::string>(),
                           .files = json.at("files"),
                           .largest = json.at("largest")};
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

}  // namespace dorix
