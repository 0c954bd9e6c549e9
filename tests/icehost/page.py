#!/usr/bin/python3 -B
"""Tests the page that icehost writes with --html in a browser."""
import json
import os
import re
import sys
import time
from difflib import unified_diff

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

sys.path.append(sys.path[0] + "/..")
from lib import (BACK, ICEHOST, RESET, TO_SHIFT_DR, Serve, expect, failures, output, read,
                 records_of, waveform, write)
from page_browser import (PAGE, browser, click, js, open_page, picked, run, run_in_browser,
                          set_screen, settle, show, table, texts, view)
from page_drawing import RECORD, Picture, colours_of, drawn
from page_tools import check_bits, check_copy, check_failures, check_search

def operations_of(lines):
    """Returns the line, the values read and the verdict of each operation."""
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
    """A page agrees with the JSON lines and the waveform of the same run."""
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
        js("document.getElementById('messages').click()")
        expect(what, texts(".note:not(.error)"), [one for one in messages.split("\n") if one])
        # The lowest bit is NRST, the first pin.
        steps = ["".join(levels)[::-1] for levels in zip(*waveform("v")[0].values())]
        expect(what, js("return Array.from(steps, (step) => step & 63)"),
               [int(step, 2) for step in steps])
        result = js("const {className, textContent} = document.getElementById('result');"
                    "return [className, textContent]")
        expect(what, result, ["", "failed"] if status else ["good", "passed"])
        shown = [read(path).rstrip("\n") for path in arguments if "/" in path]
        played = len([line for line in lines if "script" in line])
        expect(what, texts("#source .text"), "\n".join(shown[:played]).split("\n"))


def check_head_and_failure():
    expect("status", show("--idcode", "39ca2003", "examples/read_idcode.ini"), 1)
    expect("title", browser.title, "failed: examples/read_idcode.ini")
    entries = dict(zip(texts("#entries dt"), texts("#entries dd")))
    expect("probe", entries["Probe"],
           "simulated, target with an IR of 5 bits and IDCODE 0x39ca2003")
    expect("counts", entries["Totals"].rsplit(",", 1)[0],
           "operations: 2, TCK cycles: 54, bits shifted: 37, reads: 1")
    expect("date", re.sub(r"\d", "9", entries["Started"]), "9999-99-99 99:99:99 UTC")
    expect("plug-in", os.path.basename(entries["Plug-in"]), "libicescript.so")
    expect("version", f"icehost {entries['icehost']}\n", output(ICEHOST, "--version"))
    expect("notes", texts("#notes li"), [])
    expect("what went wrong", picked()[0], "11")
    expect("row", table()[1], ["1", "11", "[READ_IDCODE]", "IR 5: 0x01, DR 32: 0x00000000",
                               "IR 0x01, DR 0x39ca2003", "DR 0x1ce51001/0x0fffffff", "NOT MET"])
    why = ("[READ_IDCODE] expected 0x1ce51001, captured 0x39ca2003 (mask 0x0fffffff)"
           ": bits 1, 12-13, 16-19, 21 and 2 more are wrong")
    expect("at its line", texts(".mark"), [why])
    expect("after its row", texts(".note.error")[0], f"line 12: {why}")
    show("--keep-going", "-", script="[ZEVA_ICE_GPIO]\nSTART\nREPT=3\n"
         "PRINT=GPIO_IN # expect TCK=0\nTCK=1\nENDR\nEND\n")
    expect("some of its times", texts(".line")[1:5],
           ["2okSTART", "3REPT=3", "4NOT MET \u00d72PRINT=GPIO_IN # expect TCK=0",
            "5ok \u00d73TCK=1"])
    expect("shown once", [text.split(": ")[1] for text in texts(".mark.error")], ["TCK is 1 \u00d72"])
    show("-", script="[CONTROL]\nCDI=5\n")
    expect("without pins", (texts("#notes li"), js("return document.querySelector('#wave').hidden")),
           (["No waveform: the probe gives no access to pins, or no pin was driven"], True))
    server = Serve()
    address = f"127.0.0.1:{server.port}"
    show("--probe", f"remote-bitbang:{address}", "examples/read_idcode.ini")
    expect("another probe", dict(zip(texts("#entries dt"), texts("#entries dd")))["Probe"],
           f"remote_bitbang at {address}")
    show("--probe", f"remote-bitbang:{address}", "--keep-going", "-",
         script="[ZEVA_ICE_GPIO]\nSTART\nPRINT=GPIO_IN # expect TCK=1\nTCK=1\nEND\n")
    expect("not reported", texts("#failures"), ["1 of 1 failure"])
    check_drawing("not reported")


