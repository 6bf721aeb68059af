#include "download/RemoteFile.h"

#include "base/text/Url.h"

#include <utility>

namespace dorix {

std::string mirrored(const std::string& url, const Mirrors& mirrors) {
    const std::pair<const std::string, std::string>* best = nullptr;
    for (const auto& row : mirrors) {
        const bool isMeant = !row.first.empty() && url.starts_with(row.first) && isWebAddress(row.second);
        if (isMeant && (best == nullptr || row.first.size() > best->first.size())) best = &row;
    }
    return best == nullptr ? url : best->second + url.substr(best->first.size());
}

}  // namespace dorix
