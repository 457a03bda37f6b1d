// The table of all values.

class Table {
  constructor(body, picture, choose) {
    this.body = body;
    this.rows = picture.things.map((thing, index) => this.row(thing, index, picture.inks));
    body.append(...this.rows);
    body.addEventListener("click", event => {
      const row = event.target.closest("tr");
      if (row) choose(this.rows.indexOf(row));
    });
  }

  row(thing, index, inks) {
    const row = document.createElement("tr");
    const cell = (text, tag, className) => {
      const element = document.createElement(tag);
      element.textContent = text;
      element.className = className;
      return element;
    };
    const button = cell(thing.name, "button", thing.drawn ? "drawn" : "told");
    button.style.setProperty("--ink", `var(--${inks[thing.ink]})`);
    const told = cell([thing.type, thing.note].filter(Boolean).join("; "), "small", "");
    if (!thing.drawn) told.append(cell(" not drawn", "span", "mark"));
    const data = cell("", "td", "");
    data.append(button, told, cell(thing.text, "div", "value"));
    row.append(data);
    return row;
  }

  select(index) {
    this.body.querySelector(".selected")?.classList.remove("selected");
    const row = this.rows[index];
    row?.classList.add("selected");
    row?.scrollIntoView({block: "nearest"});
  }

  // Shows the rows whose name holds `text`.
  filter(text) {
    for (const row of this.rows) {
      row.hidden = !row.querySelector("button").textContent.includes(text);
    }
  }
}
