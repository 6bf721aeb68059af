#include "linux/x11/X11ScreenWindows.h"

#include <xcb/randr.h>
#include <xcb/res.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <ranges>
#include <set>
#include <span>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

using Contents = ScreenContent::Contents;
using PropertyCookie = xcb_get_property_cookie_t;
using Property = XcbPtr<xcb_get_property_reply_t>;

constexpr std::size_t mostWindows = 2000;
constexpr std::uint32_t mostPropertyWords = 64 * 1024;
constexpr double usualResolution = 96;  // dots an inch
constexpr double finest = 8;            // pixels a point
constexpr std::uint32_t everyWorkspace = 0xFFFF'FFFF;
// Where the layers of such windows are, above the ordinary ones.
constexpr int aboveLayer = 3;
constexpr int dockLayer = 20;
constexpr int popUpLayer = 101;

/// The names of properties and their values; XCB_ATOM_NONE for those that nobody here uses.
struct Atoms {
    explicit Atoms(const X11Visit& visit) {
        using Row = std::pair<std::string_view, xcb_atom_t Atoms::*>;
        constexpr std::array rows{Row{"_NET_SUPPORTING_WM_CHECK", &Atoms::check},
                                  Row{"_NET_CLIENT_LIST_STACKING", &Atoms::stacking},
                                  Row{"_NET_WM_STATE", &Atoms::state},
                                  Row{"_NET_WM_STATE_HIDDEN", &Atoms::hidden},
                                  Row{"_NET_WM_STATE_ABOVE", &Atoms::above},
                                  Row{"_NET_WM_WINDOW_TYPE", &Atoms::type},
                                  Row{"_NET_WM_WINDOW_TYPE_DOCK", &Atoms::dock},
                                  Row{"_NET_WM_WINDOW_TYPE_DESKTOP", &Atoms::desktop},
                                  Row{"_NET_WM_PID", &Atoms::process},
                                  Row{"_GTK_FRAME_EXTENTS", &Atoms::extents},
                                  Row{"_NET_WM_DESKTOP", &Atoms::workspace},
                                  Row{"_NET_CURRENT_DESKTOP", &Atoms::currentSpace},
                                  Row{"_NET_WM_CM_S0", &Atoms::compositor}};
        std::array<xcb_intern_atom_cookie_t, rows.size()> asked{};
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto name = rows[i].first;
            asked[i] = xcb_intern_atom(visit.get(), 1, static_cast<std::uint16_t>(name.size()), name.data());
        }
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto answer = visit.ask(xcb_intern_atom_reply, asked[i]);
            if (answer) this->*rows[i].second = answer->atom;
        }
    }

    xcb_atom_t check = XCB_ATOM_NONE;
    xcb_atom_t stacking = XCB_ATOM_NONE;
    xcb_atom_t state = XCB_ATOM_NONE;
    xcb_atom_t hidden = XCB_ATOM_NONE;
    xcb_atom_t above = XCB_ATOM_NONE;
    xcb_atom_t type = XCB_ATOM_NONE;
    xcb_atom_t dock = XCB_ATOM_NONE;
    xcb_atom_t desktop = XCB_ATOM_NONE;
    xcb_atom_t process = XCB_ATOM_NONE;
    xcb_atom_t extents = XCB_ATOM_NONE;
    xcb_atom_t workspace = XCB_ATOM_NONE;
    xcb_atom_t currentSpace = XCB_ATOM_NONE;
    xcb_atom_t compositor = XCB_ATOM_NONE;
};

PropertyCookie askProperty(const X11Visit& visit, xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
    return xcb_get_property(visit.get(), 0, window, name, type, 0, mostPropertyWords);
}

/// The numbers of 32 bits that a property holds.
std::span<const std::uint32_t> numbers(const Property& property) {
    if (!property || property->format != 32) return {};
    return {static_cast<const std::uint32_t*>(xcb_get_property_value(property.get())), property->value_len};
}

std::string_view text(const Property& property) {
    if (!property || property->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(property.get())), property->value_len};
}

bool contains(std::span<const std::uint32_t> values, std::uint32_t value) {
    return value != XCB_ATOM_NONE && std::ranges::find(values, value) != values.end();
}

/// What is asked of a window, before its answers are waited for.
struct Question {
    Question(const X11Visit& visit, const Atoms& atoms, xcb_window_t asked)
        : window(asked),
          attributes(xcb_get_window_attributes(visit.get(), window)),
          geometry(xcb_get_geometry(visit.get(), window)),
          state(askProperty(visit, window, atoms.state, XCB_ATOM_ATOM)),
          type(askProperty(visit, window, atoms.type, XCB_ATOM_ATOM)),
          extents(askProperty(visit, window, atoms.extents, XCB_ATOM_CARDINAL)),
          workspace(askProperty(visit, window, atoms.workspace, XCB_ATOM_CARDINAL)) {}

    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    PropertyCookie state;
    PropertyCookie type;
    PropertyCookie extents;
    PropertyCookie workspace;
};

