// Hides the messages of operations until the reader asks for them. They only repeat the rows.
class Messages {
  // `onChange` must update the list.
  constructor(button, list, onChange) {
    this.button = button;
    this.list = list;
    this.onChange = onChange;
    this.all = false;
    this.others = new Set();  // indexes of the rows whose state differs from `all`
    button.hidden = !rows.some((row) => row.messages > 0);
    button.onclick = () => this.toggleAll();
    list.element.addEventListener("click", (event) => {
      if (!event.target.matches(".toggle")) return;
      event.stopImmediatePropagation();
      this.toggle(list.itemOf(event.target).row);
    });
    list.element.addEventListener("keydown", (event) => this.onKey(event));
  }

  isOpen(row) {
    return this.all !== this.others.has(row.index);
  }

  // Returns whether a log entry is a hidden message. Messages that the search finds are not hidden.
  hides(entry) {
    return entry.kind === "message" && entry.row?.messages > 0 && !this.isOpen(entry.row)
      && !search?.finds(entry.text);
  }

  toggle(row) {
    if (!this.others.delete(row.index)) this.others.add(row.index);
    this.onChange();
  }

  toggleAll() {
    this.all = !this.all;
    this.others.clear();
    this.button.setAttribute("aria-pressed", this.all);
    this.onChange();
    this.list.revealPicked();
  }

  onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const row = rows[this.list.picked];
    if (row === undefined || !(row.messages > 0)) return;
    if (event.key !== (this.isOpen(row) ? "ArrowLeft" : "ArrowRight")) return;
    event.preventDefault();
    this.toggle(row);
  }
}
