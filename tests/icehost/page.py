#!/usr/bin/python3 -B
"""The page that icehost writes with --html, as a browser shows it.

usage: page.py ICEHOST SOURCE_FOLDER
"""
import os
import re
import subprocess
import sys
import time

from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.chrome.service import Service

sys.path.append(sys.path[0] + "/..")
from lib import (BACK, ICEHOST, RESET, TO_SHIFT_DR, Serve, expect, output, read, records_of,
                 run_checks, waveform)

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


def table():
    """The rows of operations, as the texts of their cells."""
    return js("return [...document.querySelectorAll('#row-list .row')].map("
              "(row) => [...row.children].map((cell) => cell.textContent))")


def picked():
    """The picked line and operation."""
    return (texts("#source-list .picked a") + [""])[0], (texts("#row-list .picked.row") + [""])[0]


def view():
    """The first and the last step in sight."""
    settle()
    return [int(number) for number in re.findall(r"\d+", texts("#view")[0])[:2]]


def operations_of(lines):
    """From the calls: line, values read, whether it is well."""
    found = []
    for call in lines:
        if call.get("call") in (None, "link_jtag_insert") or call.get("code") == "GET_CDI":
            continue
        read = [call[key] for key in ("ir_out", "dr_out") if key in call]
        if "data" in call:
            read.append(f"0x{call['data']:02x}")
        met = [one["met"] for one in call.get("expectations", [])]
        done = "FAILED" if call["result"] else "met" if met else "ok"
        verdict = "NOT MET" if False in met else done
        found.append([str(call["line"]), re.findall("0x[0-9a-f]+", " ".join(read)), verdict])
    return found


def check_against_other_outputs():
    """A page shows what the JSON lines and the waveform of the same run say."""
    for status, *arguments in (
            (0, "examples/read_idcode.ini"), (0, "examples/read_idcode.gpio"),
            (0, "examples/two_wire.ini"), (0, "examples/reset.ini", "examples/reset_pulse.gpio"),
            (1, "examples/scratch_register.ini", "examples/read_idcode.ini", "--idcode", "39ca2003"),
            (1, "--force", "tests/scripts/bad.ini", "--keep-going", "tests/scripts/walk.gpio")):
        what = " ".join(arguments)
        expect(what, show("--json", "j", "--vcd", "v", *arguments), status)
        lines = records_of(read("j"))
        expect(what, [[row[1], re.findall("0x[0-9a-f]+", row[4]), row[6]] for row in table()],
               operations_of(lines))
        messages = "".join(line.get("message", "") for line in lines)
        expect(what, texts(".note:not(.error)"), [one for one in messages.split("\n") if one])
        # The lowest bit is NRST, the first pin.
        steps = ["".join(levels)[::-1] for levels in zip(*waveform("v")[0].values())]
        expect(what, js("return Array.from(steps, (step) => step & 63)"),
               [int(step, 2) for step in steps])
        expect(what, texts("#result"), ["failed" if status else "passed"])
        shown = [read(path).rstrip("\n") for path in arguments if "/" in path]
        played = len([line for line in lines if "script" in line])
        expect(what, texts("#source .text"), "\n".join(shown[:played]).split("\n"))


def check_head_and_failure():
    expect("status", show("--idcode", "39ca2003", "examples/read_idcode.ini"), 1)
    expect("title", browser.title, "failed: examples/read_idcode.ini")
    entries = dict(zip(texts("#entries dt"), texts("#entries dd")))
    expect("probe", entries["Probe"],
           "simulated, its target with an IR of 5 bits and IDCODE 0x39ca2003")
    expect("counts", entries["Done"].rsplit(",", 1)[0],
           "operations 2, TCK cycles 54, bits shifted 37, reads 1")
    expect("date", re.sub(r"\d", "9", entries["Started"]), "9999-99-99 99:99:99 UTC")
    expect("plug-in", os.path.basename(entries["Plug-in"]), "libicescript.so")
    expect("version", f"icehost {entries['icehost']}\n", output(ICEHOST, "--version"))
    expect("notes", texts("#notes li"), ["examples/read_idcode.ini failed"])
    expect("what went wrong", picked()[0], "11")
    expect("row", table()[1], ["1", "11", "[READ_IDCODE]", "IR 5: 0x01, DR 32: 0x00000000",
                               "IR 0x01, DR 0x39ca2003", "DR 0x1ce51001/0x0fffffff", "NOT MET"])
    why = "expected 0x1ce51001, captured 0x39ca2003 (mask 0x0fffffff)"
    expect("at its line", texts(".mark"), [why])
    expect("behind its row", texts(".note.error")[0], f"line 12: {why}")
    show("--keep-going", "-", script="[ZEVA_ICE_GPIO]\nSTART\nREPT=4\n"
         "PRINT=GPIO_IN # expect TCK=0\nTCK=1\nENDR\nEND\n")
    expect("some of its times", texts(".line")[3:5],
           ["4NOT MET \u00d73PRINT=GPIO_IN # expect TCK=0", "5ok \u00d74TCK=1"])
    expect("told once", [text.split(": ")[1] for text in texts(".mark.error")], ["TCK is 1 \u00d73"])