/// The number of a workspace; none for unknown.
using WorkspaceNumber = std::optional<std::uint32_t>;

/// What it answers.
struct Answer {
    Answer(const X11Visit& visit, const Question& question)
        : window(question.window),
          attributes(visit.ask(xcb_get_window_attributes_reply, question.attributes)),
          geometry(visit.ask(xcb_get_geometry_reply, question.geometry)),
          state(visit.ask(xcb_get_property_reply, question.state)),
          type(visit.ask(xcb_get_property_reply, question.type)),
          extents(visit.ask(xcb_get_property_reply, question.extents)),
          workspace(visit.ask(xcb_get_property_reply, question.workspace)) {}

    /// Minimised, or on another workspace than `shown`, whether it is mapped or not.
    bool isPutAway(const Atoms& atoms, WorkspaceNumber shown) const {
        if (contains(numbers(state), atoms.hidden)) return true;
        const auto own = numbers(workspace);
        return shown && !own.empty() && own.front() != *shown && own.front() != everyWorkspace;
    }

    bool isOnScreen(const Atoms& atoms, WorkspaceNumber shown) const {
        return attributes && geometry && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
               attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT && !isPutAway(atoms, shown);
    }

    int layer(const Atoms& atoms) const {
        if (attributes->override_redirect != 0) return popUpLayer;
        if (contains(numbers(type), atoms.dock)) return dockLayer;
        return contains(numbers(state), atoms.above) ? aboveLayer : 0;
    }

    /// Without the shadow that it draws itself.
    xcb_rectangle_t visible() const {
        const xcb_rectangle_t all{.x = 0, .y = 0, .width = geometry->width, .height = geometry->height};
        const auto sides = numbers(extents);
        if (sides.size() < 4) return all;
        const auto shadowWidth = std::uint64_t{sides[0]} + sides[1];
        const auto shadowHeight = std::uint64_t{sides[2]} + sides[3];
        if (shadowWidth >= all.width || shadowHeight >= all.height) return all;
        return {.x = static_cast<std::int16_t>(sides[0]),
                .y = static_cast<std::int16_t>(sides[2]),
                .width = static_cast<std::uint16_t>(all.width - shadowWidth),
                .height = static_cast<std::uint16_t>(all.height - shadowHeight)};
    }

    xcb_window_t window;
    XcbPtr<xcb_get_window_attributes_reply_t> attributes;
    XcbPtr<xcb_get_geometry_reply_t> geometry;
    Property state;
    Property type;
    Property extents;
    Property workspace;
};

std::vector<Answer> answersOf(const X11Visit& visit, const Atoms& atoms,
                              const std::vector<xcb_window_t>& windows) {
    std::vector<Question> questions;
    for (const auto window : windows) questions.emplace_back(visit, atoms, window);
    std::vector<Answer> answers;
    for (const auto& question : questions) answers.emplace_back(visit, question);
    return answers;
}

/// The windows under a window manager's care, from the lowest up. The property outlives one that crashed; the
/// window that it names does not.
std::vector<xcb_window_t> managedWindows(const X11Visit& visit, const Atoms& atoms) {
    const auto askedCheck = askProperty(visit, visit.root(), atoms.check, XCB_ATOM_WINDOW);
    const auto askedList = askProperty(visit, visit.root(), atoms.stacking, XCB_ATOM_WINDOW);
    const auto check = visit.ask(xcb_get_property_reply, askedCheck);
    const auto list = visit.ask(xcb_get_property_reply, askedList);
    if (numbers(check).empty()) return {};
    const auto sameCheck = visit.ask(
        xcb_get_property_reply, askProperty(visit, numbers(check).front(), atoms.check, XCB_ATOM_WINDOW));
    if (!contains(numbers(sameCheck), numbers(check).front())) return {};
    return {numbers(list).begin(), numbers(list).end()};
}

/// Of the numbers of windows, the part that tells whose they are.
std::uint32_t ownerBits(const X11Visit& visit) { return ~xcb_get_setup(visit.get())->resource_id_mask; }

