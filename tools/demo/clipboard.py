#!/usr/bin/python3
"""A clipboard with an image and a file list on it, and a reader that tells its contents apart byte for byte.

    clipboard.py own   puts them there, says "ready", and serves them until it is ended
    clipboard.py read  writes {target: {"type", "format", "size", "sha256"}} as JSON
"""

import hashlib
import json
import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
gi.require_version("GdkPixbuf", "2.0")
from gi.repository import Gdk, GdkPixbuf, GLib, Gtk  # noqa: E402

# What a selection's owner answers by convention; not contents.
PROTOCOL = {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "DELETE"}

FILES = ("file:///home/ana/Fotos/verano%20en%20la%20playa.png", "file:///home/ana/informe.pdf")


def contents() -> dict[str, bytes]:
    width, height = 900, 600
    noise = hashlib.shake_256(b"dorix").digest(width * height * 3)
    image = GdkPixbuf.Pixbuf.new_from_bytes(GLib.Bytes.new(noise), GdkPixbuf.Colorspace.RGB, False, 8, width, height,
                                            width * 3)
    small = image.scale_simple(90, 60, GdkPixbuf.InterpType.BILINEAR)
    return {
        "image/png": bytes(small.save_to_bufferv("png", [], [])[1]),
        # Over a megabyte, so that it can only be handed over in pieces.
        "image/bmp": bytes(image.save_to_bufferv("bmp", [], [])[1]),
        "text/uri-list": "".join(f"{file}\r\n" for file in FILES).encode(),
        "x-special/gnome-copied-files": "\n".join(("copy", *FILES)).encode(),
    }


def own() -> int:
    offered = contents()
    owner = Gtk.Invisible()
    for index, target in enumerate(offered):
        Gtk.selection_add_target(owner, Gdk.SELECTION_CLIPBOARD, Gdk.Atom.intern(target, False), index)

    def give(_widget, selection, _info, _time):
        selection.set(selection.get_target(), 8, offered[selection.get_target().name()])

    owner.connect("selection-get", give)
    if not Gtk.selection_owner_set(owner, Gdk.SELECTION_CLIPBOARD, Gdk.CURRENT_TIME):
        return 1
    print("ready", flush=True)
    Gtk.main()
    return 0


def read() -> int:
    clipboard = Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD)
    found, targets = clipboard.wait_for_targets()
    lying = {}
    for target in targets if found else []:
        if target.name() in PROTOCOL:
            continue
        selection = clipboard.wait_for_contents(target)
        data = selection.get_data() if selection else b""
        lying[target.name()] = {
            "type": selection.get_data_type().name() if selection else None,
            "format": selection.get_format() if selection else None,
            "size": len(data),
            "sha256": hashlib.sha256(data).hexdigest(),
        }
    json.dump(lying, sys.stdout)
    return 0


if __name__ == "__main__":
    sys.exit({"own": own, "read": read}[sys.argv[1]]())
