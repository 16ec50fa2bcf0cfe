"""The terminal as an object: one open link, methods that take and give bytes and str."""

from __future__ import annotations

import ctypes
import os
from ctypes import c_int, c_ubyte, c_ushort
from types import TracebackType
from typing import Callable, Mapping, Sequence, Union

from qz32._native import byte_buffer, bytes_in, library
from qz32.errors import Error, result_of
from qz32.records import BankCard, IdentityCard, MagneticTracks

Colour = Union[str, Sequence[int]]

_ENCODING = "gbk"  # every text of the library is GBK
_ANSWER_ROOM = 256
_EXCHANGE_ROOM = 300
_SLOT_EXCHANGE_ROOM = 1024
_PAN_ROOM = 1024
_NAME_ROOM = 512
_TRACK_ROOM = 256
_ID_TEXT_ROOM = 3100
_FINGER_ROOM = 2064
_VENDOR_ROOM = 1025
_MAX_PHOTO_PATH = 254
_STATUS_OK = 0x9000

_OPEN_STATUSES: Mapping[int, str] = {
    0: "a serial port opened but no terminal answered on it",
    -19: "no USB terminal, and the serial port number is above 31",
}
_IDENTITY_STATUSES: Mapping[int, str] = {
    -1: "the photo path is too long",
    -2: "the photo component libGetInfo.so was not found",
    **{status: "the photo could not be decoded" for status in (-3, -4, -5, -6, -7, -8, -110)},
    -50: "the identity module found no card or could not read it",
}
_BANK_CARD_STATUSES: Mapping[int, str] = {
    -19: "a selection, directory read or GPO of the card failed",
    -21: "a tag the account number needs is missing on the card",
}


# ctypes cuts a number to its C type without a word; a number that does not fit
# is refused as the library refuses an argument out of range.
_C_RANGES: Mapping[type, tuple[int, int]] = {c_ubyte: (0, 0xFF), c_ushort: (0, 0xFFFF),
                                             c_int: (-(2**31), 2**31 - 1)}
_ARGUMENT_OUT_OF_RANGE = -19


def _check_ranges(function: Callable[..., int], arguments: Sequence[object], operation: str) -> None:
    for value, kind in zip(arguments, function.argtypes):  # type: ignore[attr-defined]
        bounds = _C_RANGES.get(kind)
        if bounds and isinstance(value, int) and not bounds[0] <= value <= bounds[1]:
            raise Error(_ARGUMENT_OUT_OF_RANGE, operation)


def _check(status: int, operation: str, own: Mapping[int, str] | None = None) -> None:
    if status != 0:
        raise Error(status, operation, own)


def _colour_text(colour: Colour | None) -> bytes | None:
    if colour is None:
        return None
    text = colour if isinstance(colour, str) else ",".join(str(int(part)) for part in colour)
    return text.encode("ascii")


