// The table of all values.

const RowsAtOnce = 200;  // the picture does not wait for the rest

class Table {
  constructor(body, picture, choose) {
    this.body = body;
    this.picture = picture;
    this.rows = [];
    this.addSoon();
    body.addEventListener("click", event => {
      const row = event.target.closest("tr");
      if (row) choose(this.rows.indexOf(row));
    });
  }

  addSoon() {
    this.addUpTo(this.rows.length + RowsAtOnce);
    if (this.rows.length < this.picture.things.length) setTimeout(() => this.addSoon());
  }

  addUpTo(count) {
    const made = this.picture.things.slice(this.rows.length, count).map(thing => this.row(thing));
    this.rows.push(...made);
    this.body.append(...made);
  }

  row(thing) {
    const cell = (text, tag, className) => {
      const element = document.createElement(tag);
      element.textContent = text;
      element.className = className;
      return element;
    };
    const button = cell(thing.name, "button", thing.drawn ? "drawn" : "told");
    button.style.setProperty("--ink", `var(--${this.picture.inks[thing.ink]})`);
    const told = cell([thing.type, thing.note].filter(Boolean).join("; "), "small", "");
    if (!thing.drawn) told.append(cell(" not drawn", "span", "mark"));
    const data = cell("", "td", "");
    data.append(button, told, cell(thing.text, "div", "value"));
    const row = document.createElement("tr");
    row.append(data);
    return row;
  }

  select(index) {
    this.addUpTo(index + 1);
    this.body.querySelector(".selected")?.classList.remove("selected");
    const row = this.rows[index];
    row?.classList.add("selected");
    row?.scrollIntoView({block: "nearest"});
  }

  // Shows the rows whose name holds `text`.
  filter(text) {
    this.addUpTo(this.picture.things.length);
    this.rows.forEach((row, i) => { row.hidden = !this.picture.things[i].name.includes(text); });
  }
}
