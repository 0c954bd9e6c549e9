"""Runs Chromium with a page of icehost run --html, for the tests of the page."""
import os
import re
import subprocess
import sys

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

sys.path.append(sys.path[0] + "/..")
from lib import ICEHOST, run_checks

PAGE = os.path.abspath("page.html")
FLAGS = """--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run
    --disable-background-networking --disable-component-update --disable-sync
    --force-device-scale-factor=1 --window-size=1280,900"""


def start_browser():
    options = webdriver.ChromeOptions()
    for flag in FLAGS.split() + ["--user-data-dir=" + os.path.abspath("browser")]:
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))


browser = start_browser()
js = browser.execute_script


def run(*arguments, script=""):
    command = [ICEHOST, "run", "-q", "--html", PAGE, *arguments]
    return subprocess.run(command, input=script.encode(), capture_output=True,
                          check=False).returncode


def settle():
    """Waits until the browser has drawn all changes."""
    browser.execute_async_script(
        "const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(() => done()))")


def open_page(fragment="", wrapped=False):
    """Opens the page. Lines of the script are wrapped only if `wrapped` is set."""
    browser.get("about:blank")
    browser.get(f"file://{PAGE}{fragment}")
    if not wrapped:
        js("wrapping.turn(false)")
    settle()


def show(*arguments, script="", wrapped=False):
    """Runs scripts, opens the page and returns the exit status."""
    status = run(*arguments, script=script)
    open_page(wrapped=wrapped)
    return status


def texts(selector):
    return js("return [...document.querySelectorAll(arguments[0])]"
              ".map((one) => one.textContent)", selector)


def table():
    """Returns the texts of the cells of all operations."""
    return js("return [...document.querySelectorAll('#row-list .row')].map("
              "(row) => [...row.children].map((cell) => cell.textContent))")


def picked():
    """Returns the selected line and operation."""
    return (texts("#source-list .picked a") + [""])[0], (texts("#row-list .picked.row") + [""])[0]


def view():
    """Returns the first and the last visible step."""
    settle()
    return [int(number) for number in re.findall(r"\d+", texts("#view")[0])[:2]]


def click(selector, text):
    js("[...document.querySelectorAll(arguments[0])].find((one) =>"
       "one.textContent === arguments[1]).closest('.item').click()", selector, text)
    settle()


def set_screen(width, scheme="light", ratio=1):
    """Sets the size of the screen, which is initially 1280 pixels wide."""
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": 900 if width > 400 else 800, "deviceScaleFactor": ratio,
        "mobile": False})
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": "prefers-color-scheme", "value": scheme}]})
    settle()


def run_in_browser(*checks):
    try:
        run_checks(*checks)
    finally:
        browser.quit()
