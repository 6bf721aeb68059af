#include "linux/x11/X11Atoms.h"

#include "linux/x11/XcbPtr.h"

namespace dorix {

xcb_atom_t X11Atoms::atom(std::string_view name) {
    if (const auto known = atoms_.find(name); known != atoms_.end()) return known->second;
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    if (!reply) return XCB_ATOM_NONE;
    atoms_.emplace(name, reply->atom);
    names_.emplace(reply->atom, name);
    return reply->atom;
}

const std::string& X11Atoms::name(xcb_atom_t atom) {
    if (const auto known = names_.find(atom); known != names_.end()) return known->second;
    static const std::string none;
    const XcbPtr<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, atom), nullptr));
    if (!reply) return none;
    std::string name(xcb_get_atom_name_name(reply.get()),
                     static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())));
    atoms_.emplace(name, atom);
    return names_.emplace(atom, std::move(name)).first->second;
}

}  // namespace dorix
