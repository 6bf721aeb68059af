#include "linux/xdg/LocaleEnvironment.h"

#include "base/text/Text.h"

#include <cstdlib>
#include <initializer_list>

namespace dorix {

namespace {

using Variable = std::function<std::optional<std::string>(const char*)>;

/// What a session without a locale speaks: programs show their untranslated, English texts.
constexpr std::string_view posixLocale = "en-US-POSIX";

/// "es_ES.UTF-8@euro" as "es-ES".
std::string identifier(std::string_view locale) {
    locale = locale.substr(0, locale.find_first_of(".@"));
    if (locale.empty() || locale == "C" || locale == "POSIX") return std::string(posixLocale);
    return text::replaceAll(locale, "_", "-");
}

std::string firstSet(const Variable& variable, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (auto value = variable(name)) return identifier(*value);
    }
    return std::string(posixLocale);
}

}  // namespace

SystemLanguages systemLanguages(const Variable& variable) {
    SystemLanguages languages;
    const auto messages = firstSet(variable, {"LC_ALL", "LC_MESSAGES", "LANG"});
    // LANGUAGE counts only where there is a locale.
    if (const auto list = variable("LANGUAGE"); list && messages != posixLocale) {
        for (const auto entry : text::split(*list, ':')) {
            if (!entry.empty()) languages.preferred.push_back(identifier(entry));
        }
    }
    languages.preferred.push_back(messages);
    const auto formats = firstSet(variable, {"LC_ALL", "LC_TIME", "LANG"});
    languages.currentLanguageCode = formats.substr(0, formats.find('-'));
    return languages;
}

SystemLanguages systemLanguages() {
    return systemLanguages([](const char* name) -> std::optional<std::string> {
        const char* value = std::getenv(name);
        if (value == nullptr || *value == '\0') return std::nullopt;
        return value;
    });
}

}  // namespace dorix
