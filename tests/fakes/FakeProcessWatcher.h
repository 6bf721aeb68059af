#pragma once

#include "platform/ProcessWatcher.h"

#include <map>
#include <set>
#include <utility>

namespace dorix {

/// Processes that end when the test says so.
class FakeProcessWatcher final : public ProcessWatcher {
 public:
    Token watchExit(std::int32_t process, std::function<void()> onExit) override {
        if (!running.contains(process)) return nullptr;
        auto watch = std::make_shared<std::function<void()>>(std::move(onExit));
        watches_[process] = watch;
        return watch;
    }

    void end(std::int32_t process) {
        running.erase(process);
        if (const auto watch = watches_[process].lock()) (*watch)();
    }

    std::set<std::int32_t> running;

 private:
    std::map<std::int32_t, std::weak_ptr<std::function<void()>>> watches_;
};

}  // namespace dorix
