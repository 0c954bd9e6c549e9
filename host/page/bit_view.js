// Shows a register bit by bit, and its values with buttons that copy them.
const BLOCK = 32;  // bits on one line
const BASES = [
  ["hexadecimal", inHexadecimal],
  ["decimal", (number) => String(number)],
  ["binary", inBinary],
];

// Adds a line of bits to a block, highest first. `digit` returns {text, style, title} for a bit.
function renderBits(block, name, first, end, digit) {
  const line = block.appendChild(make("div", "bits"));
  line.append(make("span", "kind", name));
  for (let byte = Math.ceil(end / 8) - 1; 8 * byte >= first; --byte) {
    const cell = line.appendChild(make("span", "byte"));
    for (const half of [8 * byte + 4, 8 * byte]) {
      if (half >= end) continue;
      const digits = cell.appendChild(make("span"));
      for (let bit = Math.min(half + 4, end) - 1; bit >= half; --bit) {
        const {text, style, title} = digit(bit);
        if (style === "") {
          digits.append(text);
          continue;
        }
        const mark = digits.appendChild(make(style === "wrong" ? "mark" : "span", style, text));
        if (title !== undefined) mark.title = title;
      }
    }
  }
}

function renderNumbers(block, first, end) {
  const line = block.appendChild(make("div", "bits numbers"));
  line.append(make("span", "kind", "bit"));
  for (let byte = Math.ceil(end / 8) - 1; 8 * byte >= first; --byte) {
    const cell = line.appendChild(make("span", "byte", 8 * byte));
    const bits = Math.min(8, end - 8 * byte);
    cell.style.width = `calc(${bits}ch + ${bits > 4 ? "var(--half)" : "0px"})`;
  }
}

function digitOf(register, kind) {
  const {values, mask, wrong} = register;
  return (bit) => {
    const text = String(bitAt(values[kind], bit));
    if (kind === "sent" || values.expected === undefined) return {text, style: ""};
    if (bitAt(mask, bit) === 0) {
      const title = `bit ${bit} is not compared`;
      return {text: kind === "expected" ? "x" : text, style: "masked", title};
    }
    if (kind === "expected" || bitAt(wrong, bit) === 0) return {text, style: ""};
    return {text, style: "wrong", title: `bit ${bit} is ${text}, expected ${1 - text}`};
  };
}

function renderBlock(register, first) {
  const block = make("div", "block");
  const end = Math.min(first + BLOCK, register.bits);
  renderNumbers(block, first, end);
  for (const kind of KINDS) {
    if (register.values[kind] === undefined) continue;
    renderBits(block, kind, first, end, digitOf(register, kind));
  }
  const wrong = register.wrong >> BigInt(first) & (1n << BigInt(BLOCK)) - 1n;
  if (wrong !== 0n) {
    block.classList.add("faulty");
    renderBits(block, "wrong", first, end,
      (bit) => ({text: bitAt(register.wrong, bit) === 1 ? "^" : " ", style: ""}));
  }
  return block;
}

async function copyText(button, text) {
  const label = button.getAttribute("aria-label");
  const say = (done) => {
    button.textContent = done;
    button.setAttribute("aria-label", label.replace(/^\w+/, done));
  };
  try {
    await navigator.clipboard.writeText(text);
    say("copied");
  } catch {
    // If the browser does not allow the page to copy, the reader can copy the selection.
    getSelection().selectAllChildren(button.previousElementSibling);
    say("selected");
  }
  setTimeout(() => say("copy"), 1500);
}

function renderValues(register, kind) {
  const line = make("div", "values");
  line.append(make("span", "kind", kind));
  for (const [base, write] of BASES) {
    const text = write(register.values[kind], register.bits);
    const value = line.appendChild(make("span", "number"));
    value.append(make("span", "digits", text));
    const button = value.appendChild(make("button", "copy", "copy"));
    button.setAttribute("aria-label", `copy ${register.name} ${kind}, ${base}`);
    button.onclick = () => copyText(button, text);
  }
  return line;
}

function registerSummary(register) {
  const {name, bits, total, extra} = register;
  if (name === "pins") return data.pins.map((pin, bit) => `${bit} ${pin}`).reverse().join(", ");
  const known = bits < total ? `, of which the first ${bits} are shown` : "";
  const before = extra === null ? "" : `, sent after the byte ${inHexadecimal(extra, 8)}`;
  return `${total} ${total === 1 ? "bit" : "bits"}${known}${before}`;
}

// Returns an element that describes a register, for the details of a row.
function renderRegister(register) {
  const element = make("dd", "register");
  const summary = element.appendChild(make("p", "", registerSummary(register)));
  const wrong = wrongText(register);
  if (wrong !== "") summary.append(": ", make("strong", "bad", wrong));
  const blocks = element.appendChild(make("div", "blocks"));
  // Screen readers skip the blocks, because the text and the values contain the same information.
  blocks.setAttribute("aria-hidden", "true");
  for (let first = BLOCK * Math.ceil(register.bits / BLOCK - 1); first >= 0; first -= BLOCK) {
    blocks.append(renderBlock(register, first));
  }
  for (const kind of KINDS) {
    if (register.values[kind] !== undefined) element.append(renderValues(register, kind));
  }
  return element;
}

// Adds the registers of a row, those with wrong bits first. Scrolls to the lowest wrong bit.
function showRegisters(detail, row) {
  const registers = registersOf(row);
  const rank = ({wrong}) => wrong === 0n ? 1 : 0;
  for (const register of registers.sort((a, b) => rank(a) - rank(b))) {
    const pair = detail.appendChild(make("div"));
    pair.append(make("dt", "", register.name), renderRegister(register));
  }
  const blocks = detail.querySelector(".blocks");
  const faulty = [...(blocks?.querySelectorAll(".faulty") ?? [])].pop();
  const area = detail.parentElement;
  area.scrollTop = 0;
  if (faulty === undefined) return;
  const below = faulty.getBoundingClientRect().bottom - area.getBoundingClientRect().bottom;
  area.scrollTop = Math.max(0, below + 8);
}
