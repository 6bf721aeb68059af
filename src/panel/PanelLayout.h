#pragma once

#include "base/Observable.h"

namespace dorix {

/// What of the panel there is room for. In a narrow window the detail takes the list's place. Main executor.
struct PanelLayout {
    static constexpr double narrowBelow = 660;  // points

    Observable<bool> narrow;
    /// In a narrow window: the user looks at the item rather than at the list.
    Observable<bool> detailOpen;
    int rowsPerPage = 1;  // of the list, as far as it shows

    void setWidth(double points) { narrow.set(points < narrowBelow); }

    bool showsDetail() const { return !narrow.get() || detailOpen.get(); }
    bool showsList() const { return !narrow.get() || !detailOpen.get(); }
};

}  // namespace dorix