/// The workspace that is shown, where the window manager draws the screen itself: it may leave those of the
/// others mapped. Elsewhere what is mapped can be seen, and each monitor may show a workspace of its own.
WorkspaceNumber onlyWorkspace(const X11Visit& visit, const Atoms& atoms) {
    const auto askedCheck = askProperty(visit, visit.root(), atoms.check, XCB_ATOM_WINDOW);
    const auto askedCurrent = askProperty(visit, visit.root(), atoms.currentSpace, XCB_ATOM_CARDINAL);
    const auto askedOwner = xcb_get_selection_owner(visit.get(), atoms.compositor);
    const auto check = visit.ask(xcb_get_property_reply, askedCheck);
    const auto current = visit.ask(xcb_get_property_reply, askedCurrent);
    const auto compositor = visit.ask(xcb_get_selection_owner_reply, askedOwner);
    if (!compositor || numbers(check).empty() || numbers(current).empty()) return std::nullopt;
    const bool isOne = ((compositor->owner ^ numbers(check).front()) & ownerBits(visit)) == 0;
    return isOne ? WorkspaceNumber(numbers(current).front()) : std::nullopt;
}

/// What windows say of their processes, which may mean something only in a sandbox or on another computer.
std::vector<std::int32_t> toldProcesses(const X11Visit& visit, const Atoms& atoms,
                                        const std::vector<xcb_window_t>& windows) {
    std::vector<PropertyCookie> asked;
    for (const auto window : windows)
        asked.push_back(askProperty(visit, window, atoms.process, XCB_ATOM_CARDINAL));
    std::vector<std::int32_t> processes;
    for (const auto cookie : asked) {
        const auto told = visit.ask(xcb_get_property_reply, cookie);
        processes.push_back(numbers(told).empty() ? 0 : static_cast<std::int32_t>(numbers(told).front()));
    }
    return processes;
}

/// Of each window the process that it belongs to, 0 for unknown: as the X server knows it or, for one that is
/// not on this computer, as the window tells.
std::vector<std::int32_t> processesOf(const X11Visit& visit, const Atoms& atoms,
                                      const std::vector<xcb_window_t>& windows) {
    auto processes = toldProcesses(visit, atoms, windows);
    if (windows.empty() || !visit.has(xcb_res_id)) return processes;
    std::vector<xcb_res_client_id_spec_t> specs;
    for (const auto window : windows) specs.push_back({window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID});
    const auto known = visit.ask(
        xcb_res_query_client_ids_reply,
        xcb_res_query_client_ids(visit.get(), static_cast<std::uint32_t>(specs.size()), specs.data()));
    auto ids =
        known ? xcb_res_query_client_ids_ids_iterator(known.get()) : xcb_res_client_id_value_iterator_t{};
    const auto owner = ownerBits(visit);
    for (; ids.rem > 0; xcb_res_client_id_value_next(&ids)) {
        if (xcb_res_client_id_value_value_length(ids.data) == 0) continue;
        // A process that the server's namespace does not hold is number 0.
        const auto process = static_cast<std::int32_t>(*xcb_res_client_id_value_value(ids.data));
        for (std::size_t i = 0; process != 0 && i < windows.size(); ++i) {
            if (((windows[i] ^ ids.data->spec.client) & owner) == 0) processes[i] = process;
        }
    }
    return processes;
}

