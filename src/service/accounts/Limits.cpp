#include "service/accounts/Limits.h"

#include "service/accounts/Secrets.h"

#include <string>

namespace dorix::service {

bool countWithin(Database& database, const Limit& limit, std::string_view who, std::int64_t now) {
    const auto starts = now - now % limit.seconds;
    const auto subject = hashOf(std::string(limit.what) + " " + std::string(who));
    const auto rows = database.run(
        "INSERT INTO counters (subject, starts, ends, count) VALUES ($1, $2, $3, 1) "
        "ON CONFLICT (subject, starts) DO UPDATE SET count = counters.count + 1 RETURNING count",
        {subject, std::to_string(starts), std::to_string(starts + limit.seconds)});
    return std::stoll(rows.at(0).at(0)) <= limit.count;
}

}  // namespace dorix::service
