#include "linux/xdg/LocaleEnvironment.h"

#include "base/text/Text.h"

#include <cstdlib>
#include <initializer_list>

namespace dorix {

namespace {

using Variable = std::function<std::optional<std::string>(const char*)>;

/// "es_ES.UTF-8@euro" as "es-ES"; nothing for the C locale.
std::optional<std::string> identifier(std::string_view locale) {
    locale = locale.substr(0, locale.find_first_of(".@"));
    if (locale.empty() || locale == "C" || locale == "POSIX") return std::nullopt;
    return text::replaceAll(locale, "_", "-");
}

std::optional<std::string> firstSet(const Variable& variable, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (auto value = variable(name)) return identifier(*value);
    }
    return std::nullopt;
}

}  // namespace

SystemLanguages systemLanguages(const Variable& variable) {
    SystemLanguages languages;
    const auto messages = firstSet(variable, {"LC_ALL", "LC_MESSAGES", "LANG"});
    // LANGUAGE counts only where the locale is a real one.
    if (const auto list = variable("LANGUAGE"); list && messages) {
        for (const auto entry : text::split(*list, ':')) {
            if (auto id = identifier(entry)) languages.preferred.push_back(*std::move(id));
        }
    }
    if (messages) languages.preferred.push_back(*messages);
    if (const auto formats = firstSet(variable, {"LC_ALL", "LC_TIME", "LANG"})) {
        languages.currentLanguageCode = formats->substr(0, formats->find('-'));
    }
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
