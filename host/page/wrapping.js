// Returns the end of the piece of a text that begins at `from` and fits into `most` columns. Some
// characters, such as Chinese ones, need two columns.
function endOf(text, from, most) {
  let column = 0;
  let at = from;
  for (const letter of text.slice(from, from + most)) {
    column += letter === "\t" ? 8 - column % 8 : letter.codePointAt(0) < 0x1100 ? 1 : 2;
    if (column > most) return at;
    at += letter.length;
  }
  return at;
}

// Splits a text into pieces of at most `most` columns, after blanks if possible.
function piecesOf(text, most) {
  const whole = visible(text);
  const pieces = [];
  let from = 0;
  if (whole.length <= most && /^[ -~]*$/.test(whole)) return [whole];
  for (let end = endOf(whole, 0, most); end < whole.length; end = endOf(whole, from, most)) {
    const blank = whole.lastIndexOf(" ", end - 1) + 1;
    const cut = blank > from + (end - from) / 2 ? blank : end;
    pieces.push(whole.slice(from, cut));
    from = cut;
  }
  return [...pieces, whole.slice(from)];
}

// Wraps the lines of the script that are wider than their area.
class Wrapping {
  constructor(button, list, onChange) {
    this.button = button;
    this.list = list;
    this.onChange = onChange;
    this.on = true;
    this.most = Infinity;  // columns
    button.onclick = () => this.turn(!this.on);
    new ResizeObserver(() => this.fit()).observe(list.element);
  }

  turn(on) {
    this.on = on;
    this.button.setAttribute("aria-pressed", on);
    this.fit();
  }

  fit() {
    const most = this.on ? this.room() : Infinity;
    if (most === this.most) return;
    this.most = most;
    this.onChange();
    this.list.revealPicked();
  }

  // Returns how many columns the text of a line can have.
  room() {
    const text = this.list.element.querySelector(".line .text");
    if (text === null || text.clientWidth === 0) return this.most;
    const context = document.createElement("canvas").getContext("2d");
    context.font = getComputedStyle(text).font;
    return Math.max(10, Math.floor(text.clientWidth / context.measureText("0").width));
  }

  pieces(text) {
    return piecesOf(text, this.most);
  }
}
