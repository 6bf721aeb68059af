#include "linux/atspi/AtspiClient.h"

#include <algorithm>
#include <array>
#include <utility>

namespace dorix {

namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* textInterface = "org.a11y.atspi.Text";
constexpr std::string_view nullPath = "/org/a11y/atspi/null";

AXError axError(std::string_view name) {
    constexpr std::string_view prefix = "org.freedesktop.DBus.Error.";
    if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
    if (name == "Disconnected") return AXError::apiDisabled;
    if (name == "NoReply" || name == "Timeout") return AXError::cannotComplete;
    if (name == "UnknownObject" || name == "ServiceUnknown" || name == "NameHasNoOwner") {
        return AXError::invalidUIElement;
    }
    if (name == "UnknownMethod" || name == "UnknownInterface" || name == "UnknownProperty" ||
        name == "NotSupported" || name == "InvalidArgs") {
        return AXError::attributeUnsupported;
    }
    return AXError::failure;
}

std::unexpected<AXError> malformed() { return std::unexpected(AXError::failure); }

std::optional<std::string> readString(sd_bus_message* message) {
    const char* text = nullptr;
    if (sd_bus_message_read(message, "s", &text) <= 0) return std::nullopt;
    return std::string(text);
}

/// Nothing at the end of a list or on an answer of another form.
std::optional<ObjectRef> readObject(sd_bus_message* message) {
    const char* bus = nullptr;
    const char* path = nullptr;
    if (sd_bus_message_read(message, "(so)", &bus, &path) <= 0) return std::nullopt;
    return ObjectRef{bus, path};
}

std::optional<std::vector<ObjectRef>> readObjects(sd_bus_message* message) {
    if (sd_bus_message_enter_container(message, 'a', "(so)") < 0) return std::nullopt;
    std::vector<ObjectRef> objects;
    while (objects.size() < AtspiClient::maxChildren) {
        auto object = readObject(message);
        if (!object) break;
        objects.push_back(std::move(*object));
    }
    return objects;
}

bool isSearchMark(std::string_view key, std::string_view value) {
    return (key == "text-input-type" && value == "search") ||
           (key == "xml-roles" && value.contains("searchbox"));
}

/// A rule that asks for all of these states and nothing else.
void appendMatchRule(sd_bus_message* message, atspi::State state) {
    constexpr std::int32_t matchAll = 1;
    const auto low = static_cast<std::int32_t>(atspi::bit(state) & 0xFFFFFFFF);
    const auto high = static_cast<std::int32_t>(atspi::bit(state) >> 32);
    sd_bus_message_append(message, "(aiia{ss}iaiiasib)", 2, low, high, matchAll, 0, matchAll, 0, matchAll, 0,
                          matchAll, 0);
}

}  // namespace

sdbus::Message AtspiClient::ask(const ObjectRef& object, const char* interface, const char* member) const {
    if (!connection_) return nullptr;
    return connection_->newCall(object.bus, object.path, interface, member);
}

AtspiClient::Answer<sdbus::Message> AtspiClient::send(const sdbus::Message& request) {
    if (!connection_ || !connection_->isReady()) return std::unexpected(AXError::apiDisabled);
    if (!request) return std::unexpected(AXError::invalidUIElement);
    auto reply = connection_->call(request, deadline_ - clock_.now());
    if (!reply) return std::unexpected(axError(reply.error()));
    return std::move(*reply);
}

AtspiClient::Answer<sdbus::Message> AtspiClient::property(const ObjectRef& object, const char* interface,
                                                          const char* name, const char* type) {
    auto request = ask(object, "org.freedesktop.DBus.Properties", "Get");
    if (request) sd_bus_message_append(request.get(), "ss", interface, name);
    auto reply = send(request);
    if (reply && sd_bus_message_enter_container(reply->get(), 'v', type) < 0) return malformed();
    return reply;
}

AtspiClient::Answer<atspi::Role> AtspiClient::role(const ObjectRef& object) {
    const auto reply = send(ask(object, accessible, "GetRole"));
    if (!reply) return std::unexpected(reply.error());
    std::uint32_t role = 0;
    if (sd_bus_message_read_basic(reply->get(), 'u', &role) <= 0) return malformed();
    return static_cast<atspi::Role>(role);
}

AtspiClient::Answer<atspi::StateSet> AtspiClient::states(const ObjectRef& object) {
    const auto reply = send(ask(object, accessible, "GetState"));
    if (!reply) return std::unexpected(reply.error());
    const void* words = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(reply->get(), 'u', &words, &size) < 0) return malformed();
    const auto* word = static_cast<const std::uint32_t*>(words);
    atspi::StateSet states = 0;
    if (size >= sizeof(*word)) states |= word[0];
    if (size >= 2 * sizeof(*word)) states |= atspi::StateSet{word[1]} << 32;
    return states;
}

AtspiClient::Answer<std::string> AtspiClient::name(const ObjectRef& object) {
    const auto reply = property(object, accessible, "Name", "s");
    if (!reply) return std::unexpected(reply.error());
    auto name = readString(reply->get());
    if (!name) return malformed();
    return std::move(*name);
}

