#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dorix {

/// Where an accessible object is: the connection of the process that holds it, and its path there.
struct ObjectRef {
    std::string bus;
    std::string path;

    bool operator==(const ObjectRef&) const = default;
};

}  // namespace dorix

namespace dorix::atspi {

/// Numbers of the protocol; they never change.
enum class Role : std::uint32_t {
    comboBox = 11,
    passwordText = 40,
    terminal = 60,
    text = 61,
    treeTable = 66,
    entry = 79,
    documentFrame = 82,
    documentWeb = 95,
};

/// Positions in a state set.
enum class State : unsigned {
    active = 1,
    defunct = 6,
    editable = 7,
    focused = 12,
    multiLine = 17,
    showing = 25,
    managesDescendants = 31,
    readOnly = 43,
};

using StateSet = std::uint64_t;

constexpr StateSet bit(State state) { return StateSet{1} << static_cast<unsigned>(state); }
constexpr bool has(StateSet states, State state) { return (states & bit(state)) != 0; }

/// The role in the product's vocabulary. Text that cannot be changed is "AXStaticText" wherever the system
/// calls it an entry or text, so that nobody takes it for a place to type in. Pure, any thread.
std::string_view axRole(Role role, StateSet states);

/// Whether the object is a page or a document of its own.
bool isDocument(Role role);

}  // namespace dorix::atspi
