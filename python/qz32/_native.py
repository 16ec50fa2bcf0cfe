"""Finding the library (libqz_32.so, or qz_32.dll on Windows) and declaring the C
functions that the binding calls."""

from __future__ import annotations

import ctypes
import os
import sys
from ctypes import POINTER, c_char_p, c_int, c_ubyte, c_ushort
from pathlib import Path

from qz32.errors import LibraryNotFound

LIBRARY_VARIABLE = "QZ_32_LIBRARY"

if sys.platform == "win32":
    _NAMES = ("qz_32.dll",)

    def _load(path: str) -> ctypes.CDLL:
        # The 32-bit DLL's functions are stdcall, the 64-bit one has one convention.
        return ctypes.WinDLL(path) if ctypes.sizeof(ctypes.c_void_p) == 4 else ctypes.CDLL(path)
else:
    _NAMES = ("libqz_32.so.0", "libqz_32.so")

    def _load(path: str) -> ctypes.CDLL:
        return ctypes.CDLL(path)

_bytes = POINTER(c_ubyte)
_ubyte_out = POINTER(c_ubyte)
_ushort_out = POINTER(c_ushort)

# name: (result type, argument types), for every function the binding uses.
_PROTOTYPES: dict[str, tuple[type, list[type]]] = {
    "open_device": (c_int, [c_ubyte, c_int]),
    "close_device": (c_int, [c_int]),
    "get_version": (c_int, [c_int, _ubyte_out, _bytes]),
    "dev_beep": (c_int, [c_int, c_ubyte, c_ubyte, c_ubyte]),
    "dev_cardstate": (c_int, [c_int, _ubyte_out]),
    "dev_readsnr": (c_int, [c_int, c_ubyte, _bytes]),
    "dev_writesnr": (c_int, [c_int, c_ubyte, _bytes]),
    "dev_readregno": (c_int, [c_int, _ubyte_out, _bytes]),
    "dev_readeeprom": (c_int, [c_int, c_ushort, c_ushort, _bytes]),
    "dev_writeeeprom": (c_int, [c_int, c_ushort, c_ushort, _bytes]),
    "OpenCard_hex": (c_int, [c_int, c_ubyte, c_char_p, c_char_p, _ubyte_out]),
    "ExchangePro": (c_int, [c_int, _bytes, c_ushort, _bytes, _ushort_out]),
    "CloseCard": (c_int, [c_int]),
    "ICC_PowerOn": (c_int, [c_int, c_ubyte, _bytes, _ubyte_out]),
    "ICC_CommandExchange": (c_int, [c_int, c_ubyte, _bytes, c_ushort, _bytes, _ushort_out]),
    "ICC_PowerOff": (c_int, [c_int, c_ubyte]),
    "GetPanNoCardHldName": (c_int, [c_int, _bytes, _ushort_out, _bytes, _ushort_out]),
    "NC_GetPanNoCardHldName": (c_int, [c_int, _bytes, _ushort_out, _bytes, _ushort_out]),
    "ICC_GetPanNoCardHldName": (c_int, [c_int, c_ubyte, _bytes, _ushort_out, _bytes, _ushort_out]),
    "readmagic_data": (c_int, [c_int, _ubyte_out, _bytes, _ubyte_out, _bytes, _ubyte_out, _bytes]),
    "IDReadCard": (c_int, [c_int, c_int, c_char_p, c_char_p, c_char_p]),
    "IDCardGetModeID": (c_int, [c_int, _ubyte_out, _bytes]),
    "SetFullScreenColor": (c_int, [c_int, c_char_p]),
    "ClearFullScreen": (c_int, [c_int]),
    "ActiveShowPic": (c_int, [c_int, c_int]),
    "GetScreenVendor": (c_int, [c_int, c_char_p]),
    "ShowTextInScreen": (c_int, [c_int, c_char_p, c_int, c_char_p, c_char_p, c_int, c_int, c_int, c_int]),
    "ShowPicInScreen": (c_int, [c_int, c_char_p, c_int, c_int, c_int, c_int]),
    "LoadPicInScreen": (c_int, [c_int, c_int, c_char_p, c_int, c_int, c_int, c_int]),
    "lcd_display_string2": (c_int, [c_int, c_int, c_int, c_int, _bytes]),
    "lcd_clear": (c_int, [c_int]),
}


def _candidates() -> list[str]:
    override = os.environ.get(LIBRARY_VARIABLE)
    if override:
        return [override]
    beside = [str(Path(__file__).resolve().parent / name) for name in _NAMES]
    return [path for path in beside if os.path.exists(path)] + list(_NAMES)


def _declare(library: ctypes.CDLL) -> ctypes.CDLL:
    for name, (result, arguments) in _PROTOTYPES.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
    return library


_library: ctypes.CDLL | None = None


def library() -> ctypes.CDLL:
    """The loaded library, loaded on first use."""
    global _library
    if _library is None:
        tried: list[str] = []
        for candidate in _candidates():
            try:
                _library = _declare(_load(candidate))
                break
            except OSError as error:
                tried.append(f"{candidate}: {error}")
        else:
            raise LibraryNotFound(f"{_NAMES[-1]} was not found; tried " + "; ".join(tried))
    return _library


def byte_buffer(size: int) -> ctypes.Array[c_ubyte]:
    return (c_ubyte * size)()


def bytes_in(data: bytes) -> ctypes.Array[c_ubyte]:
    return (c_ubyte * max(len(data), 1)).from_buffer_copy(data or b"\0")

