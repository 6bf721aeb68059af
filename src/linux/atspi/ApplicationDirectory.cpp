#include "linux/atspi/ApplicationDirectory.h"

#include "linux/atspi/AtspiClient.h"

#include <algorithm>

namespace dorix {

namespace {

constexpr const char* rootPath = "/org/a11y/atspi/accessible/root";
constexpr const char* registry = "org.a11y.atspi.Registry";

}  // namespace

std::expected<ObjectRef, AXError> ApplicationDirectory::find(AtspiClient& client, std::int32_t process) {
    const auto isIt = [process](const auto& known) { return known.second == process; };
    if (const auto known = std::ranges::find_if(processes_, isIt); known != processes_.end()) {
        return ObjectRef{known->first, rootPath};
    }
    const auto registered = client.children({registry, rootPath});
    if (!registered) return std::unexpected(registered.error());
    for (const auto& root : *registered) {
        applications_.insert(root.bus);
        if (processes_.contains(root.bus)) continue;
        const auto owner = client.process(root.bus);
        if (!owner) continue;
        processes_.emplace(root.bus, *owner);
        if (*owner == process) return root;
    }
    return std::unexpected(AXError::cannotComplete);
}

bool ApplicationDirectory::isApplication(AtspiClient& client, const std::string& bus) {
    if (applications_.contains(bus)) return true;
    const auto registered = client.children({registry, rootPath});
    if (!registered) return false;
    for (const auto& root : *registered) applications_.insert(root.bus);
    return applications_.contains(bus);
}

void ApplicationDirectory::gone(const std::string& bus) {
    processes_.erase(bus);
    applications_.erase(bus);
}

}  // namespace dorix
