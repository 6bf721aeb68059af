#pragma once

#include "service/storage/Database.h"

#include <cstdint>
#include <string_view>

namespace dorix::service {

/// So often in a stretch of time.
struct Limit {
    std::string_view what;
    std::int64_t count = 0;
    std::int64_t seconds = 0;
};

/// Counts one more of it for somebody, and says whether the limit still holds. Who it is is stored as a hash.
bool countWithin(Database& database, const Limit& limit, std::string_view who, std::int64_t now);

}  // namespace dorix::service
