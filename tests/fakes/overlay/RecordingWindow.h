#pragma once

#include "overlay/AppWindow.h"

#include <string>
#include <vector>

namespace dorix {

/// Notes down what is asked of it, among what else the test notes down.
class RecordingWindow final : public AppWindow {
 public:
    explicit RecordingWindow(std::vector<std::string>& log) : log_(log) {}

    bool opensRight = true;

    bool place() override {
        log_.emplace_back("place");
        return opensRight;
    }
    void show() override { log_.emplace_back("show"); }
    void hide() override { log_.emplace_back("hide"); }
    void takeKeyboard() override { log_.emplace_back("takeKeyboard"); }
    void clickedOutside() override { log_.emplace_back("clickedOutside"); }

 private:
    std::vector<std::string>& log_;
};

}  // namespace dorix