def check_problems():
    """The problems of check follow their lines; without --force nothing is written."""
    records = records_of(output(ICEHOST, "check", "-q", "--json", "-", "tests/scripts/bad.ini"))
    problems = [one for one in records if "problem" in one]
    os.unlink(PAGE)
    expect("with errors", run("tests/scripts/bad.ini"), 1)
    expect("a page of nothing", os.path.exists(PAGE), False)
    show("--force", "tests/scripts/bad.ini", "examples/reset.ini")
    expect("the rest", texts("#entries dd")[-1], "examples/reset.ini")
    items = js("let line; return [...document.querySelectorAll('#source-list .item')].flatMap("
               "(item) => { if (!item.matches('.line')) return [`${line}:${item.textContent}`];"
               "line = item.querySelector('a').textContent; return [] })")
    expect("problems", items,
           [f"{one['line']}:{one['column']}: {one['problem']}: {one['text']}" for one in problems])


def check_hostile():
    """Sections and comments stay texts that would be markup, code or commands elsewhere."""
    show("--force", "tests/scripts/markup.ini")
    names = read("tests/golden/page_sections.txt").splitlines()
    expect("sections", [row[2] for row in table()], names)
    expect("lines", [text for text in texts(".line .text") if text.startswith("[")], names)
    expect("elements", texts("img, main script"), [])


def click_wave(canvas, step):
    """Clicks where a step is drawn."""
    x = js("return wave.x(arguments[0] + 0.5) - wave.width / 2", step)
    ActionChains(browser).move_to_element_with_offset(canvas, x, 0).click().perform()
    settle()


def click(selector, text):
    js("[...document.querySelectorAll(arguments[0])].find((one) =>"
       "one.textContent === arguments[1]).closest('.item').click()", selector, text)
    settle()


