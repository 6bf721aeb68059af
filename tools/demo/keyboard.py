"""Presses keys the way a hand does: through the X server, for everybody to see."""

import ctypes


class Keyboard:
    def __init__(self, display: str):
        self._x11 = ctypes.CDLL("libX11.so.6")
        self._xtest = ctypes.CDLL("libXtst.so.6")
        self._x11.XOpenDisplay.restype = ctypes.c_void_p
        self._x11.XStringToKeysym.restype = ctypes.c_ulong
        self._display = ctypes.c_void_p(self._x11.XOpenDisplay(display.encode()))
        if not self._display:
            raise OSError(f"no display {display}")

    def press(self, *keys: str) -> None:
        for key in keys:
            self._send(key, True)

    def release(self, *keys: str) -> None:
        """In the reverse order, as fingers do."""
        for key in reversed(keys):
            self._send(key, False)

    def _send(self, key: str, down: bool) -> None:
        keysym = ctypes.c_ulong(self._x11.XStringToKeysym(key.encode()))
        code = self._x11.XKeysymToKeycode(self._display, keysym)
        if not code:
            raise ValueError(f"the keyboard has no key {key}")
        self._xtest.XTestFakeKeyEvent(self._display, code, down, ctypes.c_ulong(0))
        self._x11.XFlush(self._display)
