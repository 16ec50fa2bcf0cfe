"""One qzsim per test module, on a pseudo-terminal linked as COM1 and with its
web panel on a free loopback port; qzctl reaches it through the pty."""

from __future__ import annotations

import json
import os
import subprocess
import urllib.error
import urllib.request
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Iterator

import pytest


@dataclass
class Panel:
    url: str
    work: Path

    def call(self, path: str, body: Any = None, raw: bytes | None = None) -> tuple[int, Any]:
        """GET (no body) or POST to the panel: the HTTP status and the decoded JSON."""
        data = raw if raw is not None else (None if body is None else json.dumps(body).encode())
        request = urllib.request.Request(self.url + path, data=data, method="GET" if data is None else "POST")
        try:
            with urllib.request.urlopen(request, timeout=10) as response:
                return response.status, json.loads(response.read())
        except urllib.error.HTTPError as error:
            return error.code, json.loads(error.read())

    def qzctl(self, *args: str, wait: bool = True) -> subprocess.Popen[str] | subprocess.CompletedProcess[str]:
        command = [os.environ["QZ_32_QZCTL"], "-p", "0", *args]
        environment = {**os.environ, "QZ_32_PORTS_DIR": str(self.work / "ports"),
                       "QZ_32_HIDRAW_DIR": str(self.work / "no-hid")}
        if not wait:
            return subprocess.Popen(command, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        return subprocess.run(command, env=environment, capture_output=True, text=True, timeout=60)


def start_qzsim(work: Path, *args: str) -> subprocess.Popen[str]:
    return subprocess.Popen([os.environ["QZ_32_QZSIM"], *args], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                            text=True, cwd=work)


@pytest.fixture(scope="module")
def panel(tmp_path_factory: pytest.TempPathFactory) -> Iterator[Panel]:
    work = tmp_path_factory.mktemp("panel")
    (work / "no-hid").mkdir()
    process = start_qzsim(work, "--serial", str(work / "ports"), "--web", "127.0.0.1:0")
    assert process.stdout is not None
    lines = [process.stdout.readline(), process.stdout.readline()]
    web = [line.split(" ", 1)[1].strip() for line in lines if line.startswith("web: ")]
    if not web:
        process.kill()
        pytest.fail(f"qzsim did not start: {lines} {process.communicate()[1]}")
    yield Panel(web[0].rstrip("/"), work)
    process.terminate()
    assert process.wait(timeout=10) == 0
