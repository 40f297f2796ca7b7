# SPDX-License-Identifier: GPL-3.0-or-later
"""What xdotool and xclip cannot do: keys without the start of a program, and what the X server holds."""
import ctypes
import time


class Display:
    """A connection of its own to the display."""

    def __init__(self):
        self.x11 = ctypes.CDLL("libX11.so.6")
        self.xtst = ctypes.CDLL("libXtst.so.6")
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.x11.XInternAtom.restype = ctypes.c_ulong
        self.x11.XGetSelectionOwner.restype = ctypes.c_ulong
        self.x11.XStringToKeysym.restype = ctypes.c_ulong
        self.x11.XKeysymToKeycode.restype = ctypes.c_ubyte
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(None))
        if not self.display:
            raise OSError("no display")

    def code(self, name):
        """Key code of a key symbol's name."""
        symbol = self.x11.XStringToKeysym(name.encode())
        return self.x11.XKeysymToKeycode(self.display, ctypes.c_ulong(symbol))

    def set_key(self, name, is_down):
        self.xtst.XTestFakeKeyEvent(self.display, self.code(name), int(is_down), 0)
        self.x11.XFlush(self.display)

    def press(self, name):
        """Presses and releases a key; gives the moment before it."""
        moment = time.monotonic()
        self.set_key(name, True)
        self.set_key(name, False)
        return moment

    def pressed_keys(self):
        """Codes of all keys that are down."""
        keymap = (ctypes.c_char * 32)()
        self.x11.XQueryKeymap(self.display, keymap)
        return [code for code in range(256) if keymap.raw[code // 8] >> (code % 8) & 1]

    def selection_owner(self, name="CLIPBOARD"):
        """Window that owns a selection."""
        atom = self.x11.XInternAtom(self.display, name.encode(), 0)
        return self.x11.XGetSelectionOwner(self.display, ctypes.c_ulong(atom))