def check_problems():
    """Problems that check finds follow their lines. A page of a faulty script needs --force."""
    os.unlink(PAGE)
    expect("with errors", run("tests/scripts/bad.ini"), 1)
    expect("a page without a run", os.path.exists(PAGE), False)
    show("--force", "tests/scripts/bad.ini", "examples/reset.ini")
    expect("the rest", texts("#entries dd")[-1], "examples/reset.ini")
    # The page shows the problem of an empty script after the end of the script.
    for script in ("tests/scripts/bad.ini", "tests/golden/empty.txt"):
        records = records_of(output(ICEHOST, "check", "-q", "--json", "-", script))
        show("--force", script)
        items = js("let line; return [...document.querySelectorAll('#source-list .item')].flatMap("
                   "(item) => { if (!item.matches('.line')) return [`${line}:${item.textContent}`];"
                   "line = item.querySelector('a').textContent; return [] })")
        expect(script, items, [f"{one['line']}:{one['column']}: {one['problem']}: {one['text']}"
                               for one in records if "problem" in one])


def check_hostile():
    """Sections and comments that contain markup, code or commands remain text."""
    show("--force", "tests/scripts/markup.ini")
    names = read("tests/golden/page_sections.txt").splitlines()
    expect("sections", [row[2] for row in table()], names)
    expect("lines", [text for text in texts(".line .text") if text.startswith("[")], names)
    expect("elements", texts("img, main script"), [])


def click_wave(canvas, step):
    x = js("return wave.x(arguments[0] + 0.5) - wave.width / 2", step)
    ActionChains(browser).move_to_element_with_offset(canvas, x, 0).click().perform()
    settle()


def check_picking():
    show("examples/scratch_register.ini", "examples/read_idcode.gpio")
    canvas = browser.find_element("id", "canvas")
    numbers = {row[2]: int(row[0]) for row in table() if row[2].startswith("[")}
    places = js("return rows.map((row) => [row.begin, row.end])")
    before = view()
    # A line without an operation selects the operation of its section.
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
    # Each click on a line of a block selects the next operation of that line.
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
    section = "IR=5,1\nDR=W,8,0\n# below\n\n"
    show("--force", "-", script=f"[A]\n{section}[NOTHING]\nIR=5\nDR=W,0\n[C]\n{section}")
    for text, line, row in (("DR=W,0", "8", ""), ("[NOTHING]", "6", ""), ("# below", "4", ""),
                            ("[C]", "9", "1")):
        click(".text", text)
        expect(text, (picked()[0], picked()[1][:1]), (line, row))


