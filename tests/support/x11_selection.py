#!/usr/bin/env python3
"""Prints the primary selection of the X display, the text that is marked in some window; fails when
nothing is marked."""
import ctypes
import sys
import time

WINDOW, POINTER, INT, LONG = ctypes.c_ulong, ctypes.c_void_p, ctypes.c_int, ctypes.c_long
PRIMARY, SELECTION_NOTIFY = 1, 31

x11 = ctypes.CDLL("libX11.so.6")
for name, result, arguments in (
    ("XOpenDisplay", POINTER, [ctypes.c_char_p]),
    ("XDefaultRootWindow", WINDOW, [POINTER]),
    ("XCreateSimpleWindow", WINDOW, [POINTER, WINDOW, INT, INT, INT, INT, INT, WINDOW, WINDOW]),
    ("XInternAtom", WINDOW, [POINTER, ctypes.c_char_p, INT]),
    ("XConvertSelection", INT, [POINTER, WINDOW, WINDOW, WINDOW, WINDOW, WINDOW]),
    ("XPending", INT, [POINTER]),
    ("XNextEvent", INT, [POINTER, POINTER]),
    ("XGetWindowProperty", INT, [POINTER, WINDOW, WINDOW, LONG, LONG, INT, WINDOW] + [POINTER] * 5),
):
    function = getattr(x11, name)
    function.restype, function.argtypes = result, arguments

display = x11.XOpenDisplay(None) or sys.exit("no display")
window = x11.XCreateSimpleWindow(display, x11.XDefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0)
text, place = (x11.XInternAtom(display, atom, 0) for atom in (b"UTF8_STRING", b"ANSWER"))
x11.XConvertSelection(display, PRIMARY, text, place, window, 0)

event = ctypes.create_string_buffer(256)
end = time.monotonic() + 5
while INT.from_buffer(event).value != SELECTION_NOTIFY:
    if time.monotonic() > end:
        sys.exit("no answer")
    if x11.XPending(display):
        x11.XNextEvent(display, event)
    else:
        time.sleep(0.01)

kind, form, count, left, data = WINDOW(), INT(), WINDOW(), WINDOW(), POINTER()
x11.XGetWindowProperty(display, window, place, 0, 1 << 20, 0, 0,
                       *map(ctypes.byref, (kind, form, count, left, data)))
if not count.value:
    sys.exit("nothing is marked")
sys.stdout.buffer.write(ctypes.string_at(data.value, count.value))
