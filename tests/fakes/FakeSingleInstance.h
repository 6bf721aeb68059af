#pragma once

#include "platform/SingleInstance.h"

#include <utility>

namespace dorix {

class FakeSingleInstance final : public SingleInstance {
 public:
    bool claim() override { return isFirst; }
    void onRequests(Requests requests) override { this->requests = std::move(requests); }

    bool isFirst = true;
    Requests requests;
};

}  // namespace dorix
