"""Checks the tools of a page: bits of registers, copying, the search and the keys for failures."""
import json
import re

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from lib import expect, read, records_of, write
from page_browser import PAGE, browser, js, open_page, run, set_screen, settle, show, texts

# Returns the digits of the first register with their styles, most significant first, and the lines
# that point at wrong bits. Also returns whether the columns of bytes are aligned and fit the pane.
BITS = """
const lines = {}, [register] = document.querySelectorAll(".register");
for (const line of register?.querySelectorAll(".bits:not(.numbers)") ?? []) {
  for (const half of line.querySelectorAll(".byte > span")) for (const part of half.childNodes) {
    for (const digit of part.textContent) {
      (lines[line.firstChild.textContent] ??= []).push(digit + (part.className ?? ""));
    }
  }
}
const straight = [...register.querySelectorAll(".block")].every((block) => {
  const [ends, ...others] = [...block.children].map((line) =>
    [...line.querySelectorAll(".byte")].map((byte) => byte.getBoundingClientRect().right));
  return others.every((line) => line.length === ends.length &&
    line.every((end, at) => Math.abs(end - ends[at]) < 1)) && block.scrollWidth <= block.clientWidth;
});
const detail = document.getElementById("detail-area");
return [lines, straight && detail.scrollWidth <= detail.clientWidth];"""


