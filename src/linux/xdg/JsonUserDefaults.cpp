#include "linux/xdg/JsonUserDefaults.h"

#include "base/Log.h"
#include "linux/xdg/AtomicFile.h"

#include <ctime>
#include <fstream>
#include <iterator>
#include <utility>

namespace dorix {

JsonUserDefaults::JsonUserDefaults(Executor& main, std::filesystem::path file)
    : main_(main), file_(std::move(file)) {
    load();
}

JsonUserDefaults::~JsonUserDefaults() = default;

void JsonUserDefaults::load() {
    std::error_code error;
    if (!std::filesystem::exists(file_, error) && !error) return;
    std::ifstream stream(file_, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream) return setAside("no se puede leer");
    Json parsed = Json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!parsed.is_object()) return setAside("está dañado");
    values_ = std::move(parsed);
}

void JsonUserDefaults::setAside(const std::string& reason) {
    const std::string base = file_.string() + ".damaged-" + std::to_string(std::time(nullptr));
    std::filesystem::path aside = base;
    std::error_code error;
    for (int i = 2; std::filesystem::exists(aside, error); ++i) aside = base + "-" + std::to_string(i);
    std::filesystem::rename(file_, aside, error);
    mayWrite_ = !error;
    logLine("el archivo de ajustes " + reason + "; " +
            (error ? "no se guardarán cambios: " + error.message() : "se guarda como " + aside.string()));
}

std::optional<Json> JsonUserDefaults::value(std::string_view key) const {
    std::scoped_lock lock(mutex_);
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return *found;
}

void JsonUserDefaults::set(std::string_view key, Json value) {
    {
        std::scoped_lock lock(mutex_);
        const auto found = values_.find(key);
        if (found != values_.end() && *found == value) return;
        values_[std::string(key)] = std::move(value);
    }
    changed(key);
}

void JsonUserDefaults::remove(std::string_view key) {
    {
        std::scoped_lock lock(mutex_);
        if (values_.erase(std::string(key)) == 0) return;
    }
    changed(key);
}

Subscription JsonUserDefaults::observe(std::string_view key, Observer observer) {
    return (*observers_)[std::string(key)].add(std::move(observer));
}

void JsonUserDefaults::changed(std::string_view key) {
    main_.post([weak = std::weak_ptr(observers_), key = std::string(key)] {
        const auto observers = weak.lock();
        if (!observers) return;
        if (const auto found = observers->find(key); found != observers->end()) found->second.notify();
    });
    std::scoped_lock lock(mutex_);
    if (mayWrite_ && !std::exchange(writeQueued_, true)) writer_.post([this] { write(); });
}

void JsonUserDefaults::write() {
    std::string text;
    {
        std::scoped_lock lock(mutex_);
        writeQueued_ = false;
        text = values_.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    }
    const auto error = replaceFile(file_, text);
    if (error && !failureLogged_) logLine("no se pudieron guardar los ajustes: " + error.message());
    failureLogged_ = static_cast<bool>(error);
}

}  // namespace dorix
