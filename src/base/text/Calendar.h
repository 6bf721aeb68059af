#pragma once

#include <memory>
#include <string>
#include <string_view>

/// Days and dates in the time zone of the computer. Times are seconds since 1970.
namespace dorix {

/// A calendar day, of 23 to 25 hours: from `start` up to, and without, `end`.
struct DaySpan {
    double start = 0;
    double end = 0;

    bool contains(double time) const { return start <= time && time < end; }
    bool operator==(const DaySpan&) const = default;
};

/// The day of a time. Any thread.
DaySpan dayOf(double time);

/// Looks again which time zone the computer is in, for all that is here; without it that of the first use
/// holds. Whether it is another one than before. Any thread.
bool refreshTimeZone();

/// Dates as people of a locale write them, in the time zone of the moment of writing. Making one costs far
/// more than using it. One thread at a time.
class DateFormat {
 public:
    /// `skeleton` says what is to be told and how fully, in the letters of Unicode's date patterns (UTS 35):
    /// "EEEEdMMM" is the weekday in full, the day and the abbreviated month. The locale, such as "es_ES",
    /// decides on order and punctuation.
    DateFormat(std::string_view skeleton, const std::string& locale);
    /// Written just as a date pattern says (UTS 35): "EEEE HH:mm".
    static DateFormat ofPattern(std::string_view pattern, const std::string& locale);
    ~DateFormat();
    DateFormat(DateFormat&&) noexcept;
    DateFormat& operator=(const DateFormat&) = delete;

    std::string format(double time) const;

 private:
    DateFormat();
    void compile(std::string_view pattern, const std::string& locale);

    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
};

}  // namespace dorix
