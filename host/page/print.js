// A complete copy of the page for printing. The lists on the screen contain only visible lines.
class Paper {
  static COLUMNS = 118;    // characters
  static LEAST = 8;        // minimum width of a column, in characters
  static MOST_KEPT = 3000; // maximum number of rows protected from page breaks; more would be slow
  static WIDTH = 700;      // width of a band, in pixels
  static LEAST_SCALE = 3;  // pixels per step
  static COLOURS = {bg: "#fff", fg: "#000", dim: "#555", edge: "#777", bad: "#000",
    "bad-soft": "#ccc", pick: "#fff", wave: "#000", block: "#f4f4f4", shift: "#ddd", grid: "#ddd",
    cursor: "#000"};

  constructor() {
    this.element = document.createElement("div");
    this.element.id = "paper";
    this.kept = 0;
    if (data.sources.length > 0) this.addSources();
    this.addOperations();
    if (wave !== null) this.addBands();
  }

  // Returns the printed lines of a row. Leaves out columns with a width of 0.
  layOut(texts, widths) {
    const columns = texts.map((text, column) => ({text, width: widths[column], column}))
      .filter(({width}) => width > 0);
    const pieces = columns.map(({text, width}) => piecesOf(text, width));
    const height = Math.max(...pieces.map((piece) => piece.length));
    return Array.from({length: height}, (_, line) => columns.map(({width, column}, at) => {
      const piece = pieces[at][line] ?? "";
      return column < 2 && widths.length > 3 ? piece.padStart(width) : piece.padEnd(width);
    }).join("  ").trimEnd());
  }

  // Adds unstyled one-line items as plain text, which browsers lay out much faster than elements.
  addText(name, head, items) {
    const table = document.createElement("table");
    if (head !== "") table.createTHead().insertRow().append(make("th", "", head));
    const body = table.createTBody().insertRow().insertCell();
    let run = "";
    for (const {style, lines} of items) {
      const text = lines.join("\n");
      if (style === "" && (lines.length === 1 || ++this.kept > Paper.MOST_KEPT)) {
        run += text + "\n";
        continue;
      }
      body.append(run, make("div", style, ""));
      body.lastChild.append(text);
      run = "";
    }
    body.append(run);
    this.element.append(make("h2", "", name), table);
  }

  addSources() {
    const digits = Math.max(...data.sources.map((source) => String(source.lines.length).length), 3);
    const verdict = longest(verdictTexts());
    const widths = [digits, Math.max(1, verdict), 0];
    widths[2] = Paper.COLUMNS - digits - widths[1] - 4;
    const items = sourceItems((text) => [text]).map((item) => {
      if (item.kind === "title") return {style: "title", lines: [item.text]};
      if (item.kind === "mark") {
        const lines = this.layOut(["", "", item.text], widths);
        return {style: item.error ? "error" : "warning", lines};
      }
      const of = lineRows[item.source].get(item.line) ?? [];
      const number = String(item.line).padStart(digits);
      return {style: worstOf(of) >= NOT_MET ? "bad" : "",
        lines: this.layOut([number, verdictText(of), item.text], widths)};
    });
    this.addText("Script", "", items);
  }

  // Returns the widths of the columns. If the paper is too narrow, the widest columns shrink.
  widths(needs) {
    const gaps = 2 * needs.filter((need) => need > 0).length - 2;
    const cut = (most) => needs.map((need) => Math.min(need, most));
    let most = Math.max(...needs);
    const sum = (widths) => widths.reduce((total, width) => total + width, gaps);
    while (most > Paper.LEAST && sum(cut(most)) > Paper.COLUMNS) --most;
    return cut(most);
  }

  addOperations() {
    const widths = this.widths(columnNeeds());
    const indent = widths[0] + (widths[1] > 0 ? widths[1] + 2 : 0);
    const items = rowItems().filter((item) => item.kind !== "value").map((item) => {
      if (item.kind === "title") return {style: "title", lines: [item.text]};
      if (item.kind === "row") {
        return {style: item.row.verdict >= NOT_MET ? "bad" : "",
          lines: this.layOut(cellTexts(item.row), widths)};
      }
      return {style: item.kind === "error" ? "error" : "",
        lines: this.layOut(["", noteText(item)], [indent, Paper.COLUMNS - indent - 2])};
    });
    this.addText("Operations", this.layOut(COLUMNS, widths)[0], items);
  }

  addBands() {
    this.element.append(make("h2", "", "Waveform"));
    const room = Paper.WIDTH - Wave.LABELS;
    const scale = Math.min(WaveView.MOST_SCALE, Math.max(Paper.LEAST_SCALE, room / steps.length));
    const height = Wave.RULER + (data.pins.length + 3) * Wave.MOST_LANE;
    const colour = {...wave.colour, ...Paper.COLOURS};
    for (let from = 0; from < steps.length; from += room / scale) {
      const context = new SvgContext(Paper.WIDTH, height);
      // A band is the waveform of the screen with another context and position.
      const band = Object.assign(Object.create(wave), {context, colour, height, from, scale,
        width: Paper.WIDTH, lane: Wave.MOST_LANE, cursor: null, hover: null, row: null,
        drawPlace() {}, onMove() {}});
      band.draw();
      context.endPath();
      this.element.append(context.picture);
    }
  }
}

let paper = null;

addEventListener("beforeprint", () => {
  if (paper !== null) return;
  const about = document.getElementById("about");
  paper = {element: document.body.appendChild(new Paper().element), open: about.open};
  about.open = true;
});

addEventListener("afterprint", () => {
  if (paper === null) return;
  paper.element.remove();
  document.getElementById("about").open = paper.open;
  paper = null;
});