/// What stands right on the root window, from the lowest up; empty when the server does not tell.
std::vector<xcb_window_t> windowsOfRoot(const X11Visit& visit) {
    const auto tree = visit.ask(xcb_query_tree_reply, xcb_query_tree(visit.get(), visit.root()));
    if (!tree) return {};
    const auto* const first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

/// The window of the root's that it is, or is in.
xcb_window_t outermost(const X11Visit& visit, xcb_window_t window) {
    constexpr int deepest = 64;
    for (int depth = 0; depth < deepest; ++depth) {
        const auto tree = visit.ask(xcb_query_tree_reply, xcb_query_tree(visit.get(), window));
        if (!tree || tree->parent == visit.root()) return window;
        window = tree->parent;
    }
    return window;
}

/// How many pixels a point has, by the resolution that the desktop sets for text.
double pixelsPerPoint(const X11Visit& visit) {
    constexpr std::string_view key = "Xft.dpi:";
    const auto answer = visit.ask(
        xcb_get_property_reply, askProperty(visit, visit.root(), XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING));
    for (const auto line : std::views::split(text(answer), '\n')) {
        std::string_view setting(line.begin(), line.end());
        if (!setting.starts_with(key)) continue;
        setting.remove_prefix(std::min(setting.find_first_not_of(" \t", key.size()), setting.size()));
        double resolution = usualResolution;
        std::from_chars(setting.data(), setting.data() + setting.size(), resolution);
        return std::clamp(resolution / usualResolution, 1.0, finest);
    }
    return 1;
}

ScreenContent::Extent extentOf(const xcb_rectangle_t& area, double scale) {
    return {.width = area.width / scale, .height = area.height / scale, .pixelsPerPoint = scale};
}

struct Monitor {
    std::uint64_t number = 0;
    bool isPrimary = false;
    xcb_rectangle_t area{};
};

/// By their names, which stay the same; the root window as a whole, number 0, where there are none.
std::vector<Monitor> monitorsOf(const X11Visit& visit) {
    std::vector<Monitor> monitors;
    if (visit.has(xcb_randr_id)) {
        const auto answer =
            visit.ask(xcb_randr_get_monitors_reply, xcb_randr_get_monitors(visit.get(), visit.root(), 1));
        auto each = answer ? xcb_randr_get_monitors_monitors_iterator(answer.get())
                           : xcb_randr_monitor_info_iterator_t{};
        for (; each.rem > 0; xcb_randr_monitor_info_next(&each)) {
            const auto& one = *each.data;
            monitors.push_back({.number = one.name,
                                .isPrimary = one.primary != 0,
                                .area = {.x = one.x, .y = one.y, .width = one.width, .height = one.height}});
        }
    }
    std::erase_if(monitors, [](const auto& one) { return one.area.width == 0 || one.area.height == 0; });
    const auto chief = std::ranges::find_if(monitors, &Monitor::isPrimary);
    if (chief != monitors.end()) std::rotate(monitors.begin(), chief, chief + 1);
    if (!monitors.empty()) return monitors;
    const auto& screen = visit.screen();
    return {{.number = 0,
             .isPrimary = true,
             .area = {.x = 0, .y = 0, .width = screen.width_in_pixels, .height = screen.height_in_pixels}}};
}

}  // namespace

Contents screenContents(const X11Visit& visit) {
    const Atoms atoms(visit);
    auto windows = managedWindows(visit, atoms);
    if (windows.empty()) windows = windowsOfRoot(visit);
    std::ranges::reverse(windows);
    windows.resize(std::min(windows.size(), mostWindows));
    const double scale = pixelsPerPoint(visit);
    const auto processes = processesOf(visit, atoms, windows);
    const auto shown = onlyWorkspace(visit, atoms);
    const auto answers = answersOf(visit, atoms, windows);
    Contents contents;
    for (std::size_t i = 0; i < answers.size(); ++i) {
        const auto& answer = answers[i];
        if (!answer.isOnScreen(atoms, shown) || contains(numbers(answer.type), atoms.desktop)) continue;
        contents.windows.push_back({.number = answer.window,
                                    .ownerProcess = processes[i],
                                    .layer = answer.layer(atoms),
                                    .extent = extentOf(answer.visible(), scale)});
    }
    for (const auto& monitor : monitorsOf(visit))
        contents.displays.push_back({.number = monitor.number, .extent = extentOf(monitor.area, scale)});
    return contents;
}

std::vector<xcb_window_t> windowsWithout(const X11Visit& visit, std::int32_t process) {
    const Atoms atoms(visit);
    std::set<xcb_window_t> left;
    const auto leave = [&](const std::vector<xcb_window_t>& those) {
        const auto processes = processesOf(visit, atoms, those);
        for (std::size_t i = 0; i < those.size(); ++i) {
            if (processes[i] == process) left.insert(outermost(visit, those[i]));
        }
    };
    auto windows = windowsOfRoot(visit);
    leave(windows);
    const auto managed = managedWindows(visit, atoms);
    leave(managed);
    const auto shown = onlyWorkspace(visit, atoms);
    for (const auto& answer : answersOf(visit, atoms, managed)) {
        if (answer.isPutAway(atoms, shown)) left.insert(outermost(visit, answer.window));
    }
    std::erase_if(windows, [&](const auto window) { return left.contains(window); });
    return windows;
}

std::optional<xcb_rectangle_t> visiblePart(const X11Visit& visit, xcb_window_t window) {
    const Atoms atoms(visit);
    const Answer answer(visit, Question(visit, atoms, window));
    return answer.isOnScreen(atoms, onlyWorkspace(visit, atoms)) ? std::optional(answer.visible())
                                                                 : std::nullopt;
}

std::optional<xcb_rectangle_t> placeOfDisplay(const X11Visit& visit, std::uint64_t display) {
    const auto monitors = monitorsOf(visit);
    const auto found = std::ranges::find(monitors, display, &Monitor::number);
    return found == monitors.end() ? std::nullopt : std::optional(found->area);
}

}  // namespace dorix
