#include "cloud/WireCoding.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace dorix {

namespace {

/// Reads a text from its beginning on; what does not fit fails it for good.
class Cursor {
 public:
    explicit Cursor(std::string_view text) : rest_(text) {}

    int digits(std::size_t count) {
        const auto piece = rest_.substr(0, count);
        const bool fits = piece.size() == count && std::ranges::all_of(piece, isDigit);
        int number = 0;
        if (!fits) {
            fail();
            return 0;
        }
        for (const char digit : piece) number = number * 10 + (digit - '0');
        rest_.remove_prefix(count);
        return number;
    }
    bool takes(char wanted) {
        const bool isNext = rest_.starts_with(wanted);
        if (isNext) rest_.remove_prefix(1);
        return isNext;
    }
    void require(char wanted) {
        if (!takes(wanted)) fail();
    }
    /// The digits behind a point.
    double fraction() {
        double value = 0;
        double unit = 0.1;
        if (rest_.empty() || !isDigit(rest_.front())) fail();
        for (; !rest_.empty() && isDigit(rest_.front()); rest_.remove_prefix(1), unit /= 10) {
            value += unit * (rest_.front() - '0');
        }
        return value;
    }
    void fail() { failed_ = true; }
    bool isThrough() const { return !failed_ && rest_.empty(); }

 private:
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    std::string_view rest_;
    bool failed_ = false;
};

/// Seconds to the east of Greenwich.
int zone(Cursor& text) {
    if (text.takes('Z')) return 0;
    const bool isWest = text.takes('-');
    if (!isWest) text.require('+');
    const int hours = text.digits(2);
    text.takes(':');
    const int minutes = text.digits(2);
    if (hours > 23 || minutes > 59) text.fail();
    const int seconds = hours * 3600 + minutes * 60;
    return isWest ? -seconds : seconds;
}

}  // namespace

std::optional<double> timeFromWire(std::string_view text) {
    Cursor cursor(text);
    const std::chrono::year year(cursor.digits(4));
    cursor.require('-');
    const std::chrono::month month(static_cast<unsigned>(cursor.digits(2)));
    cursor.require('-');
    const std::chrono::day day(static_cast<unsigned>(cursor.digits(2)));
    cursor.require('T');
    const int hour = cursor.digits(2);
    cursor.require(':');
    const int minute = cursor.digits(2);
    cursor.require(':');
    const int second = cursor.digits(2);
    const double fraction = cursor.takes('.') ? cursor.fraction() : 0;
    const int offset = zone(cursor);
    const std::chrono::year_month_day date(year, month, day);
    constexpr int leapSecond = 60;
    if (!cursor.isThrough() || !date.ok() || hour > 23 || minute > 59 || second > leapSecond)
        return std::nullopt;
    const std::chrono::sys_seconds moment = std::chrono::sys_days(date) + std::chrono::hours(hour) +
                                            std::chrono::minutes(minute) +
                                            std::chrono::seconds(second - offset);
    return static_cast<double>(moment.time_since_epoch().count()) + fraction;
}

std::string wireTime(double time) {
    using std::chrono::floor;
    const auto milliseconds = static_cast<std::int64_t>(std::round(time * 1000));
    const std::chrono::sys_time<std::chrono::milliseconds> moment{std::chrono::milliseconds(milliseconds)};
    const auto midnight = floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(midnight);
    const std::chrono::hh_mm_ss clock(moment - midnight);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
                  static_cast<int>(clock.subseconds().count()));
    return text.data();
}

const std::string* stringAt(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : found->get_ptr<const std::string*>();
}

double Decoder::date(const Json& object, const char* key) const {
    const auto* text = stringAt(object, key);
    return (text ? timeFromWire(*text) : std::nullopt).value_or(now);
}

}  // namespace dorix
