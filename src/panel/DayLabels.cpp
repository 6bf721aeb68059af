#include "panel/DayLabels.h"

#include "localdata/Language.h"

#include <utility>

namespace dorix {

namespace {
constexpr const char* weekdayDayAndMonth = "EEEEdMMM";
}

DayLabels::DayLabels(double now) { refresh(now); }

void DayLabels::refresh(double now) {
    refreshTimeZone();
    today_ = dayOf(now);
    yesterday_ = dayOf(today_.start - 1);
    format_ = std::make_unique<DateFormat>(weekdayDayAndMonth, appLocaleIdentifier());
    last_ = {};
    lastLabel_ = nullptr;
}

DayLabels::Label DayLabels::label(double date) {
    if (lastLabel_ != nullptr && last_.contains(date)) return lastLabel_;
    last_ = dayOf(date);
    lastLabel_ = intern(compose(last_));
    return lastLabel_;
}

std::string DayLabels::compose(const DaySpan& day) const {
    if (day == today_) return tr("Hoy");
    if (day == yesterday_) return tr("Ayer");
    return format_->format(day.start);
}

DayLabels::Label DayLabels::intern(std::string label) { return &*labels_.insert(std::move(label)).first; }

}  // namespace dorix
