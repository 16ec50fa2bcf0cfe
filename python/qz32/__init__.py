"""Python binding of libqz_32: drives the counter terminal over USB HID or a serial port."""

from qz32.errors import Error, LibraryNotFound, describe_status
from qz32.records import BankCard, IdentityCard, MagneticTracks
from qz32.terminal import Terminal, open

__all__ = [
    "BankCard",
    "Error",
    "IdentityCard",
    "LibraryNotFound",
    "MagneticTracks",
    "Terminal",
    "describe_status",
    "open",
]
__version__ = "0.1.0"