# The arguments and standard input of the runs for check_moves. In "long", the list cannot contain
# all operations at once. In "short", the canvas has room for more steps than there are.
READ = "PRINT=GPIO_IN"
PAGES = {
    "long": (["examples/read_idcode.ini", "examples/reset.ini", "-"],
             "[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nREPT=470\nTDI=1\nTCK=1\nTDI=0\nTCK=0\nENDR\n"
             f"{READ}\nEND\n"),
    "failing": (["--keep-going", "--idcode", "39ca2003", "examples/read_idcode.ini", "-"],
                f"[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\n{READ} # expect TCK=1\n\nTCK=1,TMS=1\n"
                f"TCK=0\nREPT=2\n{READ} # expect TCK=0\nENDR\nEND\n"),
    "short": (["examples/reset_pulse.gpio"], ""),
    "two wires": (["--keep-going", "-", "examples/two_wire.ini", "examples/read_idcode.gpio"],
                  f"[ZEVA_ICE_GPIO]\nSTART\n{READ} # expect TCK=1\nEND\n"),
    "many reads": (["--keep-going", "-"],
                   f"[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nREPT=400\nTCK=1\n{READ} # expect TCK=1\n"
                   f"TCK=0\n{READ}\nTDI=1\n{READ} # expect TDI=0\n{READ}\n"
                   "ENDR\nEND\n"),
}
MOVES = "tests/golden/page_moves.txt"
OUTLINE = "tests/golden/page_outline.txt"
# The waveform is 1000 pixels wide, and each list has 10 lines. Each function returns false if the
# page prevents the default action of the browser.
HELPERS = """
const canvas = document.getElementById("canvas"), lists = [sourceList.element, rowList.element];
canvas.style.width = "1064px";
const headings = document.querySelector(".columns").offsetHeight;
[0, headings].forEach((more, at) => { lists[at].style.cssText = `flex: none; height: ${200 + more}px`; });
canvas.setPointerCapture = () => {};
const event = (x, more) => ({clientX: x + canvas.getBoundingClientRect().left,
  clientY: canvas.getBoundingClientRect().top + 50, bubbles: true, cancelable: true, ...more});
window.pointer = (what, x, more) => canvas.dispatchEvent(
  new PointerEvent(`pointer${what}`, event(x, more)));
window.wheel = (x, more) => canvas.dispatchEvent(new WheelEvent("wheel", event(x, more)));
window.key = (key, more, element) => (element ?? canvas).dispatchEvent(
  new KeyboardEvent("keydown", event(0, {key, ...more})));
window.twice = (x) => canvas.dispatchEvent(new MouseEvent("dblclick", event(x)));
window.press = (id) => document.getElementById(id).click();
"""
STATE = """
const short = (value) => value === null ? "-" : Math.round(value * 1000) / 1000;
const text = (selector) => document.querySelector(selector)?.textContent ?? "-";
const of = ({element, shown}) => `${element.scrollTop} ${Math.min(...shown.keys())} ${shown.size}`;
return [[wave.from, wave.scale, wave.cursor, wave.hover].map(short).join(" "),
  `${text("#source-list .picked a")} ${text("#row-list .picked span")} ${location.hash}`,
  of(sourceList), of(rowList), text("#view"), text("#readout")].join(" | ")"""


def check_drawing(what):
    """The canvas shows the data of the page."""
    data = json.loads(re.search('id="data">(.*?)</script', read(PAGE), re.S)[1])
    colours = colours_of(read("host/page/page.css"))
    view = js("const {from, scale, cursor, hover, row, width, height, character} = wave;"
              "return {from, scale, cursor, hover, row: row?.index, width, height, character}")
    view.setdefault("row")
    got, wanted = drawn(js(RECORD), colours, view["width"]), Picture(data, view).wanted()
    if got != wanted:
        lines = unified_diff([str(one) for one in wanted], [str(one) for one in got], n=0)
        failures.append("\n".join([f"{what} draws", *list(lines)[:12]]))


def compare_golden(path, text):
    if "ICESCRIPT_UPDATE_GOLDEN" in os.environ:
        write(path, text)
    failures.extend(unified_diff(read(path).splitlines(), text.splitlines(), path, "now", n=0))


