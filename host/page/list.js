// A list of lines of equal height. The document contains only the visible lines of a long list.
class List {
  static SHORT = 1500;  // the browser's own search finds all lines of lists up to this length
  static MARGIN = 30;   // extra lines above and below the visible lines

  // `render` returns the element for an item. An item that can be selected has a `key`. Items with
  // the same key are selected together. `element` may already contain a line of headings.
  constructor(element, render) {
    this.element = element;
    this.headings = element.firstElementChild;
    this.render = render;
    this.height = parseInt(getComputedStyle(element).getPropertyValue("--item"), 10);
    this.inner = element.appendChild(document.createElement("div"));
    this.inner.setAttribute("role", "rowgroup");
    this.items = [];
    this.shown = new Map();  // maps an index to its element
    this.picked = null;
    this.decorate = null;  // optional; called with each element and its index before it is shown
    element.addEventListener("scroll", () => this.show());
    new ResizeObserver(() => this.show()).observe(element);
  }

  setItems(items) {
    this.items = items;
    this.inner.style.height = `${items.length * this.height}px`;
    this.element.setAttribute("aria-rowcount", items.length);
    this.refresh();
  }

  // Renders all visible lines again.
  refresh() {
    this.shown.clear();
    this.inner.replaceChildren();
    this.show();
  }

  // Returns the height of the space for items, in pixels.
  room() {
    return Math.max(0, this.element.clientHeight - (this.headings?.offsetHeight ?? 0));
  }

  show() {
    const all = this.items.length <= List.SHORT;
    const {scrollTop} = this.element;
    const clientHeight = this.room();
    const top = Math.floor(scrollTop / this.height);
    const first = all ? 0 : Math.max(0, top - List.MARGIN);
    const last = all ? this.items.length
      : Math.min(this.items.length, top + Math.ceil(clientHeight / this.height) + List.MARGIN);
    for (const [index, element] of this.shown) {
      if (index >= first && index < last) continue;
      element.remove();
      this.shown.delete(index);
    }
    for (let index = first; index < last; ++index) {
      if (!this.shown.has(index)) this.add(index);
    }
  }

  add(index) {
    const item = this.items[index];
    const element = this.render(item);
    element.classList.add("item");
    element.id = `${this.element.id}-${index}`;
    element.style.top = `${index * this.height}px`;
    element.setAttribute("role", "row");
    element.setAttribute("aria-rowindex", index + 1);
    this.mark(element, item);
    this.decorate?.(element, index);
    this.shown.set(index, element);
    this.inner.append(element);
  }

  mark(element, item) {
    const picked = item.key !== undefined && item.key === this.picked;
    element.classList.toggle("picked", picked);
    element.setAttribute("aria-selected", picked);
  }

  pick(key) {
    this.picked = key;
    for (const [index, element] of this.shown) this.mark(element, this.items[index]);
    this.revealPicked();
  }

  revealPicked() {
    const index = this.picked === null ? -1
      : this.items.findIndex((item) => item.key === this.picked);
    this.reveal(index);
    const element = this.shown.get(index);
    if (element === undefined) this.element.removeAttribute("aria-activedescendant");
    else this.element.setAttribute("aria-activedescendant", element.id);
  }

  // Returns the item whose element is, or contains, this element.
  itemOf(element) {
    const row = element.closest(".item");
    return row === null ? undefined : this.items[Number(row.getAttribute("aria-rowindex")) - 1];
  }

  reveal(index) {
    if (index < 0) return;
    const {scrollTop} = this.element;
    const clientHeight = this.room();
    const y = index * this.height;
    if (y >= scrollTop && y + this.height <= scrollTop + clientHeight) return;
    this.element.scrollTop = Math.max(0, y - clientHeight / 3);
    this.show();
  }

  // Returns the item that a keyboard key selects next, or null if it selects none.
  neighbour(key) {
    const page = Math.max(1, Math.floor(this.room() / this.height) - 1);
    const ways = {ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page,
      Home: -Infinity, End: Infinity};
    if (!(key in ways)) return null;
    const choices = this.items.filter((item) => item.leads);
    const at = choices.findIndex((item) => item.key === this.picked);
    const to = at < 0 ? 0 : Math.min(choices.length - 1, Math.max(0, at + ways[key]));
    return choices[to] ?? null;
  }
}
