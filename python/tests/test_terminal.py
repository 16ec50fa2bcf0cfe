"""The binding against the simulated terminal of the default scenario."""

from __future__ import annotations

import os
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

import qz32
from qz32.errors import result_of

SELECT_PPSE = bytes.fromhex("00A404000E325041592E5359532E444446303100")


def test_terminal_control(terminal: qz32.Terminal) -> None:
    assert terminal.version() == "QZ-SIM V1.00"
    assert terminal.registration_number() == "REG-0000-0001"
    assert terminal.serial_number(12) == b"QZ2024000001"
    terminal.write_eeprom(20, b"\x00Hello\xff")
    assert terminal.read_eeprom(19, 9) == b"\xff\x00Hello\xff\xff"
    with pytest.raises(qz32.Error) as refused:
        terminal.read_eeprom(0, 201)
    assert refused.value.status == -19
    assert "argument out of range" in str(refused.value)
    for cut_by_ctypes in (lambda: terminal.write_serial_number(bytes(257)), lambda: terminal.power_on(256)):
        with pytest.raises(qz32.Error, match="argument out of range"):
            cut_by_ctypes()


def test_closed_terminal_refuses_calls(simulator: Path) -> None:
    terminal = qz32.open()
    terminal.close()
    terminal.close()
    with pytest.raises(qz32.Error) as refused:
        terminal.version()
    assert refused.value.status == -33


def test_cards_and_pan(terminal: qz32.Terminal) -> None:
    uid, ats = terminal.open_card()
    assert uid and ats
    answer = terminal.exchange(SELECT_PPSE)
    assert answer[0] == 0x6F and answer[-2:] == b"\x90\x00"
    assert terminal.transmit(SELECT_PPSE) == answer[:-2]
    with pytest.raises(qz32.Error, match="file or application not found") as refused:
        terminal.transmit(bytes.fromhex("00A4040007A000000999999900"))
    assert refused.value.status_word == 0x6A82
    terminal.close_card()
    assert terminal.power_on(0) == bytes.fromhex("3B6A0000515A3332204445424954")
    assert terminal.exchange(bytes.fromhex("00A404000E315041592E5359532E444446303100"), slot=0)[-2:] == b"\x90\x00"
    terminal.power_off(0)
    assert terminal.bank_card(contactless=False, slot=0) == qz32.BankCard("6222025678901238", "LI/SI")
    assert terminal.magnetic_tracks().track2 == b";6222020200112233=28121010000000000?"


def test_identity_card_with_photo(terminal: qz32.Terminal, tmp_path: Path) -> None:
    card = terminal.identity_card(tmp_path / "photo.bmp")
    assert card.kind == "0"
    assert card.fields[0] == "王小明"
    assert card.fields[5] == "110108199003070016"
    assert (tmp_path / "photo.bmp").read_bytes()[:2] == b"BM"
    assert terminal.identity_module_id() == bytes.fromhex("05 00 01 00 20 24 11 23 00 00 00 01 51 5A 00 01")


def lit_rows(lcd_text: Path) -> list[int]:
    return [row for row, pixels in enumerate(lcd_text.read_text().splitlines()) if "#" in pixels]


def test_screen_and_lcd(terminal: qz32.Terminal, simulator: Path) -> None:
    terminal.clear_screen()
    cleared = simulator.read_bytes()
    terminal.fill_screen((255, 0, 0))
    terminal.show_text("你好 qz32", x=10, y=10, colour="0,0,0")
    assert simulator.read_bytes() != cleared
    terminal.lcd_clear()
    assert lit_rows(simulator.parent / "screen-lcd.txt") == []
    terminal.lcd_text(1, 2, "余额 12.50")
    rows = lit_rows(simulator.parent / "screen-lcd.txt")
    assert rows and all(16 <= row < 32 for row in rows)
    with pytest.raises(qz32.Error):
        terminal.show_page(5)


@pytest.mark.parametrize(("status", "words"), [
    (-34, "no reply frame (no STX) (-34)"),
    (-39, "reply shorter than the command needs"),
    (result_of(0x6A82), "file or application not found (status 6A82)"),
    (result_of(0x63C2), "verification failed, 2 tries left"),
    (result_of(0x6401), "no card in the field or the slot"),
])
def test_statuses_in_words(status: int, words: str) -> None:
    assert words in qz32.describe_status(status)


def test_library_found_by_system_search_and_beside_the_package(tmp_path: Path) -> None:
    library = Path(os.environ["QZ_32_LIBRARY"])
    env = {key: value for key, value in os.environ.items() if key != "QZ_32_LIBRARY"}
    check = "import qz32, qz32._native as n; n.library(); print(qz32.__file__)"
    searched = subprocess.run([sys.executable, "-c", check], env={**env, "LD_LIBRARY_PATH": str(library.parent)},
                              capture_output=True, text=True)
    assert searched.returncode == 0, searched.stderr
    package = Path(searched.stdout.strip()).parent
    shutil.copytree(package, tmp_path / "qz32")
    shutil.copy(library, tmp_path / "qz32" / "libqz_32.so")
    beside = subprocess.run([sys.executable, "-c", check], env={**env, "PYTHONPATH": str(tmp_path)},
                            capture_output=True, text=True)
    assert beside.returncode == 0, beside.stderr
    missing = subprocess.run([sys.executable, "-c", check], env={**env, "QZ_32_LIBRARY": str(tmp_path / "none.so")},
                             capture_output=True, text=True)
    assert "LibraryNotFound" in missing.stderr