def wanted_bits(bits, values, mask, wrong):
    """Returns the expected result of BITS for (sent, expected, received)."""
    lines = {}
    for kind, value in zip(("sent", "expected", "received"), values):
        if value is None:
            continue
        masked = ["masked" if kind != "sent" and not mask >> bit & 1 else "" for bit in range(bits)]
        lines[kind] = [
            ("x" if kind == "expected" and masked[bit] else str(value >> bit & 1))
            + (masked[bit] or ("wrong" if kind == "received" and bit in wrong else ""))
            for bit in reversed(range(bits))]
    # Each block of 32 bits with wrong bits has a line that points at them.
    pointed = [bit for bit in reversed(range(bits)) if any(bit // 32 == one // 32 for one in wrong)]
    if pointed:
        lines["wrong"] = ["^" if bit in wrong else " " for bit in pointed]
    return lines


def check_bits():
    run("--json", "j", "--idcode", "39ca2003", "examples/read_idcode.ini")
    page = read(PAGE)
    [told] = [one for call in records_of(read("j")) for one in call.get("expectations", [])]
    pattern = int("9e3779b97f4a7c15f39cc0605cedc834" * 6, 16)
    full = (1 << 672) - 1
    few = full & ~(1 << 300) & ~(0xff << 48)
    # Bits, (sent, expected, received), mask, wrong bits, and the text about the wrong bits.
    cases = [
        (32, (0, 0x1ce51001, 0x39ca2003), 0x0fffffff, told["wrong_bits"],
         "bits 1, 12-13, 16-19, 21, 24, 26 are wrong"),
        (672, (pattern & full, pattern & full ^ 1 << 300, pattern & full ^ (1 << 66 | 1 << 671 | 1)),
         few, [0, 66, 671], "bit 0 is 1, bit 66 is 0, bit 671 is 1"),
        (67, (0, 0, 4 << 64), (1 << 67) - 1, [66], "bit 66 is 1"),
        (9, (0x1ff, None, 0x101), 0x1ff, [], ""),
        (1, (1, 0, 0), 1, [], ""),
        (40, (0xfedcba9876, None, None), (1 << 40) - 1, [], ""),
    ]
    for bits, (sent, wanted, got), mask, wrong, said in cases:
        def digits(value, size=2 * ((bits + 7) // 8)):
            return f"0x{value:0{size}x}"
        row = [f"DR {bits}: {digits(sent)}", f"DR {digits(got)}" if got is not None else "",
               f"DR {digits(wanted)}/{digits(mask)}" if wanted is not None else "",
               f"DR {digits(sum(1 << bit for bit in wrong))}" if wrong else "", 2 if wrong else 0]
        write(PAGE, re.sub(r'"IR 5: .*?,2\]', lambda _, row=row: json.dumps(row)[1:], page))
        for width in (400, 700, 1280):
            set_screen(width)
            open_page("#line-11")
            values = (sent, wanted, got)
            expect(f"{bits} bits at {width}", js(BITS), [wanted_bits(bits, values, mask, wrong), True])
        expect("numbers", texts(".register .numbers .byte"),
               [str(bit) for bit in reversed(range(0, bits, 8))])
        expect("said", texts(".register strong"), [said] if said else [])
        expect("values", texts(".register .digits"),
               [text for value in (sent, wanted, got) if value is not None
                for text in (digits(value), str(value), f"0b{value:0{bits}b}")])
        if wrong:
            expect("lowest in sight", js(
                "const [a, b] = ['#detail-area', '.register .block.faulty:nth-last-child(1 of .faulty)'].map("
                "(one) => document.querySelector(one).getBoundingClientRect());"
                "return b.top >= a.top - 1 && b.bottom <= a.bottom + 1"), True)
    set_screen(1280)
    # On two wires, a byte is sent before each register. The bits of pin values have names.
    show("examples/two_wire.ini")
    js("pickRow(rows[1])")
    expect("two wires", (texts(".register p"), texts(".register .digits")[::3]),
           (["5 bits, sent after the byte 0x00", "32 bits, sent after the byte 0x01"],
            ["0x01", "0x01", "0x00000000", "0x1ce51001", "0x1ce51001"]))
    show("--keep-going", "-", script="[ZEVA_ICE_GPIO]\nSTART\nPRINT=GPIO_IN # expect TCK=1\nEND\n")
    expect("pins", (texts(".register strong"), js(BITS)[0]["received"]),
           (["TCK is 0"], ["0masked", "0masked", "0masked", "0wrong", "0masked", "0masked"]))


def check_copy():
    show("--idcode", "39ca2003", "examples/read_idcode.ini")
    js("window.copied = []; Object.defineProperty(navigator, 'clipboard', {value: {"
       "writeText: async (text) => { if (text === '0') throw Error(); copied.push(text); }}});"
       "for (const button of document.querySelectorAll('.copy')) button.click()")
    settle()
    values = texts(".digits")
    expect("copied", js("return copied"), [text for text in values if text != "0"])
    expect("said", texts(".copy"), ["copied" if text != "0" else "selected" for text in values])
    expect("to copy by hand", js("return String(getSelection())"), "0")
    expect("names", js("return document.querySelector('.copy').ariaLabel"),
           "copied DR sent, hexadecimal")


def press(*keys):
    ActionChains(browser).send_keys(*keys).perform()
    settle()


def back(key):
    ActionChains(browser).key_down(Keys.SHIFT).send_keys(key).key_up(Keys.SHIFT).perform()
    settle()


def current():
    """Returns the current match if it is visible."""
    return js("const [item, ...others] = document.querySelectorAll('.item.current');"
              "if (!item || others.length > 0) return null;"
              "const a = item.parentElement.parentElement.getBoundingClientRect();"
              "const b = item.getBoundingClientRect();"
              "return b.top >= a.top && b.bottom <= a.bottom ? item.textContent : null")


MANY = ("[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F # (Begin.*)\nREPT=600\nTCK=1\n"
        "PRINT=GPIO_IN # expect TCK=0\nTCK=0\nENDR\nPRINT=GPIO_IN # expect TCK=0\nEND\n")


def check_search():
    """After the last match, Enter shows the first. Most matches are not yet in the page."""
    run("--keep-going", "examples/read_idcode.ini", "-", script=MANY)
    open_page()
    reads = [f"GPIO_DATA_{number} = 0x000000" for number in range(601)]
    written = "write" + "OUT TCK"
    errors = ["line 6: expected 0x00, captured 0x24 (mask 0x04): TCK is 1"]
    # Text to search for, number of matches, and parts of the matches in order.
    for query, count, shown in (
            ("GPIO_data_", 601, reads[:3]),
            ("examples/read_idcode.ini", 2, ["examples/read_idcode.ini"] * 2),
            ("out tck", 600, [written] * 3),
            ("(begin.*)", 1, ["GPIO_OE=0x1F # (Begin.*)"] * 2),
            ("# 0x1ce51001", 1, ["TDO=0x01,0x10,0xe5,0x1c       # 0x1ce51001"]),
            ("captured 0x24", 601, ["expected 0x00, captured 0x24 (mask 0x04): TCK is 1 \u00d7600",
                                    *errors * 2]),
            ("[READ_IDCODE]", 2, ["[READ_IDCODE]", "IR 5: 0x01, DR 32: 0x00000000"] * 2),
            ("u0000", 0, [])):
        js("document.activeElement.blur(); scrollTo(0, 0)")
        press("/", query)
        matches = f"{count} {'match' if count == 1 else 'matches'}"
        for number, part in enumerate(shown):
            expect(query, texts("#matches"), [f"{number % count + 1} of {matches}"])
            expect(f"{query}, {number}", part in (current() or ""), True)
            expect(query, query.lower() in [one.lower() for one in texts(".item.current mark")], True)
            press(Keys.ENTER)
        if count > 2:
            for number in reversed(range(-2, len(shown))):
                back(Keys.ENTER)
                expect(query, texts("#matches"), [f"{number % count + 1} of {matches}"])
        if query == "GPIO_data_":
            expect("the last but one", (reads[599] in current(), texts("#row-list .picked.row")[0][:4]),
                   (True, "1800"))
        if not shown:
            expect(query, (texts("#matches"), texts(".item mark")), (["no matches"], []))
        press(Keys.ESCAPE)
        expect("cleared", (js("return document.getElementById('search').value"), texts("#matches"),
                           texts(".item mark, .item.current")), ("", [""], []))
    # A match in the script selects its line, and the operation of that line.
    press("[read_idcode]")
    expect("picked", (texts("#source-list .picked a"), js("return pickedRow.index")), (["9"], 1))
    for button, place in (("match-next", 2), ("match-next", 1), ("match-previous", 2)):
        browser.find_element("id", button).click()
        expect(button, texts("#matches"), [f"{place} of 2 matches"])


def check_failures():
    run("--keep-going", "examples/read_idcode.ini", "-", script=MANY)
    open_page()
    fails = js("return rows.filter((row) => row.verdict >= 2).map((row) => row.index)")
    expect("failures", len(fails), 600)

    def place():
        return texts("#failures")[0], js("return [pickedRow?.index, document.querySelector("
                                         "'#row-list .picked.row > :last-child')?.textContent]")
    # Actions, and the failure that is then shown (None for an operation without a failure).
    for deed, number in (
            (lambda: None, 1), (lambda: press("n"), 2), (lambda: press("n"), 3),
            (lambda: press("p"), 2), (lambda: press("p", "p"), 600), (lambda: press("n"), 1),
            (lambda: browser.find_element("id", "failure-previous").click(), 600),
            (lambda: browser.find_element("id", "failure-next").click(), 1),
            (lambda: js("pickRow(rows[30])"), None),
            (lambda: press("n"), next(i for i, row in enumerate(fails) if row > 30) + 1),
            (lambda: press("/", "captured"), 1), (lambda: press(Keys.ESCAPE, "p"), 1),
            (lambda: press(Keys.BACKSPACE, Keys.ESCAPE, "p"), 600)):
        deed()
        settle()
        if number is not None:
            expect("failure", place(), (f"{number} of 600 failures", [fails[number - 1], "NOT MET"]))
    # The filter keeps the failed operations with their errors and messages.
    whole, before = js("return rowList.items.length"), place()
    browser.find_element("id", "failed-only").click()
    expect("failed only", js("return rowList.items.map((item) => item.kind + (item.row?.verdict ?? ''))"),
           ["title", *["row2", "error2"] * 600, "error0"])
    expect("still there", place(), before)
    press("/", "0x00000020")
    expect("found among them", texts("#matches"), ["no matches"])
    press(Keys.ESCAPE)
    browser.find_element("id", "failed-only").click()
    expect("all again", js("return rowList.items.length"), whole)
    show("examples/read_idcode.ini")
    press("n", "p")
    expect("without failures", (texts("#failures"), js("return pickedRow"), js(
        "return [...document.querySelectorAll('#tools :disabled')].length")),
           (["no failures"], None, 5))
