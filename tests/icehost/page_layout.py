#!/usr/bin/python3 -B
"""Checks a page of icehost run --html on screens of several sizes, with keys only, and on paper."""
import base64
import re
import sys

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

sys.path.append(sys.path[0] + "/..")
from lib import BACK, RESET, SOURCE, TO_SHIFT_DR, Serve, expect, failures, output, read, write
from page_browser import (PAGE, browser, click, js, open_page, picked, run_in_browser, set_screen,
                          settle, show, table, texts)

AXE = f"{SOURCE}/build/npm/node_modules/axe-core/axe.min.js"
FAILING = ["--keep-going", "--idcode", "39ca2003"]
LONG = ("[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\n# " + "a line that is wider than any paper is, " * 5 +
        "\nREPT=800\nTCK=1\nPRINT=GPIO_IN\nTCK=0\nENDR\nPRINT=GPIO_IN # expect NRST=1\nEND\n")
BAND = (700 - 64) / 3  # steps


def press(*keys):
    ActionChains(browser).send_keys(*keys).perform()
    settle()


def focus(name):
    js("document.getElementById(arguments[0]).focus()", name)


def cut(selector):
    """Returns the texts that are wider than their space."""
    return js("return [...document.querySelectorAll(arguments[0])].filter((one) => one.offsetParent"
              "&& one.scrollWidth > one.clientWidth + 1).map((one) => one.textContent)", selector)


def printed():
    pdf = browser.execute_cdp_cmd("Page.printToPDF", {"generateTaggedPDF": False})["data"]
    with open("page.pdf", "wb") as file:
        file.write(base64.b64decode(pdf))
    return output("pdftotext", "-layout", "page.pdf", "-").splitlines()