AtspiClient::Answer<ObjectRef> AtspiClient::parent(const ObjectRef& object) {
    const auto reply = property(object, accessible, "Parent", "(so)");
    if (!reply) return std::unexpected(reply.error());
    auto parent = readObject(reply->get());
    if (!parent) return malformed();
    if (parent->bus.empty() || parent->path == nullPath) return std::unexpected(AXError::noValue);
    return std::move(*parent);
}

AtspiClient::Answer<std::vector<ObjectRef>> AtspiClient::children(const ObjectRef& object) {
    const auto reply = send(ask(object, accessible, "GetChildren"));
    if (!reply) return std::unexpected(reply.error());
    auto children = readObjects(reply->get());
    if (!children) return malformed();
    std::erase_if(*children, [](const ObjectRef& child) { return child.path == nullPath; });
    return std::move(*children);
}

AtspiClient::Answer<bool> AtspiClient::isSearchField(const ObjectRef& object) {
    const auto reply = send(ask(object, accessible, "GetAttributes"));
    if (!reply) return std::unexpected(reply.error());
    if (sd_bus_message_enter_container(reply->get(), 'a', "{ss}") < 0) return malformed();
    const char* key = nullptr;
    const char* value = nullptr;
    while (sd_bus_message_read(reply->get(), "{ss}", &key, &value) > 0) {
        if (isSearchMark(key, value)) return true;
    }
    return false;
}

AtspiClient::Answer<ObjectRef> AtspiClient::firstBelow(const ObjectRef& object, atspi::State state) {
    constexpr std::uint32_t canonicalOrder = 1;
    constexpr std::int32_t one = 1;
    const auto request = ask(object, "org.a11y.atspi.Collection", "GetMatches");
    if (request) {
        appendMatchRule(request.get(), state);
        sd_bus_message_append(request.get(), "uib", canonicalOrder, one, 1);
    }
    const auto reply = send(request);
    if (!reply) return std::unexpected(reply.error());
    const auto found = readObjects(reply->get());
    if (!found) return malformed();
    if (found->empty()) return std::unexpected(AXError::noValue);
    return found->front();
}

AtspiClient::Answer<AtspiClient::Range> AtspiClient::selection(const ObjectRef& object) {
    const auto counted = send(ask(object, textInterface, "GetNSelections"));
    if (!counted) return std::unexpected(counted.error());
    std::int32_t count = 0;
    if (sd_bus_message_read_basic(counted->get(), 'i', &count) <= 0) return malformed();
    if (count <= 0) return std::unexpected(AXError::noValue);
    const auto request = ask(object, textInterface, "GetSelection");
    if (request) sd_bus_message_append(request.get(), "i", 0);
    const auto reply = send(request);
    if (!reply) return std::unexpected(reply.error());
    Range range;
    if (sd_bus_message_read(reply->get(), "ii", &range.start, &range.end) <= 0) return malformed();
    if (range.start > range.end) std::swap(range.start, range.end);
    if (range.start == range.end) return std::unexpected(AXError::noValue);
    return range;
}

AtspiClient::Answer<std::string> AtspiClient::text(const ObjectRef& object, Range range) {
    const auto request = ask(object, textInterface, "GetText");
    if (request) sd_bus_message_append(request.get(), "ii", range.start, range.end);
    const auto reply = send(request);
    if (!reply) return std::unexpected(reply.error());
    auto text = readString(reply->get());
    if (!text) return malformed();
    return std::move(*text);
}

AtspiClient::Answer<std::int32_t> AtspiClient::caret(const ObjectRef& object) {
    auto place = number(object, "CaretOffset");
    if (place && *place < 0) return std::unexpected(AXError::noValue);
    return place;
}

AtspiClient::Answer<std::int32_t> AtspiClient::textLength(const ObjectRef& object) {
    return number(object, "CharacterCount");
}

AtspiClient::Answer<std::int32_t> AtspiClient::number(const ObjectRef& object, const char* name) {
    const auto reply = property(object, textInterface, name, "i");
    if (!reply) return std::unexpected(reply.error());
    std::int32_t value = 0;
    if (sd_bus_message_read_basic(reply->get(), 'i', &value) <= 0) return malformed();
    return value;
}

AtspiClient::Answer<std::string> AtspiClient::documentAttribute(const ObjectRef& object, const char* name) {
    const auto request = ask(object, "org.a11y.atspi.Document", "GetAttributeValue");
    if (request) sd_bus_message_append(request.get(), "s", name);
    const auto reply = send(request);
    if (!reply) return std::unexpected(reply.error());
    auto value = readString(reply->get());
    if (!value) return malformed();
    if (value->empty()) return std::unexpected(AXError::noValue);
    return std::move(*value);
}

AtspiClient::Answer<std::int32_t> AtspiClient::process(const std::string& bus) {
    const auto request = ask({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
                             "GetConnectionUnixProcessID");
    if (request) sd_bus_message_append(request.get(), "s", bus.c_str());
    const auto reply = send(request);
    if (!reply) return std::unexpected(reply.error());
    std::uint32_t process = 0;
    if (sd_bus_message_read_basic(reply->get(), 'u', &process) <= 0) return malformed();
    return static_cast<std::int32_t>(process);
}

}  // namespace dorix
