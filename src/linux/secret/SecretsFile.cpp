#include "linux/secret/SecretsFile.h"

#include "base/Log.h"
#include "linux/xdg/AtomicFile.h"

#include <cstddef>

namespace dorix {

namespace {
constexpr std::size_t largest = 1024UZ * 1024;  // bytes
}

Json SecretsFile::read() const {
    const auto text = readFile(file_, largest);
    auto all = text ? Json::parse(*text, nullptr, false) : Json();
    return all.is_object() ? all : Json::object();
}

std::optional<Json> SecretsFile::pending(const std::string& account) const {
    const auto all = read();
    const auto found = all.find(account);
    if (found == all.end() || !(found->is_string() || found->is_null())) return std::nullopt;
    return *found;
}

void SecretsFile::set(const std::string& account, const Json& secret) {
    auto all = read();
    const auto before = all.find(account);
    if (before != all.end() && *before == secret) return;
    all[account] = secret;
    write(all);
}

void SecretsFile::drop(const std::string& account) {
    auto all = read();
    if (all.erase(account) > 0) write(all);
}

void SecretsFile::write(const Json& all) const {
    const auto text = all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    if (const auto error = replaceFile(file_, text)) {
        logLine("no se pudo escribir " + file_.string() + ": " + error.message());
    }
}

}  // namespace dorix
