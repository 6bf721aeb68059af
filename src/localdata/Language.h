#pragma once

#include "base/Error.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace dorix {

/// What the app language is decided by; the program installs it once, before anything asks for a text.
/// `defaults` must live as long as texts are asked for. Without it the language is Spanish.
void installLanguage(const UserDefaults& defaults, SystemLanguages languages);

/// The same for as long as there are no defaults to ask: the language is what the system prefers.
void installLanguage(SystemLanguages languages);

/// Takes back what installLanguage installed.
void uninstallLanguage();

/// "es" or "en": the user's choice, or else what the system prefers. Any thread.
std::string currentAppLanguage();

/// The text, which is Spanish, in the app language; unchanged where there is no translation. Any thread.
std::string tr(std::string_view text);

/// The words of a failure for the log, which has a language of its own whatever that of the app is: English,
/// or Spanish in those lines that are in Spanish.
enum class LogLanguage { english, spanish };
std::string describedIn(LogLanguage language, const Error& error);
std::string describedIn(LogLanguage language, const std::exception_ptr& error);

/// "en_US" or "es_ES", for dates and formats. Any thread.
std::string appLocaleIdentifier();

/// The number with its digits grouped in threes, as the app language does it. Any thread.
std::string formatNumber(std::int64_t number);

/// What fills a placeholder: text for "%@", a whole number for "%d".
using FormatArgument = std::variant<std::string, std::int64_t>;

/// Fills the placeholders of `format` in their order; "%%" is a per cent sign. A placeholder without its
/// argument stays as it is. Translate the format first: formatText(tr("Escrito en %@"), {name}). Any thread.
std::string formatText(std::string_view format, std::initializer_list<FormatArgument> arguments);

}  // namespace dorix