def check_printed():
    """A printed page has the whole script, operations and waveform, whatever the screen shows."""
    runs = ((["examples/read_idcode.gpio"], ""), (["--keep-going", "-"], LONG),
            ([*FAILING, "examples/scratch_register.ini", "examples/read_idcode.ini"], ""))
    screens = ((1280, "light"), (700, "dark"), (400, "light"))
    for (arguments, script), (width, scheme) in zip(runs, screens):
        show(*arguments, script=script)
        set_screen(width, scheme)
        what = f"{arguments} from {width} pixels: "
        lines = printed()
        rows = js("return rows.map((row) => [row.number, row.line, visible(row.name),"
                  "VERDICTS[row.verdict]])")
        found = [re.fullmatch(r" *(\d+) +(\d+) (.*) (ok|met|NOT MET|FAILED) *", line) for line in lines]
        found = [[int(one[1]), int(one[2]), one[3].strip(), one[4]] for one in found if one]
        expect(what + "operations", [[*row[:2], row[3]] for row in rows],
               [[*row[:2], row[3]] for row in found if row[2]][-len(rows):])
        whole = re.sub(r"\s", "", "".join(lines))
        for part in js("return [...rows.flatMap((row) => [row.name, row.received, row.expected]),"
                       "...data.sources.flatMap((source) => source.lines),"
                       "...rows.flatMap((row) => row.errors.map(errorText)),"
                       "...data.head.entries.flat()].map(visible)"):
            if re.sub(r"\s", "", part) not in whole and len(part) < 100:
                failures.append(f"{what}{part!r} is missing")
        steps = js("return steps.length")
        bands = len([line for line in lines if line.split()[:1] == ["TCK"]])
        expect(what + "bands", bands, -int(-max(steps, BAND) // BAND))
        marks = [int(mark) for line in lines for mark in re.findall(r"(\d+) us\b", line)]
        expect(what + "the last mark", steps - 100 < max(marks) <= steps, True)
        expect(what + "after it", (texts("#paper"), js("return document.querySelector('#about').open")),
               ([], False))
    set_screen(1280)


def check_widths():
    """Columns are as wide as their contents if there is room."""
    write("chip.ini", re.search("```ini file=chip.ini\n(.*?)```", read("README.md"), re.S)[1])
    for idcode in ("2badc0d1", "2badc0d3"):
        show("--ir-length", "4", "--idcode", idcode, "chip.ini", wrapped=True)
        expect(idcode, cut(".line .text, .row > :nth-child(n+5), .columns > *"), [])
        expect(idcode, len(texts("#source-list .line")) < 7, True)
    server = Serve("--html", PAGE)
    wide = b"".join(b"15" if bit % 3 else b"04" for bit in range(671))
    server.play(RESET + b"04" + TO_SHIFT_DR + wide + BACK + b"Q")
    server.end()
    open_page()
    expect("served", js("return [...document.querySelectorAll('.columns > *')].filter("
                        "(one) => one.offsetParent).map((one) => one.textContent)"),
           ["No.", "Operation", "Sent", "Received", "Result"])
    js("document.querySelectorAll('.row')[1].click()")
    for selector in ("#row-list .tail bdi", "#detail .values > :nth-child(2) .digits"):
        at_end = js("""return [...document.querySelectorAll(arguments[0])].filter((one) =>
            /[0-9a-f]{100}$/.test(one.textContent)).map((one) => {
              const range = document.createRange();
              range.setStart(one.firstChild, one.textContent.length - 20);
              range.setEnd(one.firstChild, one.textContent.length);
              const digits = range.getBoundingClientRect();
              const cell = one.parentElement.getBoundingClientRect();
              return digits.left >= cell.left && digits.right <= cell.right + 1;
            })""", selector)
        expect(f"the end of {selector}", at_end, [True, True])


def check_summary():
    stopped = LONG.replace("REPT=800", "REPT=2").replace("GPIO_IN\n", "GPIO_IN # expect TCK=0\n")
    for status, arguments, script, wanted in (
            (0, ["examples/scratch_register.ini"], "", "3 operations, 2 values as expected"),
            (1, ["-"], stopped, "4 of 10 operations, 1 value not as expected, line 7"),
            (1, [*FAILING, "examples/reset.ini", "examples/read_idcode.ini"], "",
             "5 operations, 1 value not as expected, line 12 of examples/read_idcode.ini"),
            (0, ["examples/read_idcode.gpio"], "", "118 operations")):
        expect(wanted, (show(*arguments, script=script), texts("#summary")), (status, [wanted]))
    show(*FAILING, "examples/reset.ini", "examples/read_idcode.ini")
    js("document.querySelector('#row-list .row').click()")
    browser.find_element("css selector", "#summary a").click()
    settle()
    expect("its link", picked()[1][1:3], "11")


def check_divider():
    show("examples/read_idcode.ini")
    edge = "return document.getElementById('source').getBoundingClientRect().right"
    begin = js(edge)
    focus("divider")
    places = []
    for key in (Keys.ARROW_RIGHT, Keys.ARROW_LEFT, Keys.HOME, Keys.END, Keys.ENTER):
        press(key)
        places.append((round(js(edge) - begin), js("return document.activeElement.ariaValueNow")))
    now = [value for _, value in places]
    expect("by keys", ([place for place, _ in places][1::3], now[2:4], now[1] == now[4]),
           ([0, 0], ["10", "90"], True))
    expect("to the right", 20 < places[0][0] < 30, True)
    divider = browser.find_element("id", "divider")
    ActionChains(browser).drag_and_drop_by_offset(divider, -200, 0).perform()
    expect("by the pointer", round(js(edge) - begin) in range(-206, -194), True)


def check_wrapping():
    show("examples/read_idcode.ini")
    whole = texts(".line .text")
    expect("not wrapped", len(cut(".line .text")) > 0, True)
    focus("wrap")
    press(Keys.ENTER)
    expect("wrapped", (cut(".line .text, .mark > span"), len(texts(".line")) > len(whole)), ([], True))
    expect("pieces", "".join(texts(".line .text")), "".join(whole))
    js("document.querySelectorAll('.line')[2].click()")
    expect("picked as one", len(texts(".line.picked")) > 1, True)
    press(Keys.ENTER)
    expect("as before", texts(".line .text"), whole)


def check_messages():
    """Clicks and keys show the messages of one operation or of all operations."""
    show("examples/scratch_register.ini")
    first = "Execute ORVEX_JTAG Script."
    counts = []
    for deed in ("", "focus", Keys.HOME, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT, Keys.ARROW_LEFT, "toggle",
                 "all", "toggle", "all"):
        if deed == "focus":
            focus("row-list")
        elif deed == "toggle":
            browser.find_element("css selector", ".toggle").click()
        elif deed == "all":
            js("document.getElementById('messages').click()")
        elif deed:
            press(deed)
        counts.append([len(texts(".note")), texts(".note")[0] == first,
                       js("return document.querySelector('.row').ariaExpanded")])
    expect("messages", counts, [
        [1, True, "false"], [1, True, "false"], [1, True, "false"], [5, True, "true"], [5, True, "true"],
        [1, True, "false"], [5, True, "true"], [14, True, "true"], [10, True, "false"],
        [1, True, "false"]])


def check_small_screen():
    """A small screen shows one area that scrolls, and the waveform below it."""
    show(*FAILING, "examples/read_idcode.gpio", "examples/read_idcode.ini")
    set_screen(400)
    for name, shown in (("Script", "source-list"), ("Details", "detail-area"), ("Operations", "row-list")):
        browser.find_element("xpath", f"//nav/button[.='{name}']").click()
        settle()
        expect(name, js("return ['source-list', 'row-list', 'detail-area'].filter("
                        "(id) => document.getElementById(id).offsetParent)"), [shown])
        scrolling = js("return [...document.querySelectorAll('*')].filter((one) => one.offsetParent"
                       "&& one.scrollHeight > one.clientHeight + 1 && /auto|scroll/.test("
                       "getComputedStyle(one).overflowY)).map((one) => one.id)")
        expect(f"{name} scrolls", scrolling, [shown])
        expect(f"{name} fits", js("return [document.documentElement.scrollHeight <= innerHeight,"
                                  "document.getElementById('wave').offsetHeight <= innerHeight / 3]"),
               [True, True])
    expect("in sight", js("const {top, bottom} = document.querySelector('#row-list .picked')"
                          ".getBoundingClientRect(); const {bottom: end} = rowList.element"
                          ".getBoundingClientRect(); return top > 0 && bottom <= end"), True)
    set_screen(1280)


def check_accessibility():
    rules = "['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice']"
    try:
        axe = read(AXE)
    except FileNotFoundError:
        failures.append(f"{AXE} is missing: './dev test' installs it; by hand: mkdir -p build/npm && "
                        "cp tests/npm/*.json build/npm && npm ci --prefix build/npm --ignore-scripts")
        return
    for arguments in ([*FAILING, "examples/scratch_register.ini", "examples/read_idcode.ini"],
                      ["--force", "tests/scripts/bad.ini"]):
        show(*arguments)
        for width, scheme in ((1280, "light"), (1280, "dark"), (400, "light"), (400, "dark")):
            set_screen(width, scheme)
            js(axe)
            found = browser.execute_async_script(
                "const done = arguments[0]; axe.run(document, {runOnly: " + rules + "}).then((result) =>"
                "done(result.violations.map((one) => `${one.id}: ${one.nodes[0].html}`)))")
            expect(f"{arguments} {width} {scheme}", found, [])
    set_screen(1280)


run_in_browser(check_printed, check_widths, check_summary, check_divider, check_wrapping, check_messages,
               check_small_screen, check_accessibility)
