#include "base/text/Calendar.h"

#include "base/text/Unicode.h"

#include <unicode/calendar.h>
#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <cmath>

namespace dorix {

namespace {

constexpr double milliseconds = 1000;  // ICU's unit, to the second

icu::Locale localeNamed(const std::string& name) { return icu::Locale::createFromName(name.c_str()); }

void toMidnight(icu::Calendar& calendar) {
    for (const auto field : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND}) {
        calendar.set(field, 0);
    }
}

}  // namespace

DaySpan dayOf(double time) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
    // Without ICU's data there are the days of Greenwich.
    constexpr double day = 86400;
    if (U_FAILURE(status)) return {std::floor(time / day) * day, (std::floor(time / day) + 1) * day};
    calendar->setTime(std::floor(time * milliseconds), status);
    toMidnight(*calendar);
    const double start = calendar->getTime(status) / milliseconds;
    calendar->add(UCAL_DATE, 1, status);
    // Where a day began at one in the morning, so does not the next.
    toMidnight(*calendar);
    return {start, calendar->getTime(status) / milliseconds};
}

bool refreshTimeZone() {
    std::unique_ptr<icu::TimeZone> now(icu::TimeZone::detectHostTimeZone());
    if (!now || *now == *std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault())) return false;
    icu::TimeZone::adoptDefault(now.release());
    return true;
}

struct DateFormat::Compiled {
    std::unique_ptr<icu::SimpleDateFormat> format;
};

DateFormat::DateFormat() : compiled_(std::make_unique<Compiled>()) {}

DateFormat::DateFormat(std::string_view skeleton, const std::string& locale) : DateFormat() {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> generator(
        icu::DateTimePatternGenerator::createInstance(localeNamed(locale), status));
    if (U_FAILURE(status)) return;
    compile(text::toUtf8(generator->getBestPattern(text::toUnicode(skeleton), status)), locale);
}

DateFormat DateFormat::ofPattern(std::string_view pattern, const std::string& locale) {
    DateFormat made;
    made.compile(pattern, locale);
    return made;
}

void DateFormat::compile(std::string_view pattern, const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    compiled_->format =
        std::make_unique<icu::SimpleDateFormat>(text::toUnicode(pattern), localeNamed(locale), status);
    if (U_FAILURE(status)) compiled_->format.reset();
}

DateFormat::DateFormat(DateFormat&&) noexcept = default;

DateFormat::~DateFormat() = default;

std::string DateFormat::format(double time) const {
    if (!compiled_->format) return {};
    compiled_->format->adoptTimeZone(icu::TimeZone::createDefault());
    icu::UnicodeString out;
    compiled_->format->format(std::floor(time * milliseconds), out);
    return text::toUtf8(out);
}

}  // namespace dorix
