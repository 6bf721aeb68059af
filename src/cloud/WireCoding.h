#pragma once

#include "base/Json.h"
#include "cloud/APIError.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

/// How records cross the wire to the cloud service. Times are seconds since 1970. Any thread.
namespace dorix {

/// The time that an ISO 8601 text names: date, time, with or without a fraction, and zone
/// ("2026-03-01T09:30:00.250+01:00").
std::optional<double> timeFromWire(std::string_view text);

/// In the same form, to the millisecond, in UTC.
std::string wireTime(double time);

/// The string under `key` of an object; nullptr when there is none.
const std::string* stringAt(const Json& object, const char* key);

/// What a record may need beside its JSON to be read.
struct Decoder {
    double now = 0;  // seconds since 1970

    /// The time in the field; a bad or missing one counts as now.
    double date(const Json& object, const char* key) const;
};

/// Records that come over the wire have a static `decode`, which throws what the JSON library throws.
template <typename T>
concept Decodable = requires(const Json& json, const Decoder& decoder) {
    { T::decode(json, decoder) } -> std::same_as<T>;
};

/// Throws DecodingError.
template <Decodable T>
T decoded(std::string_view body, const Decoder& decoder) {
    try {
        return T::decode(Json::parse(body), decoder);
    } catch (const Json::exception&) {
        throw DecodingError();
    }
}

}  // namespace dorix
