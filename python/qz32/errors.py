"""Results of the library as exceptions whose message says what went wrong."""

from __future__ import annotations

from typing import Mapping

# The link's own results, shared by every call that talks to the terminal.
LINK_STATUSES: Mapping[int, str] = {
    -1: "the system refused a HID feature report",
    -17: "no reply from the terminal within the read time-out",
    -18: "invalid HID handle",
    -19: "argument out of range (nothing was sent)",
    -20: "serial port in use",
    -21: "serial port cannot be opened",
    -22: "serial port settings cannot be read",
    -23: "serial port settings refused",
    -24: "writing to the serial port failed",
    -25: "reading from the serial port failed",
    -33: "no terminal open (invalid device handle)",
    -34: "no reply frame (no STX)",
    -35: "reply frame does not end in ETX, or the reply stopped coming",
    -36: "reply frame checksum wrong",
    -37: "request too long for one frame",
    -38: "reply longer than the command allows",
    -39: "reply shorter than the command needs",
}

# Status words that the terminal and its devices answer with.
TERMINAL_STATUS_WORDS: Mapping[int, str] = {
    0x6400: "no PIN was keyed before the time-out",
    0x6401: "no card in the field or the slot",
    0x6402: "the card has not been activated",
    0x6A88: "the key named was never loaded",
}

# The common status words of a card (ISO 7816-4).
CARD_STATUS_WORDS: Mapping[int, str] = {
    0x6281: "part of the returned data may be corrupted",
    0x6283: "selected file or application invalidated",
    0x6700: "wrong length",
    0x6982: "security status not satisfied",
    0x6983: "authentication method blocked",
    0x6984: "referenced data invalidated",
    0x6985: "conditions of use not satisfied",
    0x6986: "command not allowed (no current file)",
    0x6A80: "incorrect data in the command",
    0x6A81: "function not supported",
    0x6A82: "file or application not found",
    0x6A83: "record not found",
    0x6A84: "not enough memory in the file",
    0x6A86: "incorrect parameters P1-P2",
    0x6B00: "wrong parameters P1-P2",
    0x6D00: "instruction not supported",
    0x6E00: "class not supported",
    0x6F00: "no precise diagnosis",
    0x9000: "success",
}


def status_word_of(status: int) -> int:
    """The status word behind a result that is a status word negated and cut to 16 bits."""
    return -status & 0xFFFF


def result_of(status_word: int) -> int:
    """A status word as the library reports it: negated and cut to a signed 16-bit value."""
    value = -status_word & 0xFFFF
    return value - 0x10000 if value >= 0x8000 else value


def status_word_meaning(status_word: int) -> str:
    sw1, sw2 = status_word >> 8, status_word & 0xFF
    count = sw2 or 256
    if sw1 == 0x61:
        return f"{count} more bytes available"
    if sw1 == 0x6C:
        return f"wrong length: {count} bytes available"
    if sw1 == 0x63 and sw2 & 0xF0 == 0xC0:
        return f"verification failed, {sw2 & 0x0F} tries left"
    if status_word in TERMINAL_STATUS_WORDS:
        return TERMINAL_STATUS_WORDS[status_word]
    return CARD_STATUS_WORDS.get(status_word, "unknown status")


def describe_status(status: int, own: Mapping[int, str] | None = None) -> str:
    """Words for a result; `own` holds the meanings that one function gives its results."""
    if status == 0:
        return "success"
    if own and status in own:
        return f"{own[status]} ({status})"
    if status in LINK_STATUSES:
        return f"{LINK_STATUSES[status]} ({status})"
    word = status_word_of(status)
    return f"{status_word_meaning(word)} (status {word:04X})"


class Error(Exception):
    """A call that failed: `status` is the library's result, `operation` what was being done."""

    def __init__(self, status: int, operation: str, own: Mapping[int, str] | None = None) -> None:
        self.status = status
        self.operation = operation
        super().__init__(f"{operation}: {describe_status(status, own)}")

    @property
    def status_word(self) -> int:
        """The terminal's or the card's status word, for a result that carries one."""
        return status_word_of(self.status)


class LibraryNotFound(OSError):
    """The library (libqz_32.so, qz_32.dll) is in none of the places where it is looked for."""
