#include "localdata/Language.h"

#include "base/text/Text.h"
#include "localdata/InLanguage.h"
#include "localdata/TranslationTable.h"

#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

namespace dorix {

namespace {

struct LanguageSource {
    std::mutex mutex;
    const UserDefaults* defaults = nullptr;
    SystemLanguages languages;
};

LanguageSource& source() {
    static LanguageSource instance;
    return instance;
}

using Dictionary = std::unordered_map<std::string_view, std::string_view>;

const Dictionary& dictionary() {
    static const Dictionary built = [] {
        Dictionary words;
        for (const auto& row : translationTable()) words.emplace(row.spanish, row.english);
        return words;
    }();
    return built;
}

/// The language that holds for this thread alone, for as long as somebody wants it.
thread_local const char* languageOfThread = nullptr;

template <typename Failure>
std::string describe(LogLanguage language, const Failure& words) {
    const InLanguage guard(language == LogLanguage::english ? "en" : "es");
    return words();
}

std::string filled(const FormatArgument& argument) {
    if (const auto* number = std::get_if<std::int64_t>(&argument)) return std::to_string(*number);
    return std::get<std::string>(argument);
}

}  // namespace

void installLanguage(const UserDefaults& defaults, SystemLanguages languages) {
    std::scoped_lock lock(source().mutex);
    source().defaults = &defaults;
    source().languages = std::move(languages);
}

void installLanguage(SystemLanguages languages) {
    std::scoped_lock lock(source().mutex);
    source().defaults = nullptr;
    source().languages = std::move(languages);
}

void uninstallLanguage() { installLanguage(SystemLanguages{}); }

InLanguage::InLanguage(const char* code) : before_(std::exchange(languageOfThread, code)) {}

InLanguage::~InLanguage() { languageOfThread = before_; }

std::string describedIn(LogLanguage language, const Error& error) {
    return describe(language, [&] { return error.localizedDescription(); });
}

std::string describedIn(LogLanguage language, const std::exception_ptr& error) {
    return describe(language, [&] { return localizedDescription(error); });
}

std::string currentAppLanguage() {
    if (languageOfThread != nullptr) return languageOfThread;
    std::scoped_lock lock(source().mutex);
    if (source().defaults != nullptr) {
        const auto chosen = source().defaults->string("appLanguage");
        if (chosen == "en" || chosen == "es") return *chosen;
    }
    const auto& preferred = source().languages.preferred;
    return !preferred.empty() && text::lowercase(preferred.front()).starts_with("en") ? "en" : "es";
}

std::string tr(std::string_view text) {
    if (currentAppLanguage() != "en") return std::string(text);
    const auto row = dictionary().find(text);
    return std::string(row == dictionary().end() ? text : row->second);
}

std::string appLocaleIdentifier() { return currentAppLanguage() == "en" ? "en_US" : "es_ES"; }

std::string formatNumber(std::int64_t number) {
    std::string digits = std::to_string(number);
    const std::size_t first = number < 0 ? 1 : 0;
    const char separator = currentAppLanguage() == "en" ? ',' : '.';
    for (std::size_t at = digits.size(); at > first + 3;) {
        at -= 3;
        digits.insert(at, 1, separator);
    }
    return digits;
}

std::string formatText(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    std::string out;
    const auto* argument = arguments.begin();
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char next = i + 1 < format.size() ? format[i + 1] : '\0';
        if (format[i] == '%' && next == '%') {
            out += '%';
            ++i;
        } else if (format[i] == '%' && (next == '@' || next == 'd') && argument != arguments.end()) {
            out += filled(*argument++);
            ++i;
        } else {
            out += format[i];
        }
    }
    return out;
}

}  // namespace dorix
