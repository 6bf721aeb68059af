#pragma once

#include "linux/atspi/AtspiProtocol.h"
#include "platform/Accessibility.h"

#include <cstdint>
#include <expected>
#include <map>
#include <set>
#include <string>

namespace dorix {

class AtspiClient;

/// Which connection on the accessibility bus is which process. Only the registry and the bus itself are
/// asked, never an application. Main executor.
class ApplicationDirectory {
 public:
    /// The root object of the application; cannotComplete when it is not on the bus.
    std::expected<ObjectRef, AXError> find(AtspiClient& client, std::int32_t process);

    /// Whether the connection is an application's own, not that of a part of one.
    bool isApplication(AtspiClient& client, const std::string& bus);

    /// The connection is closed.
    void gone(const std::string& bus);

 private:
    std::map<std::string, std::int32_t> processes_;
    std::set<std::string> applications_;
};

}  // namespace dorix
