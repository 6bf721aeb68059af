#include "base/text/Case.h"

#include "base/text/Unicode.h"

#include <unicode/locid.h>

namespace dorix::text {

std::string uppercase(std::string_view text) {
    return toUtf8(toUnicode(text).toUpper(icu::Locale::getRoot()));
}

}  // namespace dorix::text
