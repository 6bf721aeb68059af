#include "speech/recogniser/SpeechServer.h"

#include "base/Log.h"
#include "base/text/Url.h"
#include "localdata/SettingsStore.h"

#include <utility>

namespace dorix {

Task<void> SpeechServer::readKey() { co_await key_.read(settings_.speechServer.get()); }

std::string SpeechServer::key() const { return key_.of(settings_.speechServer.get()); }

Task<void> SpeechServer::saveKey(std::string key) {
    co_await key_.save(settings_.speechServer.get(), std::move(key));
}

std::optional<ModelRequest> SpeechServer::request(std::string language) const {
    const auto address = settings_.speechServer.get();
    if (address.empty()) return std::nullopt;
    return ModelRequest{
        .engine = "server",
        .kind = "server",
        .language = std::move(language),
        .folder = {},
        .files = {},
        .sha256 = {},
        .parameters = {},
        .engineFolder = {},
        .server = {.address = address, .key = key(), .model = settings_.speechServerModel.get()}};
}

void SpeechServer::failed(const std::string& why) {
    constexpr double rest = 60;
    restsUntil_ = executor_.now() + rest;
    logLine("the speech server failed: " + why);
}

std::optional<std::string> SpeechServer::notice() const {
    const auto address = settings_.speechServer.get();
    auto host = hostOf(address);
    if (!host || isThisComputer(*host) || settings_.speechServerTold.get() == address) return std::nullopt;
    return host;
}

void SpeechServer::noticeShown() { settings_.speechServerTold.set(settings_.speechServer.get()); }

}  // namespace dorix
