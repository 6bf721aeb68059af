#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <xcb/xcb.h>

namespace dorix {

/// A selection converted to one target: a property's value, bytes as they come over the wire.
struct SelectionData {
    xcb_atom_t type = XCB_ATOM_NONE;
    /// Bits per unit: 8, 16 or 32.
    std::uint8_t format = 8;
    std::string bytes;
};

/// What a selection is offered as, by target, in order. The data is shared with transfers under way, which
/// finish with what they began.
class SelectionContents {
  public:
    using Entry = std::pair<xcb_atom_t, std::shared_ptr<const SelectionData>>;

    /// Replaces what the target had.
    void put(xcb_atom_t target, SelectionData data);
    void clear() { entries_.clear(); }

    /// Null for a target that is not offered.
    std::shared_ptr<const SelectionData> find(xcb_atom_t target) const;
    const std::vector<Entry>& entries() const { return entries_; }

  private:
    std::vector<Entry> entries_;
};

/// How a target is named as a pasteboard type: by its own name, followed by the property's type and format
/// where they are not the target itself in bytes, so that it can be offered again exactly as it was.
struct TargetName {
    std::string target;
    std::string type;
    std::uint8_t format = 8;

    bool operator==(const TargetName&) const = default;
};

std::string pasteboardType(const TargetName& name);
TargetName parsePasteboardType(std::string_view type);

/// None when the text has characters that Latin-1 does not, or is not UTF-8.
std::optional<std::string> latin1FromUtf8(std::string_view text);
std::string utf8FromLatin1(std::string_view text);

}  // namespace dorix
