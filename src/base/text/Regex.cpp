#include "base/text/Regex.h"

#include "base/text/Unicode.h"

#include <unicode/regex.h>

#include <cstdio>
#include <cstdlib>

namespace dorix {

struct Regex::Compiled {
    std::unique_ptr<icu::RegexPattern> pattern;

    std::unique_ptr<icu::RegexMatcher> matcher(const icu::UnicodeString& text) const {
        UErrorCode status = U_ZERO_ERROR;
        return std::unique_ptr<icu::RegexMatcher>(pattern->matcher(text, status));
    }
};

using text::toUnicode;

Regex::Regex(std::string_view pattern, Case letterCase) : compiled_(std::make_unique<Compiled>()) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    const uint32_t flags = letterCase == Case::ignored ? UREGEX_CASE_INSENSITIVE : 0;
    compiled_->pattern.reset(icu::RegexPattern::compile(toUnicode(pattern), flags, where, status));
    if (U_FAILURE(status)) {
        std::fprintf(stderr, "invalid regular expression %.*s\n", static_cast<int>(pattern.size()),
                     pattern.data());
        std::abort();
    }
}

Regex::~Regex() = default;

bool Regex::matches(std::string_view text) const {
    const auto subject = toUnicode(text);
    UErrorCode status = U_ZERO_ERROR;
    const auto matcher = compiled_->matcher(subject);
    bool found = matcher->find(status) != 0;
    if (status == U_REGEX_STACK_OVERFLOW) {
        // A run of some hundred thousand characters; a search that may be the last guard must not give up on
        // it.
        status = U_ZERO_ERROR;
        matcher->reset();
        matcher->setStackLimit(0, status);
        found = matcher->find(status) != 0;
    }
    return found && U_SUCCESS(status);
}

std::string Regex::replaceAll(std::string_view subjectText, std::string_view replacement) const {
    const auto subject = toUnicode(subjectText);
    UErrorCode status = U_ZERO_ERROR;
    const auto replaced = compiled_->matcher(subject)->replaceAll(toUnicode(replacement), status);
    if (U_FAILURE(status))
        return std::string(subjectText);  // the matcher ran out of stack: the text stays as it is
    return text::toUtf8(replaced);
}

}  // namespace dorix