def check_picking():
    show("examples/scratch_register.ini", "examples/read_idcode.gpio")
    canvas = browser.find_element("id", "canvas")
    numbers = {row[2]: int(row[0]) for row in table() if row[2].startswith("[")}
    places = js("return rows.map((row) => [row.begin, row.end])")
    before = view()
    # The lines of a section that do nothing themselves lead to its operation.
    for text in ("TDO=0x78,0x56,0x34,0x12", "[READ_AGAIN]", "DR=W,32,0x78,0x56,0x34,0x12"):
        click(".text", text)
        name = {"T": "[READ_BACK]", "[": "[READ_AGAIN]", "D": "[WRITE_SCRATCH]"}[text[0]]
        begin, end = places[numbers[name]]
        expect(text, name in picked()[1], True)
        expect(text, texts("#readout")[0].split(":")[0], f"{begin} us")
        first, last = view()
        expect(f"{text} in sight", first <= begin and last >= end, True)
    click("#row-list .row > :nth-child(3)", "[READ_AGAIN]")
    expect("from the table", picked()[0], "16")
    begin, end = places[numbers["[READ_BACK]"]]
    click_wave(canvas, (begin + end) // 2)
    expect("from the waveform", ("[READ_BACK]" in picked()[1], picked()[0]), (True, "11"))
    expect("address", browser.current_url.split("#")[1], "line-11")
    # Clicked again, a line of a block leads to its next time.
    for times in range(2):
        click(".text", "TCK=1                       # the target captures the register, "
              "from then on it shifts")
        reads = [int(one[0]) for one in table() if one[1] == "19"]
        expect("again", picked()[1].startswith(str(reads[times])), True)
    open_page("#2-line-21")
    expect("second script", (picked()[0], "0x23 NRST|TRST|TDO" in picked()[1]), ("21", True))
    first, last = view()
    begin = js("return pickedRow.begin")
    expect("second script in sight", first <= begin <= last, True)
    js("location.hash = 'line-6'")
    settle()
    expect("another address", "[WRITE_SCRATCH]" in picked()[1], True)
    open_page("#line-99999999999999999999")
    expect("no such line", (picked()[1], before), ("", view()))


def check_keys_and_wheel():
    show("examples/scratch_register.ini", "examples/reset.ini")
    canvas = browser.find_element("id", "canvas")
    full = view()

    def keys(*pressed):
        ActionChains(browser).send_keys(*pressed).perform()
        return view()

    def wheel(x, y):
        js("arguments[0].dispatchEvent(new WheelEvent('wheel', {deltaX: arguments[1],"
           "deltaY: arguments[2], clientX: 640, bubbles: true, cancelable: true}))", canvas, x, y)
        return view()

    click_wave(canvas, 200)
    near = keys("+", "+", "+")
    expect("zoomed in", near[1] - near[0] < (full[1] - full[0]) / 3 and near[0] < 200 < near[1], True)
    right = keys(Keys.ARROW_RIGHT)
    expect("scrolled to", right[0] > near[0], True)
    expect("scrolled", abs(right[1] - right[0] - (near[1] - near[0])) <= 1, True)
    expect("end and home", (keys(Keys.END)[1], keys(Keys.HOME)[0]), (full[1], 0))
    ActionChains(browser).key_down(Keys.SHIFT).send_keys(Keys.ARROW_LEFT).key_up(Keys.SHIFT).perform()
    settle()
    levels = js("return Array.from(data.pins, (name, pin) => `, ${name} ${steps[199] >> pin & 1}`)")
    expect("cursor", re.sub("[A-Z][a-zA-Z0-9]*[-/][-/a-zA-Z]*", "TAP", texts("#readout")[0]),
           f"199 us: TAP{''.join(levels)}")
    expect("all", keys("0"), full)
    closer = wheel(0, -400)
    expect("wheel", closer[1] - closer[0] < (full[1] - full[0]) * 0.6, True)
    expect("sideways", wheel(100, 0)[0] > closer[0], True)
    expect("back", wheel(0, 4000), full)
    wheel(0, -400)
    dragged = view()[0]
    actions = ActionChains(browser).move_to_element(canvas).click_and_hold()
    actions.move_by_offset(-200, 0).release().perform()
    expect("dragged", view()[0] > dragged, True)
    js("document.getElementById('source-list').focus()")
    keys(Keys.HOME)
    expect("first line", picked()[0], "1")
    keys(*[Keys.ARROW_DOWN] * 5)
    expect("by keys", ("[WRITE_SCRATCH]" in picked()[1], picked()[0]), (True, "6"))


def check_long():
    """More steps and operations than a page holds; the last operation but one is not met."""
    repeated = "TCK=1\nPRINT=GPIO_IN\nTCK=0,TMS=0\nTDI=1\nTDI=0\n"
    script = (f"[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nREPT=30000\n{repeated}ENDR\n"
              "PRINT=GPIO_IN # expect NRST=1\nEND\n")
    expect("status", run("--keep-going", "-", script=script), 1)
    begun = time.monotonic()
    open_page()
    expect("opens in 10 s", time.monotonic() - begun < 10, True)
    expect("notes", [note for note in texts("#notes li") if note.startswith("Cut")],
           ["Cut: the first 100001 of 150004 operations, and later ones that are not well",
            "Cut: the waveform holds the first 100000 of 120002 steps"])
    expect("the end", table()[-1][2:], ["read", "", "0x20 TDO", "0x01/0x01", "NOT MET"])
    expect("elements", len(texts(".item")) < 500, True)
    expect("past the waveform", (texts("#detail dd")[-1], texts("#readout")),
           ("none of its own, at 120002 us, which the waveform leaves out", [""]))
    click_wave(browser.find_element("id", "canvas"), 10)
    browser.find_element("id", "zoom-all").click()
    expect("zoomed out", view(), [0, 100000])


def check_interrupted():
    output("timeout", "-s", "INT", "1", ICEHOST, "run", "-q", "--html", PAGE,
           "tests/scripts/endless_writes.gpio")
    open_page()
    expect("result", texts("#result"), ["interrupted"])
    expect("rows", len(table()) > 10, True)


def check_served():
    """What a client of serve does: a DR scan in Pause-DR, TRST, a scan that the end cuts short."""
    scan = RESET + b"04" + TO_SHIFT_DR + b"05" * 3 + BACK[2:]
    server = Serve("--html", PAGE)
    server.play(scan + b"2626" + b"tr" + b"04" + TO_SHIFT_DR + b"1515RQ")
    expect("status", server.end()[0], 0)
    open_page()
    expect("table", [row[2:5] for row in table()], [
        ["TAP reset", "by TMS", ""],
        ["DR scan", "DR 4: 0x07", "DR 0x01"],
        ["reset pins", "TRST=0 NRST=1", ""],
        ["TAP reset", "by TRST", ""],
        ["reset pins", "TRST=1 NRST=1", ""],
        ["DR scan, cut short by the end", "DR 2: 0x03", "DR 0x01"]])
    expect("clients", [re.sub(" from.*|, .*", "", text) for text in texts(".note")],
           ["client 1 connected", f"client 1 left: bytes {len(scan) + 20}"])
    click("#row-list .row > :nth-child(4)", "DR 4: 0x07")
    begin, end = view()
    expect("in sight", begin <= 16 < end, True)
    expect("no script", texts("#source-list a"), [])
    expect("result", texts("#result"), ["ended"])


def check_narrow():
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": 400, "height": 800, "deviceScaleFactor": 1, "mobile": False})
    show("--idcode", "39ca2003", "examples/read_idcode.ini")
    wide = js("return document.documentElement.scrollWidth")
    expect("no wider than the screen", wide <= 400, True)
    expect("values", "received IR 0x01, DR 0x39ca2003" in texts(".value"), True)
    browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def check_console():
    """No page complained, until this one tries the network."""
    expect("console", browser.get_log("browser"), [])
    blocked = browser.execute_async_script(
        "const done = arguments[0]; addEventListener('securitypolicyviolation',"
        "(event) => done(event.effectiveDirective)); fetch('https://localhost:1/').catch(() => {})")
    expect("network", blocked, "connect-src")


try:
    run_checks(check_against_other_outputs, check_head_and_failure, check_problems, check_hostile,
               check_picking, check_keys_and_wheel, check_long, check_interrupted, check_served,
               check_narrow, check_console)
finally:
    browser.quit()
