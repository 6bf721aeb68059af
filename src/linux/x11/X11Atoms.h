#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

#include <xcb/xcb.h>

namespace dorix {

/// Atoms and their names, each asked of the server once. Main executor; a name not met before costs a round
/// trip. After the connection is lost new names give XCB_ATOM_NONE.
class X11Atoms {
  public:
    explicit X11Atoms(xcb_connection_t* connection) : connection_(connection) {}

    xcb_atom_t atom(std::string_view name);

    /// Empty for an atom that does not exist.
    const std::string& name(xcb_atom_t atom);

  private:
    xcb_connection_t* const connection_;
    std::map<std::string, xcb_atom_t, std::less<>> atoms_;
    std::unordered_map<xcb_atom_t, std::string> names_;
};

}  // namespace dorix
