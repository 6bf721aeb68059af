#pragma once

#include "platform/SystemLanguages.h"

#include <functional>
#include <optional>
#include <string>

namespace dorix {

/// The languages that the locale variables name (LANGUAGE, LC_ALL, LC_MESSAGES, LANG, as gettext reads them).
/// The C locale, and none at all, is American English. `variable` gives a variable's value, nothing when it
/// is unset or empty.
SystemLanguages systemLanguages(const std::function<std::optional<std::string>(const char*)>& variable);

/// The same from the process environment.
SystemLanguages systemLanguages();

}  // namespace dorix
