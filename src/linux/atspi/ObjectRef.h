#pragma once

#include <string>

namespace dorix {

/// Where an accessible object is: the connection of the process that holds it, and its path there.
struct ObjectRef {
    std::string bus;
    std::string path;

    bool operator==(const ObjectRef&) const = default;
};

}  // namespace dorix
