#include "linux/secret/SecretsFile.h"

#include "base/Log.h"
#include "linux/xdg/AtomicFile.h"

#include <cstddef>
#include <ctime>
#include <system_error>

namespace dorix {

namespace {
constexpr std::size_t largest = 1024UZ * 1024;  // bytes
}

/// Nothing when the file may hold secrets that cannot be read now: it must not be replaced.
std::optional<Json> SecretsFile::read() const {
    const auto text = readFile(file_, largest);
    if (!text && text.error() == std::errc::no_such_file_or_directory) return Json::object();
    if (!text) {
        logLine(file_.string() + " could not be read" + ": " + text.error().message());
        return std::nullopt;
    }
    auto all = Json::parse(*text, nullptr, false);
    if (all.is_object()) return all;
    return setAside() ? std::optional(Json::object()) : std::nullopt;
}

/// A file that is damaged stays for whoever can read it.
bool SecretsFile::setAside() const {
    auto aside = file_;
    aside += ".damaged-" + std::to_string(std::time(nullptr));
    std::error_code error;
    std::filesystem::rename(file_, aside, error);
    logLine(file_.string() + " is damaged; " +
            (error ? "changes will not be kept: " + error.message() : "it is kept as " + aside.string()));
    return !error;
}

std::optional<Json> SecretsFile::pending(const std::string& account) const {
    const auto all = read();
    if (!all) return std::nullopt;
    const auto found = all->find(account);
    if (found == all->end() || !(found->is_string() || found->is_null())) return std::nullopt;
    return *found;
}

void SecretsFile::set(const std::string& account, const Json& secret) {
    auto all = read();
    if (!all) return;
    const auto before = all->find(account);
    if (before != all->end() && *before == secret) return;
    (*all)[account] = secret;
    write(*all);
}

void SecretsFile::drop(const std::string& account) {
    auto all = read();
    if (all && all->erase(account) > 0) write(*all);
}

void SecretsFile::write(const Json& all) const {
    const auto text = all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    if (const auto error = replaceFile(file_, text)) {
        logLine(file_.string() + " could not be written" + ": " + error.message());
    }
}

}  // namespace dorix
