#pragma once

#include "context/AppContext.h"

#include <string>

namespace dorix {

/// Carries out what is ordered, once the user has confirmed it. Main executor.
class Actions {
 public:
    virtual ~Actions() = default;

    virtual void propose(std::string instruction, AppContext context) = 0;
};

}  // namespace dorix
