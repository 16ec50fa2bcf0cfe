"""What some reads hand back, as plain records."""

from __future__ import annotations

from dataclasses import dataclass, field


@dataclass(frozen=True)
class BankCard:
    """The account number and the holder's name as the card stores them."""

    pan: str
    holder_name: str


@dataclass(frozen=True)
class MagneticTracks:
    track1: bytes
    track2: bytes
    track3: bytes


@dataclass(frozen=True)
class IdentityCard:
    """An identity card's text: the card kind ("0" resident card, "1" foreigner's
    residence card) and its fields in the card's order."""

    kind: str
    fields: list[str]
    finger_data: bytes = b""
    photo_path: str | None = None
    raw_text: str = field(default="", repr=False)

    @staticmethod
    def from_text(text: str, finger_hex: str, photo_path: str | None) -> IdentityCard:
        # Every field, the last one too, ends in "|".
        parts = text.split("|")
        if parts and parts[-1] == "":
            parts.pop()
        kind = parts[0] if parts else ""
        return IdentityCard(kind, parts[1:], bytes.fromhex(finger_hex), photo_path, text)
