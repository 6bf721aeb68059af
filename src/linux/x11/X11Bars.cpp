#include "linux/x11/X11Bars.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace dorix {

namespace {

using Rectangle = WindowSystem::Rectangle;

/// What one window reserves at an edge, and along which stretch of it.
struct Stretch {
    int depth = 0;
    int start = 0;
    int end = std::numeric_limits<int>::max();

    bool meets(int from, int length) const { return depth > 0 && start < from + length && from <= end; }
};

/// More than any display has, so that no sum of numbers that others chose overflows.
constexpr std::uint32_t largest = 1U << 16U;

/// Left, right, top, bottom: the order of the property.
using Struts = std::array<Stretch, 4>;

Struts strutsFrom(std::span<const std::uint32_t> numbers) {
    Struts struts;
    const bool isPartial = numbers.size() >= 12;
    for (std::size_t edge = 0; edge < struts.size(); ++edge) {
        auto& stretch = struts.at(edge);
        stretch.depth = static_cast<int>(std::min(numbers[edge], largest));
        if (!isPartial) continue;
        stretch.start = static_cast<int>(numbers[4 + 2 * edge]);
        stretch.end = static_cast<int>(numbers[5 + 2 * edge]);
    }
    return struts;
}

std::vector<xcb_window_t> childrenOf(X11Connection& connection, xcb_window_t window) {
    const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.get(), window));
    if (!tree) return {};
    const std::span all(xcb_query_tree_children(tree.get()), tree->children_len);
    return {all.begin(), all.end()};
}

/// Cuts off what reaches into the rectangle from the edges of the root window.
Rectangle without(const Struts& struts, const Rectangle& root, const Rectangle& screen, Rectangle free) {
    int right = free.x + free.width;
    int bottom = free.y + free.height;
    if (struts[0].meets(screen.y, screen.height)) free.x = std::max(free.x, struts[0].depth);
    if (struts[1].meets(screen.y, screen.height)) right = std::min(right, root.width - struts[1].depth);
    if (struts[2].meets(screen.x, screen.width)) free.y = std::max(free.y, struts[2].depth);
    if (struts[3].meets(screen.x, screen.width)) bottom = std::min(bottom, root.height - struts[3].depth);
    free.width = right - free.x;
    free.height = bottom - free.y;
    return free;
}

}  // namespace

Rectangle freeOfBars(X11Connection& connection, X11Windows& windows, const Rectangle& screen) {
    const auto frame = windows.frame(connection.root());
    if (!frame) return screen;
    const Rectangle root{0, 0, frame->width, frame->height};
    Rectangle free = screen;
    const auto cut = [&](xcb_window_t window) {
        const auto numbers = windows.reservedAtEdges(window);
        if (numbers.empty() || !windows.isViewable(window)) return;
        const auto left = without(strutsFrom(numbers), root, screen, free);
        // What takes most of a screen is the edge of another that this one lies beside, or nonsense.
        if (left.width > screen.width / 2 && left.height > screen.height / 2) free = left;
    };
    for (const auto window : childrenOf(connection, connection.root())) {
        cut(window);
        for (const auto framed : childrenOf(connection, window)) cut(framed);
    }
    return free;
}

}  // namespace dorix
