#include "reading/Messages.h"

#include <cstring>
#include <type_traits>

namespace dorix {

namespace {

using Length = std::uint32_t;

// Where the kind of a document would stand.
constexpr std::uint8_t pictureMark = 0x10;

template <typename T>
void append(std::string& bytes, const T& value) {
    static_assert(std::is_trivially_copyable_v<T>);
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// Takes a value off the front; false when there is not enough.
template <typename T>
bool takeOff(std::string_view& bytes, T& value) {
    if (bytes.size() < sizeof value) return false;
    std::memcpy(&value, bytes.data(), sizeof value);
    bytes.remove_prefix(sizeof value);
    return true;
}

std::string message(const std::string& head, std::string_view rest) {
    std::string bytes;
    bytes.reserve(sizeof(Length) + head.size() + rest.size());
    append(bytes, static_cast<Length>(head.size() + rest.size()));
    return bytes.append(head).append(rest);
}

bool isKnown(DocumentKind kind) { return kind >= DocumentKind::pdf && kind <= DocumentKind::plain; }

bool isKnown(ReadAnswer::Outcome outcome) {
    return outcome >= ReadAnswer::Outcome::text && outcome <= ReadAnswer::Outcome::late;
}

}  // namespace

std::string encoded(const ReadOrder& order) {
    std::string head;
    append(head, order.kind);
    append(head, static_cast<std::uint8_t>(order.isIdle));
    append(head, static_cast<std::uint64_t>(order.limit));
    return message(head, order.file.native());
}

/// The languages stand between spaces, and the picture takes the rest.
std::string encoded(const PictureOrder& order) {
    std::string names;
    for (const auto& language : order.languages) names += language + " ";
    std::string head;
    append(head, pictureMark);
    append(head, static_cast<std::uint64_t>(order.limit));
    append(head, static_cast<Length>(names.size()));
    return message(head + names, order.picture);
}

std::string encoded(const ReadAnswer& answer) {
    std::string head;
    append(head, answer.outcome);
    return message(head, answer.words);
}

std::optional<ReadOrder> readOrderIn(std::string_view body) {
    ReadOrder order;
    std::uint8_t isIdle = 0;
    std::uint64_t limit = 0;
    if (!takeOff(body, order.kind) || !takeOff(body, isIdle) || !takeOff(body, limit) || !isKnown(order.kind))
        return std::nullopt;
    order.isIdle = isIdle != 0;
    order.limit = limit;
    order.file = body;
    return order;
}

std::optional<PictureOrder> pictureOrderIn(std::string_view body) {
    std::uint8_t mark = 0;
    std::uint64_t limit = 0;
    Length namesLength = 0;
    if (!takeOff(body, mark) || mark != pictureMark || !takeOff(body, limit) || !takeOff(body, namesLength) ||
        namesLength > body.size())
        return std::nullopt;
    PictureOrder order{.picture = std::string(body.substr(namesLength)), .languages = {}, .limit = limit};
    auto names = body.substr(0, namesLength);
    for (auto end = names.find(' '); end != std::string_view::npos; end = names.find(' ')) {
        order.languages.emplace_back(names.substr(0, end));
        names.remove_prefix(end + 1);
    }
    return order;
}

std::optional<ReadAnswer> readAnswerIn(std::string_view body) {
    ReadAnswer answer;
    if (!takeOff(body, answer.outcome) || !isKnown(answer.outcome)) return std::nullopt;
    answer.words = body;
    return answer;
}

std::optional<std::string> MessageReader::next() {
    std::string_view rest = bytes_;
    Length length = 0;
    if (isBroken_ || !takeOff(rest, length)) return std::nullopt;
    isBroken_ = length > longestBody_;
    if (isBroken_ || rest.size() < length) return std::nullopt;
    std::string body(rest.substr(0, length));
    bytes_.erase(0, sizeof length + length);
    return body;
}

}  // namespace dorix
