#pragma once

#include <exception>

namespace dorix {

/// Thrown out of a wait whose task was cancelled. It unwinds the task and is no failure to report.
class Cancelled : public std::exception {
 public:
    const char* what() const noexcept override { return "cancelled"; }
};

}  // namespace dorix
