"""The browser that shows the pages, and what tests do with it."""
import os
import subprocess

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

from lib import ICEHOST

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
    """Returns the status."""
    command = [ICEHOST, "run", "-q", "--html", PAGE, *arguments]
    return subprocess.run(command, input=script.encode(), capture_output=True,
                          check=False).returncode


def settle():
    """Waits until what was asked for is drawn."""
    browser.execute_async_script(
        "const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(() => done()))")


def open_page(fragment=""):
    browser.get("about:blank")
    browser.get(f"file://{PAGE}{fragment}")
    settle()


def show(*arguments, script=""):
    """Runs, opens the page and returns the status of the run."""
    status = run(*arguments, script=script)
    open_page()
    return status


def texts(selector):
    return js("return [...document.querySelectorAll(arguments[0])]"
              ".map((one) => one.textContent)", selector)


def click(selector, text):
    js("[...document.querySelectorAll(arguments[0])].find((one) =>"
       "one.textContent === arguments[1]).closest('.item').click()", selector, text)
    settle()
