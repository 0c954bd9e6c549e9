// The registers of an operation, with the values sent, expected and received as numbers.
const KINDS = ["sent", "expected", "received"];

// Matches a value in a text of a row, such as "DR 32: 0x00000000", "IR 0x01",
// "DR 0x1ce51001/0x0fffffff", or "0x20 TDO" for the levels of the pins.
const VALUE = new RegExp("(?:^|, )(?:([ID]R) )?(?:(\\d+): )?(0x[0-9a-f]+)(?:/(0x[0-9a-f]+))?" +
  "(?: [A-Z0][A-Z|]*)?", "g");

// Returns a map from the names of registers to {bits, bytes, value, mask}.
function valuesOf(text) {
  const values = new Map();
  for (const [, name = "pins", bits, digits, mask] of text.matchAll(VALUE)) {
    values.set(name, {bits: Number(bits ?? 0), bytes: (digits.length - 2) / 2,
      value: BigInt(digits), mask: mask === undefined ? null : BigInt(mask)});
  }
  return values;
}

// Returns the text of a row without the values of registers.
function withoutValues(text) {
  return text.replace(VALUE, "").replace(/^[ ,]+/, "");
}

function bitLength(number) {
  return number === 0n ? 0 : number.toString(2).length;
}

// Over two wires, an extra byte is sent before the register. No such byte is received.
function extraBits(sent, received) {
  if (sent === undefined || received === undefined) return 0;
  return 8 * Math.max(0, sent.bytes - received.bytes);
}

// The register has `total` bits, but only the lowest `bits` are known. `extra` is the value of the
// bits sent before them, or null. `mask` has a one for each bit that is compared.
function makeRegister(name, {sent, expected, received}, wrong) {
  const extra = extraBits(sent, received);
  const total = name === "pins" ? data.pins.length
    : sent !== undefined ? sent.bits - extra : 8 * (received ?? expected).bytes;
  const known = 8 * Math.max(received?.bytes ?? sent?.bytes ?? 0, expected?.bytes ?? 0);
  const bits = Math.max(Math.min(total, known), bitLength(wrong));
  const values = {sent: sent && sent.value >> BigInt(extra), expected: expected?.value,
    received: received?.value};
  const all = (1n << BigInt(bits)) - 1n;
  return {name, bits, total, values, wrong, mask: expected?.mask ?? all,
    extra: extra > 0 ? sent.value & (1n << BigInt(extra)) - 1n : null};
}

function registersOf(row) {
  const texts = Object.fromEntries(KINDS.map((kind) => [kind, valuesOf(row[kind])]));
  const wrong = valuesOf(row.wrong);
  return ["IR", "DR", "pins"].filter((name) => KINDS.some((kind) => texts[kind].has(name))).map(
    (name) => makeRegister(name,
      Object.fromEntries(KINDS.map((kind) => [kind, texts[kind].get(name)])),
      wrong.get(name)?.value ?? 0n));
}

function bitAt(number, bit) {
  return Number(number >> BigInt(bit) & 1n);
}

// Returns the numbers of the bits that are ones in a mask, lowest first.
function onesOf(mask) {
  return [...mask.toString(2)].reverse().flatMap((digit, bit) => digit === "1" ? [bit] : []);
}

// Returns a list of bits as a text, such as "1, 12-13".
function rangesText(bits) {
  const ranges = [];
  for (const bit of bits) {
    const last = ranges[ranges.length - 1];
    if (last !== undefined && last[1] === bit - 1) last[1] = bit;
    else ranges.push([bit, bit]);
  }
  return ranges.map(([first, last]) => first === last ? `${first}` : `${first}-${last}`).join(", ");
}

// Returns "bit 66 is 1", "bits 1, 12-13, 16-19 are wrong" or "TCK is 0"; "" if no bit is wrong.
function wrongText({name, values, wrong}) {
  const bits = onesOf(wrong);
  if (bits.length > 4 && name !== "pins") return `bits ${rangesText(bits)} are wrong`;
  const nameOf = (bit) => name === "pins" ? data.pins[bit] : `bit ${bit}`;
  return bits.map((bit) => `${nameOf(bit)} is ${bitAt(values.received, bit)}`).join(", ");
}

function inHexadecimal(number, bits) {
  return "0x" + number.toString(16).padStart(2 * Math.ceil(bits / 8), "0");
}

function inBinary(number, bits) {
  return "0b" + number.toString(2).padStart(bits, "0");
}
