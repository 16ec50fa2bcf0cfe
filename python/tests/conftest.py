"""One qzsim for the session, serving the default scenario on a pseudo-terminal
linked as COM1; the library finds it there and no HID node."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path
from typing import Iterator

import pytest

import qz32


@pytest.fixture(scope="session")
def simulator(tmp_path_factory: pytest.TempPathFactory) -> Iterator[Path]:
    work = tmp_path_factory.mktemp("qzsim")
    (work / "ports").mkdir()
    (work / "no-hid").mkdir()
    screen = work / "screen.png"
    process = subprocess.Popen(
        [os.environ["QZ_32_QZSIM"], "--serial", str(work / "ports"), "--screen", str(screen)],
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    assert process.stdout is not None
    line = process.stdout.readline()  # "serial: LINK -> DEVICE" once it serves
    if not line.startswith("serial: "):
        process.kill()
        pytest.fail(f"qzsim did not start: {process.communicate()[1]}")
    os.environ["QZ_32_PORTS_DIR"] = str(work / "ports")
    os.environ["QZ_32_HIDRAW_DIR"] = str(work / "no-hid")
    yield screen
    process.terminate()
    process.wait(timeout=10)


@pytest.fixture
def terminal(simulator: Path) -> Iterator[qz32.Terminal]:
    with qz32.open(port=0, baud=115200) as opened:
        yield opened
