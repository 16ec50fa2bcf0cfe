"""The web panel's JSON API against a running qzsim: bad bodies refused with
a reason and nothing changed, cards, keys and the screen as a host's CI drives them."""

from __future__ import annotations

import struct
import time
import urllib.request

import pytest

from conftest import Panel, start_qzsim

BAD_BODIES = [
    ("cards/insert", b"{not json", "no JSON"),
    ("cards/insert", b"[1, 2]", "no JSON object"),
    ("cards/insert", b'{"place": "field"}', '"profile" is missing'),
    ("cards/insert", b'{"place": "field", "profile": "../default"}', "none of the card profiles"),
    ("cards/insert", b'{"place": "field", "profile": "contactless_qpboc"}', "already in the field"),
    ("cards/insert", b'{"place": "slot", "slot": 5, "profile": "contact_pboc"}', "0 to 4"),
    ("cards/insert", b'{"place": "roof", "profile": "contact_pboc"}', '"field" or "slot"'),
    ("cards/insert", b'{"place": "field", "profile": "memory_sle4442"}', "already in the field"),
    ("identity", b'{"card": "nobody"}', "identity cards"),
    ("stripe", b'{"tracks": ["a", "b"]}', "three texts"),
    ("stripe", b'{"tracks": ["a", "b", "\\u0001"]}', "printable"),
    ("scan", b'{"code": ""}', "empty"),
    ("scan", b'{"code": 42}', "no text"),
    ("keys", b'{"keys": "12Z"}', "digits, E (enter)"),
    ("person", b'{"typing": "yes"}', "true or false"),
    ("launch", b"{}", "no such action"),
]


# Names the traffic view shows, each from the routes of the model that answers.
NAMES = [
    ("instructions", "00 07", "terminal: card state"),
    ("instructions", "C0 40", "memory card: SLE4442 read"),
    ("instructions", "C0 31", "slot 0: APDU"),
    ("instructions", "C1 30", "contactless card: activate / contactless memory card: activate"),
    ("instructions", "C5 0F", "scanner: scanner message / keyboard: keyboard message"),
    ("instructions", "CD 20", "screen: text data"),
    ("classes", "C5", "PIN pad / slot 4 / scanner / keyboard"),
    ("statuses", "6401", "no card"),
    ("statuses", "63C2", "wrong code, 2 tries left"),
]


def test_traffic_names_come_from_the_devices(panel: Panel) -> None:
    status, names = panel.call("/api/names")
    assert status == 200
    assert [names[kind].get(key) for kind, key, _ in NAMES] == [name for _, _, name in NAMES]


@pytest.mark.parametrize("action,body,reason", BAD_BODIES)
def test_bad_bodies_are_refused_and_change_nothing(panel: Panel, action: str, body: bytes, reason: str) -> None:
    before = panel.call("/api/state")[1]
    status, answer = panel.call("/api/" + action, raw=body)
    assert status == 400 and reason in answer["error"]
    assert panel.call("/api/state") == (200, before)


def test_oversized_body_is_refused(panel: Panel) -> None:
    status, answer = panel.call("/api/scan", raw=b'{"code": "' + b"1" * 20000 + b'"}')
    assert status == 413 and "too long" in answer["error"]
    assert panel.call("/api/state")[0] == 200


def test_card_moved_by_the_api_is_read_by_the_host(panel: Panel) -> None:
    assert panel.call("/api/cards/remove", {"place": "field"})[1]["field"] is None
    assert "PAN" not in panel.qzctl("pan", "--contactless").stdout
    status, state = panel.call("/api/cards/insert", {"place": "field", "profile": "contactless_qpboc"})
    assert status == 200 and state["field"] == "contactless_qpboc"
    assert "6222021234567894" in panel.qzctl("pan", "--contactless").stdout


@pytest.mark.parametrize("entry,device", [(("pin", "--clear", "--timeout", "20"), "keypad"),
                                          (("pinpad", "enter", "--clear", "-t", "20"), "PIN pad")])
