// Lines of the script that are longer than their area, in pieces that fit.
class Wrapping {
  constructor(button, list, onChange) {
    this.button = button;
    this.list = list;
    this.onChange = onChange;
    this.most = Infinity;  // columns
    button.onclick = () => this.fit(this.most === Infinity);
    new ResizeObserver(() => this.fit(this.most !== Infinity)).observe(list.element);
  }

  fit(on) {
    const most = on ? this.room() : Infinity;
    if (most === this.most) return;
    this.most = most;
    this.button.setAttribute("aria-pressed", on);
    this.onChange();
    this.list.revealPicked();
  }

  // The columns for the text of a line.
  room() {
    const text = this.list.element.querySelector(".line .text");
    if (text === null || text.clientWidth === 0) return this.most;
    const context = document.createElement("canvas").getContext("2d");
    context.font = getComputedStyle(text).font;
    return Math.max(10, Math.floor(text.clientWidth / context.measureText("0").width));
  }

  // At least one; they end at blanks where these are not far away.
  pieces(text) {
    const whole = visible(text);
    if (whole.length <= this.most / 8) return [whole];
    const pieces = [];
    let from = 0;
    for (let end = this.endOf(whole, 0); end < whole.length; end = this.endOf(whole, from)) {
      const blank = whole.lastIndexOf(" ", end) + 1;
      const cut = blank > from + (end - from) / 2 ? blank : end;
      pieces.push(whole.slice(from, cut));
      from = cut;
    }
    return [...pieces, whole.slice(from)];
  }

  // Where the text that begins at `from` no longer fits. Letters of other scripts may be twice as wide.
  endOf(text, from) {
    let column = 0;
    let at = from;
    for (const letter of text.slice(from, from + this.most)) {
      const code = letter.codePointAt(0);
      column += letter === "\t" ? 8 - column % 8 : code < 0x1100 ? 1 : 2;
      if (column > this.most) return at;
      at += letter.length;
    }
    return at;
  }
}
