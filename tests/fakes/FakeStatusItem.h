#pragma once

#include "platform/StatusItem.h"

#include <string>
#include <utility>

namespace dorix {

class FakeStatusItem final : public StatusItem {
 public:
    void show(std::function<void()> whenClicked, MenuBuilder builder) override {
        clicked = std::move(whenClicked);
        menu = std::move(builder);
    }
    void setToolTip(const std::string& text) override { toolTip = text; }

    std::function<void()> clicked;
    MenuBuilder menu;
    std::string toolTip;
};

}  // namespace dorix
