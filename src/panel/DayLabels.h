#pragma once

#include "base/text/Calendar.h"

#include <memory>
#include <string>
#include <unordered_set>

namespace dorix {

/// The names of the days that items fall on, in the app language and in local time. Main executor.
class DayLabels {
 public:
    /// Labels stay valid as long as this. Two days of equal label have one string, so that pointers tell.
    using Label = const std::string*;

    /// "Hoy" is the day of `now`. Also takes the language and the time zone anew.
    explicit DayLabels(double now);

    /// Takes `now`, the language and the time zone anew; labels from before are no longer right.
    void refresh(double now);

    /// The label of a date, in seconds since 1970. Quick for dates in order.
    Label label(double date);

    /// Today, as it was taken last.
    const DaySpan& today() const { return today_; }

 private:
    Label intern(std::string label);
    std::string compose(const DaySpan& day) const;

    DaySpan today_;
    DaySpan yesterday_;
    std::unique_ptr<DateFormat> format_;
    std::unordered_set<std::string> labels_;
    DaySpan last_;  // the day that was asked for last
    Label lastLabel_ = nullptr;
};

}  // namespace dorix
