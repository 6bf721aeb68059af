#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace dorix::service {

/// The languages that the service writes and answers in by itself.
enum class Language : std::uint8_t { spanish, english };

/// "es" or "en", also with a region ("en-GB", "es_MX"). Pure; any thread.
std::optional<Language> languageNamed(std::string_view tag);

/// The language that a text is in, told by its commonest words and its letters. None when they do not say.
/// Looks at the beginning of a long text. Pure; any thread.
std::optional<Language> languageOf(std::string_view text);

/// Whether it is rather in another language whose small words are known here. Pure; any thread.
bool isForeign(std::string_view text);

}  // namespace dorix::service
