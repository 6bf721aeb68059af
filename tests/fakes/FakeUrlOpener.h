#pragma once

#include "platform/Processes.h"

#include <string>
#include <vector>

namespace dorix {

class FakeUrlOpener final : public UrlOpener {
 public:
    bool open(const std::string& url) override {
        opened.push_back(url);
        return true;
    }

    std::vector<std::string> opened;
};

}  // namespace dorix
