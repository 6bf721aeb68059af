#include "localdata/HistoryRows.h"

#include "base/Json.h"
#include "base/Uuid.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace dorix {

namespace {

template <typename Meta, typename Visitor>
void forEachField(Meta& meta, Visitor visit) {
    visit("tone", meta.tone);
    visit("engine", meta.engine);
    visit("inserted", meta.inserted);
    visit("durationMs", meta.durationMs);
    visit("source", meta.source);
    visit("context", meta.context);
    visit("sources", meta.sources);
}

bool isOfType(const Json& value, const std::string& /*type*/) { return value.is_string(); }

bool isOfType(const Json& value, bool /*type*/) { return value.is_boolean(); }

/// A whole number may be written with a fraction of zero.
bool isOfType(const Json& value, std::int64_t /*type*/) {
    if (value.is_number_unsigned())
        return value.get<std::uint64_t>() <= std::numeric_limits<std::int64_t>::max();
    if (value.is_number_integer()) return true;
    if (!value.is_number_float()) return false;
    const auto number = value.get<double>();
    return std::trunc(number) == number && std::abs(number) < 0x1p63;
}

bool isOfType(const Json& value, const std::vector<std::string>& /*type*/) {
    return value.is_array() && std::ranges::all_of(value, [](const Json& one) { return one.is_string(); });
}

}  // namespace

std::optional<std::string> encodeMeta(const HistoryItem::Meta& meta) {
    Json object = Json::object();
    forEachField(meta, [&](const char* key, const auto& field) {
        if (field) object[key] = *field;
    });
    try {
        return object.dump();
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

HistoryItem::Meta decodeMeta(std::string_view json) {
    const Json object = Json::parse(json, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) return {};
    HistoryItem::Meta meta;
    bool fits = true;
    forEachField(meta, [&]<typename T>(const char* key, std::optional<T>& field) {
        const auto found = object.find(key);
        if (found == object.end() || found->is_null()) return;
        fits = fits && isOfType(*found, T{});
        if (fits) field = found->template get<T>();
    });
    return fits ? meta : HistoryItem::Meta{};
}

}  // namespace dorix

namespace dorix::historyrows {

/// The file may have been written by anybody, so any column may be NULL.
std::optional<HistoryItem> itemOf(sqlite3_stmt* row) {
    const auto text = [row](int column) { return sqlite::columnText(row, column).value_or(""); };
    const auto kind = historyKind(text(1));
    if (!kind) return std::nullopt;
    auto id = sqlite::columnText(row, 0);
    return HistoryItem{.id = id ? *std::move(id) : makeUuid(),
                       .kind = *kind,
                       .app = text(2),
                       .bundleID = sqlite::columnText(row, 3),
                       .title = text(4),
                       .createdAt = sqlite3_column_double(row, 5),
                       .query = text(6),
                       .answer = text(7),
                       .meta = decodeMeta(text(8))};
}

}  // namespace dorix::historyrows
