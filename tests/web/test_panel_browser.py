"""A person in a real browser and qzctl on the other side make a counter
transaction: a card clicked into the field, its PAN read, a PIN typed on the
page's keypad while qzctl waits, text drawn and seen in the page's screen."""

from __future__ import annotations

import os
import shutil
import time
from pathlib import Path
from typing import Iterator

import pytest

from conftest import Panel

webdriver = pytest.importorskip("selenium.webdriver", reason="python3-selenium is not installed")
chrome_service = pytest.importorskip("selenium.webdriver.chrome.service")


@pytest.fixture(scope="module")
def browser() -> Iterator[object]:
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1600,1000"):
        options.add_argument(argument)
    driver_path = shutil.which("chromedriver")
    try:
        service = chrome_service.Service(executable_path=driver_path) if driver_path else None
        driver = webdriver.Chrome(options=options, service=service)
    except Exception as error:  # no browser on this machine: nothing to drive
        pytest.skip(f"no headless chromium starts here: {str(error).splitlines()[0]}")
    yield driver
    driver.quit()


def wait_for(condition, what: str, seconds: float = 15):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        result = condition()
        if result:
            return result
        time.sleep(0.05)
    pytest.fail(f"timed out waiting for {what}")


def test_counter_transaction_with_a_person_at_the_page(panel: Panel, browser) -> None:
    panel.call("/api/cards/remove", {"place": "field"})
    browser.get(panel.url + "/")
    by_id = lambda name: browser.find_element("id", name)  # noqa: E731
    wait_for(lambda: by_id("holds-field").text == "empty", "the page's state")

    by_id("profile-field").send_keys("contactless_qpboc")
    by_id("insert-field").click()
    wait_for(lambda: by_id("holds-field").text == "contactless_qpboc", "the card in the field")
    assert "6222021234567894" in panel.qzctl("pan", "--contactless").stdout

    waiting = panel.qzctl("pin", "--clear", "--timeout", "30", wait=False)
    wait_for(lambda: "Key the PIN" in by_id("prompt").text, "the PIN prompt")
    for key in "4321E":
        by_id("key-" + key).click()
    out, err = waiting.communicate(timeout=30)
    assert waiting.returncode == 0, err
    assert "4321" in out

    drawn = int(by_id("screen").get_attribute("data-drawn") or 0)
    shown = panel.qzctl("screen", "text", "PAID", "-s", "96", "-c", "255,0,0", "--background", "255,255,255")
    assert shown.returncode == 0, shown.stderr
    wait_for(lambda: int(by_id("screen").get_attribute("data-drawn") or 0) > drawn, "the screen drawn again")
    red, white = browser.execute_script(
        """const pixels = document.getElementById('screen').getContext('2d').getImageData(0, 0, 400, 120).data;
           let red = 0, white = 0;
           for (let i = 0; i < pixels.length; i += 4) {
             if (pixels[i] > 200 && pixels[i + 1] < 60 && pixels[i + 2] < 60) ++red;
             if (pixels[i] > 240 && pixels[i + 1] > 240 && pixels[i + 2] > 240) ++white;
           }
           return [red, white];""")
    assert red > 500 and white > 10000, (red, white)
    traffic = by_id("traffic").text
    for named in ("contactless card: APDU", "keypad: PIN entry", "screen: text data", "0000 done"):
        assert named in traffic

    screenshot = os.environ.get("QZ_32_PANEL_SCREENSHOT")
    if screenshot:
        browser.execute_script("window.scrollTo(0, 0)")
        browser.get_screenshot_as_file(str(Path(screenshot)))