def check_moves():
    """After each "$ ACTION", the session contains the result and the visible state."""
    session = ""
    for line in read(MOVES).splitlines():
        if line[0] == "=":
            continue
        session += line + "\n"
        if line[0] == ">":
            arguments, script = PAGES[line[2:]]
            show(*arguments, script=script)
            js(HELPERS)
            settle()
        elif line[0] == "$":
            done = js("return " + line[2:])
            settle()
            session += f"= {done} | {js(STATE)}\n"
            check_drawing(line)
    compare_golden(MOVES, session)
    expect("font", js("return wave.context.font"), "11px monospace")


def check_outline():
    """Compares the elements of a cut page, except for values that differ between runs. One line has
    more errors than are shown, and one error is after the end of the script."""
    arguments, script = PAGES["failing"]
    run(*arguments, script=script)
    page = re.sub(r'("total_\w+":)(\d+)', lambda total: f"{total[1]}{int(total[2]) + 2}", read(PAGE))
    page = page.replace('"cut_messages":false,"cut_faults":false',
                        '"cut_messages":true,"cut_faults":true')
    errors = [(6, "a"), (6, "b"), (6, "b"), (6, "c"), (6, "d"), (6, "e"), (1, "f"), (14, "g")]
    entries = "".join(f',{{"line":{line},"text":"\\u003cstdin>:{line}:1: {text}"}}'
                      for line, text in errors)
    write(PAGE, page.replace('],\n"total_rows"', entries + '],\n"total_rows"'))
    open_page()
    click(".text", "[READ_IDCODE]")
    outline = js("return document.querySelector('header').outerHTML +"
                 "document.querySelector('main').outerHTML")
    outline = re.sub(r"(<(?:div|dt|li|section|h1|h2|ul|dl)\b)", r"\n\1", outline)
    outline = re.sub(r"(<summary>.*? \u00b7 )[^<]*", r"\1...", outline)
    for name in ("Started", "Plug-in", "icehost", "Totals"):
        outline = re.sub(f"(<dt>{name}</dt><dd>)[^<]*", r"\1...", outline)
    compare_golden(OUTLINE, outline + "\n")


def check_mouse_and_keyboard():
    """Tests events that come from the browser itself."""
    show("examples/scratch_register.ini", "examples/reset.ini")
    canvas = browser.find_element("id", "canvas")

    def keys(*pressed):
        ActionChains(browser).send_keys(*pressed).perform()
        return view()

    full = view()
    click_wave(canvas, 200)
    expect("clicked", texts("#readout")[0][:7], "200 us:")
    near = keys("+", "+", "+")
    expect("zoomed in", near[1] - near[0] < (full[1] - full[0]) / 3 and near[0] < 200 < near[1], True)
    actions = ActionChains(browser).move_to_element(canvas).click_and_hold()
    actions.move_by_offset(-200, -150).release().perform()
    expect("dragged beyond the canvas", view()[0] > near[0], True)
    js("document.getElementById('source-list').focus()")
    keys(Keys.HOME)
    expect("first line", picked()[0], "1")
    keys(*[Keys.ARROW_DOWN] * 5)
    expect("by keys", ("[WRITE_SCRATCH]" in picked()[1], picked()[0]), (True, "6"))


