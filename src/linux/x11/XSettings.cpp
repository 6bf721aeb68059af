#include "linux/x11/XSettings.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace dorix {

namespace {

enum class Type : std::uint8_t { integer = 0, string = 1, color = 2 };

constexpr std::size_t colorSize = 8;

/// Reads what the other side has written in its own order of bytes. Nothing is left after the first thing
/// that is missing.
class Reader {
 public:
    explicit Reader(std::string_view bytes) : left_(bytes) {}

    void setBigEndian(bool big) { big_ = big; }

    std::string_view take(std::size_t size) {
        if (size > left_.size()) {
            left_ = {};
            failed_ = true;
            return {};
        }
        const auto taken = left_.substr(0, size);
        left_.remove_prefix(size);
        return taken;
    }

    std::uint32_t number(std::size_t size) {
        std::uint32_t value = 0;
        const auto bytes = take(size);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const auto byte = static_cast<std::uint8_t>(bytes[big_ ? i : bytes.size() - 1 - i]);
            value = value << 8U | byte;
        }
        return value;
    }

    /// Texts are filled up to four bytes.
    std::string_view text(std::size_t size) {
        const auto text = take(size);
        take((4 - size % 4) % 4);
        return text;
    }

    bool failed() const { return failed_; }

 private:
    std::string_view left_;
    bool big_ = false;
    bool failed_ = false;
};

/// One setting; its value is none when it is of a kind that is left out.
std::optional<std::pair<std::string, std::optional<std::string>>> readSetting(Reader& reader) {
    const auto type = static_cast<Type>(reader.number(1));
    reader.take(1);
    std::string name(reader.text(reader.number(2)));
    reader.number(4);  // the serial of its last change
    std::optional<std::string> value;
    if (type == Type::integer) {
        value = std::to_string(static_cast<std::int32_t>(reader.number(4)));
    } else if (type == Type::string) {
        value = reader.text(reader.number(4));
    } else if (type == Type::color) {
        reader.take(colorSize);
    } else {
        return std::nullopt;
    }
    if (reader.failed()) return std::nullopt;
    return std::pair(std::move(name), std::move(value));
}

}  // namespace

XSettings parseXSettings(std::string_view bytes) {
    XSettings settings;
    Reader reader(bytes);
    reader.setBigEndian(reader.number(1) == 1);
    reader.take(3);
    reader.number(4);  // the serial of this state
    const std::uint32_t count = reader.number(4);
    for (std::uint32_t i = 0; i < count; ++i) {
        auto setting = readSetting(reader);
        if (!setting) break;
        if (setting->second)
            settings.insert_or_assign(std::move(setting->first), std::move(*setting->second));
    }
    return settings;
}

}  // namespace dorix
