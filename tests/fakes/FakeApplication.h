#pragma once

#include "platform/Application.h"

namespace dorix {

class FakeApplication final : public Application {
 public:
    void terminate() override { ++terminations; }
    void relaunch() override { ++relaunches; }

    int terminations = 0;
    int relaunches = 0;
};

}  // namespace dorix
