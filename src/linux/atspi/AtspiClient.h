#pragma once

#include "base/async/Executor.h"
#include "linux/atspi/AtspiProtocol.h"
#include "linux/dbus/BusConnection.h"
#include "platform/Accessibility.h"

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// Questions to accessible objects, all of which share one time budget: once it is spent every answer is
/// cannotComplete, at once. Main executor; a question blocks for what is left of the budget at most.
///
/// Spoken over the bus itself, not through libatspi: that has one time-out for all of the process's calls,
/// where each question here may take what the ones before it have left, and no more.
class AtspiClient {
 public:
    template <typename T>
    using Answer = std::expected<T, AXError>;

    /// No more children than these are told: a longer list is not a layout to look through.
    static constexpr std::size_t maxChildren = 256;

    struct Range {
        std::int32_t start = 0;
        std::int32_t end = 0;
    };

    /// `connection` may be nullptr: then everything is apiDisabled. It outlives the client.
    AtspiClient(BusConnection* connection, const Executor& clock, double deadline)
        : connection_(connection), clock_(clock), deadline_(deadline) {}

    Answer<atspi::Role> role(const ObjectRef& object);
    Answer<atspi::StateSet> states(const ObjectRef& object);
    Answer<std::string> name(const ObjectRef& object);
    /// noValue at the top.
    Answer<ObjectRef> parent(const ObjectRef& object);
    Answer<std::vector<ObjectRef>> children(const ObjectRef& object);
    /// Whether it is marked as a field to search with.
    Answer<bool> isSearchField(const ObjectRef& object);

    /// The first object below with that state, found by the application itself; noValue when there is none.
    Answer<ObjectRef> firstBelow(const ObjectRef& object, atspi::State state);

    /// The first selected stretch of the object's text; noValue when nothing is selected.
    Answer<Range> selection(const ObjectRef& object);
    Answer<std::string> text(const ObjectRef& object, Range range);
    /// Where the cursor stands in the object's text, in characters; noValue where it does not.
    Answer<std::int32_t> caret(const ObjectRef& object);
    /// The number of characters in the object's text.
    Answer<std::int32_t> textLength(const ObjectRef& object);
    Answer<std::string> documentAttribute(const ObjectRef& object, const char* name);

    /// The process behind a connection, as the bus knows it.
    Answer<std::int32_t> process(const std::string& bus);

 private:
    sdbus::Message ask(const ObjectRef& object, const char* interface, const char* member) const;
    Answer<sdbus::Message> send(const sdbus::Message& request);
    /// A property of the object's text.
    Answer<std::int32_t> number(const ObjectRef& object, const char* name);
    Answer<sdbus::Message> property(const ObjectRef& object, const char* interface, const char* name,
                                    const char* type);

    BusConnection* connection_;
    const Executor& clock_;
    const double deadline_;
};

}  // namespace dorix
