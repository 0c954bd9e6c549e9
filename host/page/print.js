// The page on paper: all lines, all operations, and the waveform in bands. It exists while the browser
// prints only, as most of the lists does not.
class Paper {
  static WIDTH = 700;      // of a band, in pixels
  static LEAST_SCALE = 3;  // pixels a step
  static COLOURS = {bg: "#fff", fg: "#000", dim: "#555", edge: "#777", bad: "#000",
    "bad-soft": "#ccc", pick: "#fff", wave: "#000", block: "#f4f4f4", shift: "#ddd", grid: "#ddd",
    cursor: "#000"};

  constructor() {
    this.element = document.createElement("div");
    this.element.id = "paper";
    if (data.sources.length > 0) this.addTable("Script", [], this.sourceRows());
    const columns = columnNeeds().map((need, column) => ({need, column})).filter(({need}) => need > 0);
    this.addTable("Operations", columns, this.operationRows(columns));
    if (wave !== null) this.addBands();
  }

  addTable(name, columns, rows) {
    const table = document.createElement("table");
    // Widths in proportion to the contents.
    const most = columns.map(({need}) => Math.min(need, 36) + 1);
    const sum = most.reduce((total, width) => total + width, 0);
    if (columns.length === 0) table.append(this.column("5ch"), this.column("9ch"), this.column(""));
    else table.append(...most.map((width) => this.column(`${100 * width / sum}%`)));
    if (columns.length > 0) {
      const head = table.createTHead().insertRow();
      for (const {column} of columns) head.append(make("th", column < 2 ? "number" : "", COLUMNS[column]));
    }
    table.createTBody().append(...rows);
    this.element.append(make("h2", "", name), table);
  }

  column(width) {
    const element = document.createElement("col");
    element.style.width = width;
    return element;
  }

  row(cells) {
    const row = document.createElement("tr");
    for (const [style, text] of cells) row.append(make("td", style, text));
    return row;
  }

  wideRow(style, text, before, span) {
    const row = this.row([...before, [style, text]]);
    row.lastChild.colSpan = span;
    return row;
  }

  sourceRows() {
    return sourceItems((text) => [text]).map((item) => {
      if (item.kind === "title") return this.wideRow("title", item.text, [], 3);
      if (item.kind === "mark") {
        return this.wideRow(item.error ? "error" : "warning", item.text, [["", ""]], 2);
      }
      const of = lineRows[item.source].get(item.line) ?? [];
      const style = VERDICT_STYLES[worstOf(of)] ?? "";
      return this.row([["number", item.line], [style, verdictText(of)], ["", item.text]]);
    });
  }

  operationRows(columns) {
    const numbers = columns.filter(({column}) => column < 2).map(() => ["", ""]);
    return rowItems().filter((item) => item.kind !== "value").map((item) => {
      if (item.kind === "title") return this.wideRow("title", item.text, [], columns.length);
      if (item.kind !== "row") {
        return this.wideRow(item.kind === "error" ? "error" : "note", noteText(item), numbers,
          columns.length - numbers.length);
      }
      const texts = cellTexts(item.row);
      return this.row(columns.map(({column}) => [
        column < 2 ? "number" : column === 6 ? VERDICT_STYLES[item.row.verdict] : "", texts[column]]));
    });
  }

  addBands() {
    this.element.append(make("h2", "", "Waveform"));
    const room = Paper.WIDTH - Wave.LABELS;
    const scale = Math.min(WaveView.MOST_SCALE, Math.max(Paper.LEAST_SCALE, room / steps.length));
    for (let from = 0; from < steps.length; from += room / scale) {
      const context = new SvgContext(Paper.WIDTH, wave.height);
      // Draws as the waveform on the screen does, but elsewhere.
      const band = Object.assign(Object.create(wave), {context, width: Paper.WIDTH, from, scale,
        cursor: null, hover: null, row: null, colour: Paper.COLOURS, drawPlace() {}, onMove() {}});
      band.draw();
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
