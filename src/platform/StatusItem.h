#pragma once

#include "platform/ClosureMenuItem.h"

#include <functional>
#include <string>

namespace dorix {

/// The program's entry among the desktop's status icons, where the desktop has such a place. Main executor;
/// nothing blocks.
class StatusItem {
 public:
    virtual ~StatusItem() = default;

    /// Puts it there, also when the place comes up later. `clicked` is a click, `menu` what a right click
    /// opens.
    virtual void show(std::function<void()> clicked, MenuBuilder menu) = 0;

    /// What is read when the pointer rests on it.
    virtual void setToolTip(const std::string& text) = 0;
};

class UnavailableStatusItem final : public StatusItem {
 public:
    void show(std::function<void()>, MenuBuilder) override {}
    void setToolTip(const std::string&) override {}
};

}  // namespace dorix