def check_long():
    """A run has more steps and operations than fit into a page. Its last read has a wrong bit."""
    repeated = "TCK=1\nPRINT=GPIO_IN\nTCK=0,TMS=0\nTDI=1\nTDI=0\n"
    script = (f"[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nREPT=30000\n{repeated}ENDR\n"
              "PRINT=GPIO_IN # expect NRST=1\nEND\n")
    expect("status", run("--keep-going", "-", script=script), 1)
    begun = time.monotonic()
    open_page()
    expect("opens in 10 s", time.monotonic() - begun < 10, True)
    expect("notes", [note for note in texts("#notes li") if note.startswith("The ")],
           ["The page shows the first 100000 of 150004 operations, and later failures",
            "The waveform shows the first 100000 of 120002 steps"])
    expect("the end", table()[-1][2:], ["read", "", "0x20 TDO", "0x01/0x01", "NOT MET"])
    expect("elements", len(texts(".item")) < 500, True)
    expect("past the waveform", (texts("#detail dd")[-2], texts("#readout")),
           ("none, at 120002 us, not in the waveform", [""]))
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
    """A client of serve scans through Pause-DR, pulses TRST, and leaves during another scan."""
    scan = RESET + b"04" + TO_SHIFT_DR + b"05" * 3 + BACK[2:]
    server = Serve("--html", PAGE)
    server.play(scan + b"2626" + b"tr" + b"0404" + b"26260404" + b"05" + b"tr" + b"04" +
                TO_SHIFT_DR + b"1515RQ")
    expect("status", server.end()[0], 0)
    open_page()
    expect("table", [row[:5] for row in table()], [
        ["0", "", "TAP reset", "by TMS", ""],
        ["1", "", "DR scan", "DR 4: 0x07", "DR 0x01"],
        ["2", "", "reset pins", "TRST=0 NRST=1", ""],
        ["3", "", "TAP reset", "by TRST", ""],
        ["4", "", "reset pins", "TRST=1 NRST=1", ""],
        ["5", "", "idle", "1 cycle", ""],
        ["6", "", "IR scan, cut short by a reset", "IR 1: 0x01", "IR 0x01"],
        ["7", "", "reset pins", "TRST=0 NRST=1", ""],
        ["8", "", "TAP reset", "by TRST", ""],
        ["9", "", "reset pins", "TRST=1 NRST=1", ""],
        ["10", "", "DR scan, cut short when the client left", "DR 2: 0x03", "DR 0x01"]])
    expect("clients", [re.sub(r" from.*| at \d+ us|, .*", "", text) for text in texts(".note")],
           ["client 1 connected", f"client 1 left (bytes: {len(scan) + 36}"])
    click("#row-list .row > :nth-child(4)", "DR 4: 0x07")
    begin, end = view()
    expect("in sight", begin <= 16 < end, True)
    check_drawing("served")
    expect("no script", texts("#source-list a"), [])
    expect("result", texts("#result"), ["ended"])


def check_narrow():
    set_screen(400, ratio=2)
    show("--idcode", "39ca2003", "examples/read_idcode.ini")
    wide = js("return document.documentElement.scrollWidth")
    expect("no wider than the screen", wide <= 400, True)
    expect("cells", table()[1], ["1", "11", "[READ_IDCODE]", "NOT MET"])
    expect("values", texts(".picked.value"),
           ["sent IR 5: 0x01, DR 32: 0x00000000", "received IR 0x01, DR 0x39ca2003",
            "expected DR 0x1ce51001/0x0fffffff"])
    expect("no levels", texts("#readout")[0].count(","), 0)
    expect("sharp", js("const {a, b, c, d, e, f} = wave.context.getTransform(), {canvas} = wave;"
                       "return [canvas.width / canvas.clientWidth, canvas.height / canvas.clientHeight,"
                       "a, b, c, d, e, f]"), [2, 2, 2, 0, 0, 2, 0, 0])
    set_screen(400, "dark")
    expect("dark", js("return wave.colour.bg"), "#0d1117")
    set_screen(1280)


def check_console():
    """No page has reported an error. The browser does not let a page use the network."""
    expect("console", browser.get_log("browser"), [])
    blocked = browser.execute_async_script(
        "const done = arguments[0]; addEventListener('securitypolicyviolation',"
        "(event) => done(event.effectiveDirective)); fetch('https://localhost:1/').catch(() => {})")
    expect("network", blocked, "connect-src")


run_in_browser(
    check_against_other_outputs, check_head_and_failure, check_problems, check_hostile, check_picking,
    check_moves, check_outline, check_mouse_and_keyboard, check_long, check_interrupted, check_served,
    check_bits, check_copy, check_search, check_failures, check_narrow, check_console)