def test_keys_typed_through_the_api_reach_a_waiting_host(panel: Panel, entry: tuple, device: str) -> None:
    waiting = panel.qzctl(*entry, wait=False)
    for _ in range(100):
        prompt = panel.call("/api/state")[1].get("prompt")
        if prompt:
            break
        time.sleep(0.05)
    assert prompt and prompt["what"] == "PIN on the " + device and 0 < prompt["left_ms"] <= 20000
    panel.call("/api/keys", {"keys": "99C2580E"})
    out, err = waiting.communicate(timeout=20)
    assert waiting.returncode == 0, err
    assert "2580" in out and "992580" not in out


def test_screen_png_and_events_follow_the_host(panel: Panel) -> None:
    events = urllib.request.urlopen(panel.url + "/api/events", timeout=10)
    assert panel.qzctl("screen", "fill", "0,128,0").returncode == 0
    assert panel.qzctl("info").returncode == 0  # 00 0F: the terminal's, of the two models that share it
    seen, deadline = b"", time.monotonic() + 15
    named = b'"command":"terminal: registration number"'
    while (b"event: screen" not in seen or named not in seen) and time.monotonic() < deadline:
        seen += events.readline()
    assert b"event: screen" in seen and named in seen and b'"command":"screen: fill"' in seen
    events.close()
    with urllib.request.urlopen(panel.url + "/api/screen.png", timeout=10) as response:
        png = response.read()
    assert png[:8] == b"\x89PNG\r\n\x1a\n"
    assert struct.unpack(">II", png[16:24]) == (800, 480)


def test_web_panel_stays_on_loopback_unless_told(tmp_path) -> None:
    refused = start_qzsim(tmp_path, "--web", "0.0.0.0:0")
    assert refused.wait(timeout=10) == 1
    assert "loopback only" in refused.communicate()[1]


# A memory card put in from the panel, what the host reads of it, and what it finds once the card is out.
MEMORY_CARDS = [
    ({"place": "slot", "slot": 4}, "memory_at24c01a", ("memcard", "read", "--type", "at24c01a", "--slot", "4"),
     "PANEL AT24C01A", 0),
    ({"place": "field"}, "contactless_ultralight", ("ultralight", "read", "-p", "4", "-n", "4"), "PANEL ULTRALIGHT", 1),
    ({"place": "slot", "slot": 0}, "memory_sle4442", ("memcard", "read", "--type", "sle4442", "--length", "48"),
     "PANEL SLE4442", 2),
]


@pytest.mark.parametrize("place,profile,read,text,state_bit", MEMORY_CARDS)
def test_memory_cards_from_the_panel_are_read_by_the_host(panel: Panel, place: dict, profile: str,
                                                          read: tuple, text: str, state_bit: int) -> None:
    panel.call("/api/cards/remove", place)
    state = panel.call("/api/state")[1]
    assert state["card_state"] & state_bit == 0
    failed = panel.qzctl(*read)
    assert failed.returncode != 0 and "no card" in failed.stderr
    wrong_place = {"place": "slot", "slot": 4} if "field" in place.values() else {"place": "field"}
    panel.call("/api/cards/remove", wrong_place)
    assert "is no card for the" in panel.call("/api/cards/insert", {**wrong_place, "profile": profile})[1]["error"]
    status, state = panel.call("/api/cards/insert", {**place, "profile": profile})
    assert status == 200 and profile in (state["field"], *state["slots"])
    assert state["card_state"] & state_bit == state_bit
    assert text in panel.qzctl(*read).stdout
    assert panel.call("/api/cards/remove", place)[0] == 200
    assert "no card is in the" in panel.call("/api/cards/remove", place)[1]["error"]
    assert "no card" in panel.qzctl(*read).stderr


def test_a_memory_card_alone_in_the_field_is_activated(panel: Panel) -> None:
    panel.call("/api/cards/remove", {"place": "field"})
    panel.call("/api/cards/insert", {"place": "field", "profile": "contactless_ultralight"})
    assert "UID: 04A1B2C3D4E5F6" in panel.qzctl("ats").stdout