class Terminal:
    """An open terminal. Close it with close(), or use it in a `with` block."""

    def __init__(self, handle: int) -> None:
        self._handle = handle
        self._lib = library()

    @property
    def handle(self) -> int:
        """The library's device handle (icdev)."""
        return self._handle

    def __enter__(self) -> Terminal:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def close(self) -> None:
        """Closes the link; closing twice does nothing."""
        if self._handle > 1:
            handle, self._handle = self._handle, 0
            _check(self._lib.close_device(handle), "closing the terminal", {-1: "the link did not close"})

    def _call(self, operation: str, function: Callable[..., int], *arguments: object,
              own: Mapping[int, str] | None = None) -> None:
        if self._handle <= 1:
            raise Error(-33, operation)
        _check_ranges(function, (self._handle, *arguments), operation)
        _check(function(self._handle, *arguments), operation, own)

    def _counted_reply(self, operation: str, function: Callable[..., int]) -> bytes:
        """The reply of a function that gives a one-byte length, then the bytes."""
        length, data = c_ubyte(0), byte_buffer(_ANSWER_ROOM)
        self._call(operation, function, ctypes.byref(length), data)
        return bytes(data[: length.value])

    # ---- The terminal itself -------------------------------------------------------------

    def version(self) -> str:
        return self._counted_reply("reading the version", self._lib.get_version).decode(_ENCODING, "replace")

    def beep(self, first: int = 1, second: int = 1, third: int = 1) -> None:
        self._call("sounding the buzzer", self._lib.dev_beep, first, second, third)

    def card_state(self) -> int:
        """0 or 2: a card in the contact slot; other values: a card in the contactless field."""
        state = c_ubyte(0)
        self._call("reading the card state", self._lib.dev_cardstate, ctypes.byref(state))
        return state.value

    def serial_number(self, length: int = 20) -> bytes:
        data = byte_buffer(max(length, 1))
        self._call("reading the serial number", self._lib.dev_readsnr, length, data)
        return bytes(data[:length])

    def write_serial_number(self, data: bytes) -> None:
        self._call("writing the serial number", self._lib.dev_writesnr, len(data), bytes_in(data))

    def registration_number(self) -> str:
        reply = self._counted_reply("reading the registration number", self._lib.dev_readregno)
        return reply.decode(_ENCODING, "replace")

    def read_eeprom(self, offset: int, length: int) -> bytes:
        data = byte_buffer(max(length, 1))
        self._call("reading the EEPROM", self._lib.dev_readeeprom, offset, length, data)
        return bytes(data[:length])

    def write_eeprom(self, offset: int, data: bytes) -> None:
        self._call("writing the EEPROM", self._lib.dev_writeeeprom, offset, len(data), bytes_in(data))

    # ---- Microprocessor cards ------------------------------------------------------------

    def open_card(self, mode: int = 0) -> tuple[bytes, bytes]:
        """Activates the contactless card: its UID and answer to select."""
        uid, ats = ctypes.create_string_buffer(2 * _ANSWER_ROOM + 1), ctypes.create_string_buffer(2 * _ANSWER_ROOM + 1)
        length = c_ubyte(0)
        self._call("activating the contactless card", self._lib.OpenCard_hex, mode, uid, ats, ctypes.byref(length))
        return bytes.fromhex(uid.value.decode("ascii")), bytes.fromhex(ats.raw[: length.value].decode("ascii"))

    def close_card(self) -> None:
        self._call("closing the contactless card", self._lib.CloseCard)

    def power_on(self, slot: int) -> bytes:
        """Powers the card in a contact slot (0..4) on: its answer to reset."""
        atr, length = byte_buffer(_ANSWER_ROOM), c_ubyte(0)
        self._call(f"powering on slot {slot}", self._lib.ICC_PowerOn, slot, atr, ctypes.byref(length))
        return bytes(atr[: length.value])

    def power_off(self, slot: int) -> None:
        self._call(f"powering off slot {slot}", self._lib.ICC_PowerOff, slot)

    def exchange(self, apdu: bytes, slot: int | None = None) -> bytes:
        """Sends an APDU to the contactless card (slot None) or a contact slot; the response
        with its status words, which are the caller's to judge."""
        response, length = byte_buffer(_EXCHANGE_ROOM if slot is None else _SLOT_EXCHANGE_ROOM), c_ushort(0)
        if slot is None:
            self._call("exchanging an APDU", self._lib.ExchangePro, bytes_in(apdu), len(apdu), response,
                       ctypes.byref(length))
        else:
            self._call(f"exchanging an APDU in slot {slot}", self._lib.ICC_CommandExchange, slot, bytes_in(apdu),
                       len(apdu), response, ctypes.byref(length))
        return bytes(response[: length.value])

    def transmit(self, apdu: bytes, slot: int | None = None) -> bytes:
        """As exchange(), but the card must answer 9000: its data, else an Error naming the status words."""
        response = self.exchange(apdu, slot)
        status_word = int.from_bytes(response[-2:], "big") if len(response) >= 2 else 0
        if status_word != _STATUS_OK:
            raise Error(result_of(status_word), f"the card's answer to {apdu[:4].hex().upper()}")
        return response[:-2]

    def bank_card(self, *, contactless: bool | None = None, slot: int = 0) -> BankCard:
        """The account number and holder's name of a bank card: where the card state says
        (contactless None), in the contactless field (True) or in contact slot `slot` (False)."""
        pan, pan_length = byte_buffer(_PAN_ROOM), c_ushort(0)
        name, name_length = byte_buffer(_NAME_ROOM), c_ushort(0)
        outputs = (pan, ctypes.byref(pan_length), name, ctypes.byref(name_length))
        if contactless is None:
            self._call("reading the bank card", self._lib.GetPanNoCardHldName, *outputs, own=_BANK_CARD_STATUSES)
        elif contactless:
            self._call("reading the contactless bank card", self._lib.NC_GetPanNoCardHldName, *outputs,
                       own=_BANK_CARD_STATUSES)
        else:
            self._call(f"reading the bank card in slot {slot}", self._lib.ICC_GetPanNoCardHldName, slot, *outputs,
                       own=_BANK_CARD_STATUSES)
        return BankCard(bytes(pan[: pan_length.value]).decode("ascii", "replace"),
                        bytes(name[: name_length.value]).decode(_ENCODING, "replace").rstrip())

    def magnetic_tracks(self) -> MagneticTracks:
        lengths = [c_ubyte(0) for _ in range(3)]
        tracks = [byte_buffer(_TRACK_ROOM) for _ in range(3)]
        arguments = [item for pair in zip(lengths, tracks) for item in (ctypes.byref(pair[0]), pair[1])]
        self._call("reading the magnetic stripe", self._lib.readmagic_data, *arguments)
        return MagneticTracks(*(bytes(track[: length.value]) for length, track in zip(lengths, tracks)))

    # ---- Identity card -------------------------------------------------------------------

    def identity_card(self, photo_path: str | os.PathLike[str] | None = None,
                      with_finger_data: bool = False) -> IdentityCard:
        """Reads the identity card; with a photo path the photo is written there as a BMP."""
        path = None if photo_path is None else os.fsencode(photo_path)
        if path is not None and len(path) > _MAX_PHOTO_PATH:
            raise Error(-1, "reading the identity card", _IDENTITY_STATUSES)
        text = ctypes.create_string_buffer(_ID_TEXT_ROOM)
        finger = ctypes.create_string_buffer(_FINGER_ROOM)
        self._call("reading the identity card", self._lib.IDReadCard, 1 if with_finger_data else 0, path, text,
                   finger, own=_IDENTITY_STATUSES)
        return IdentityCard.from_text(text.value.decode(_ENCODING, "replace"), finger.value.decode("ascii"),
                                      None if photo_path is None else os.fspath(photo_path))

    def identity_module_id(self) -> bytes:
        return self._counted_reply("reading the identity module's id", self._lib.IDCardGetModeID)

    # ---- Screen and line LCD -------------------------------------------------------------

    def fill_screen(self, colour: Colour) -> None:
        """Fills the colour screen; a colour is (r, g, b) or "r,g,b"."""
        self._call("filling the screen", self._lib.SetFullScreenColor, _colour_text(colour))

    def clear_screen(self) -> None:
        self._call("clearing the screen", self._lib.ClearFullScreen)

    def show_page(self, page: int) -> None:
        """Shows a stored page, 0..4."""
        self._call(f"showing page {page}", self._lib.ActiveShowPic, page)

    def show_text(self, text: str, x: int = 0, y: int = 0, size: int = 24, colour: Colour | None = None,
                  background: Colour | None = None, wrap: bool = True) -> None:
        """Draws text; without colours, blue on white."""
        self._call("drawing text", self._lib.ShowTextInScreen, text.encode(_ENCODING), size, _colour_text(colour),
                   _colour_text(background), x, y, 1 if wrap else 0, 0)

    def show_picture(self, path: str | os.PathLike[str], x: int = 0, y: int = 0) -> None:
        self._call("showing a picture", self._lib.ShowPicInScreen, os.fsencode(path), x, y, 0, 0)

    def load_picture(self, page: int, path: str | os.PathLike[str]) -> None:
        """Stores an 800 x 480 picture in a page (0: the page shown)."""
        self._call(f"storing a picture in page {page}", self._lib.LoadPicInScreen, page, os.fsencode(path), 0, 0, 0, 0)

    def screen_vendor(self) -> bytes:
        vendor = ctypes.create_string_buffer(_VENDOR_ROOM)
        self._call("reading the screen's vendor", self._lib.GetScreenVendor, vendor)
        return vendor.value

    def lcd_text(self, line: int, column: int, text: str) -> None:
        """Writes text on the line LCD (4 lines of 16 columns; a Chinese character takes two)."""
        data = text.encode(_ENCODING)
        self._call("writing on the LCD", self._lib.lcd_display_string2, line, column, len(data), bytes_in(data))

    def lcd_clear(self) -> None:
        self._call("clearing the LCD", self._lib.lcd_clear)


def open(port: int = 0, baud: int = 115200) -> Terminal:  # noqa: A001 - the binding's entry point
    """Opens the terminal on USB, else on serial port `port` (0 = COM1 .. 31 = COM32)."""
    open_device = library().open_device
    _check_ranges(open_device, (port, baud), "opening the terminal")
    handle = open_device(port, baud)
    if handle <= 1:
        raise Error(handle, "opening the terminal", _OPEN_STATUSES)
    return Terminal(handle)
