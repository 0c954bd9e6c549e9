// Finds a text in lists, even in lines that are not in the document.

// Returns the searchable text of an item. This is the shown text without numbers and results.
function searchText(item) {
  const {kind, row} = item;
  if (kind === "row") {
    row.searched ??= [row.name, row.sent, row.received, row.expected].map(visible).join("\n");
    return row.searched;
  }
  if (kind === "piece" || kind === "value") return "";  // the text of its line or row contains it
  const text = kind === "line" ? data.sources[item.source].lines[item.line - 1] : item.text;
  return visible(text ?? "");
}

// Returns the elements of an item that contain its searchable text.
function searchElements(element) {
  if (element.matches(".row")) return [...element.children].slice(2, -1);
  return element.matches(".line") ? element.querySelectorAll(".text") : [element];
}

// Puts each match into a <mark>.
function markMatches(element, pattern) {
  const walker = document.createTreeWalker(element, NodeFilter.SHOW_TEXT);
  const nodes = [];
  while (walker.nextNode()) nodes.push(walker.currentNode);
  for (const node of nodes) {
    const pieces = [];
    let end = 0;
    for (const match of node.data.matchAll(pattern)) {
      pieces.push(node.data.slice(end, match.index), make("mark", "match", match[0]));
      end = match.index + match[0].length;
    }
    if (end > 0) node.replaceWith(...pieces, node.data.slice(end));
  }
}

class Search {
  // `onShow` is called with the list and the index of the match to show.
  constructor(lists, onShow) {
    this.lists = lists;
    this.onShow = onShow;
    this.pattern = null;
    this.one = null;  // the same pattern without the flag g, for test()
    this.matches = [];  // indexes of items, counted across all lists
    this.current = -1;  // an index into `matches`
    this.texts = new Map();  // maps a list to its items and their texts
    for (const list of lists) {
      list.decorate = (element, index) => this.decorate(list, element, index);
    }
  }

  textsOf(list) {
    if (this.texts.get(list)?.items !== list.items) {
      this.texts.set(list, {items: list.items, texts: list.items.map(searchText)});
    }
    return this.texts.get(list).texts;
  }

  // Sets the text to find, ignoring case. An empty text has no matches.
  look(text) {
    const escaped = text.replace(/[.*+?^${}()|[\]\\]/g, "\\$&");
    this.pattern = text === "" ? null : new RegExp(escaped, "gi");
    this.one = text === "" ? null : new RegExp(escaped, "i");
  }

  finds(text) {
    return this.one !== null && this.one.test(text);
  }

  find() {
    this.matches = [];
    this.current = -1;
    let before = 0;
    for (const list of this.pattern === null ? [] : this.lists) {
      this.textsOf(list).forEach((of, index) => {
        if (this.finds(of)) this.matches.push(before + index);
      });
      before += list.items.length;
    }
    for (const list of this.lists) list.refresh();
  }

  // Shows the next or previous match. The last match is followed by the first.
  step(way) {
    const count = this.matches.length;
    if (count === 0) return;
    this.current = this.current < 0 && way < 0 ? count - 1 : (this.current + way + count) % count;
    const {list, index} = this.place();
    this.onShow(list, index);
    for (const one of this.lists) {
      for (const [at, element] of one.shown) this.markCurrent(one, element, at);
    }
  }

  // Returns the list that contains the current match, and the index of the match in this list.
  place() {
    let index = this.matches[this.current] ?? -1;
    for (const list of this.lists) {
      if (index < list.items.length) return {list, index};
      index -= list.items.length;
    }
    return {list: null, index};
  }

  decorate(list, element, index) {
    if (this.pattern === null) return;
    for (const one of searchElements(element)) markMatches(one, this.pattern);
    this.markCurrent(list, element, index);
  }

  markCurrent(list, element, index) {
    const place = this.place();
    element.classList.toggle("current", place.list === list && place.index === index);
  }
}
