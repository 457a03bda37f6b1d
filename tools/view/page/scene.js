// Draws the picture on the canvas, and knows afterwards what is where.

const ManyDots = 500;      // are drawn smaller
const MostMisses = 1500;   // names without room, after which no more are tried
const Nothing = -1;        // the thing of what belongs to none
const Unchosen = -2;

class Scene {
  constructor(canvas, picture, camera) {
    this.canvas = canvas;
    this.context = canvas.getContext("2d");
    this.picture = picture;
    this.camera = camera;
    this.selected = Unchosen;
    this.names = [];   // of the last drawing: {text, thing, x, y, width, height}
    this.spots = [];   // of the last drawing: {thing, piece}
    this.waiting = false;
    this.takeColours();
  }

  takeColours() {
    const style = getComputedStyle(document.documentElement);
    const colour = name => style.getPropertyValue("--" + name).trim();
    this.colours = this.picture.inks.map(colour);
    this.paper = colour("paper");
    this.text = this.colours[this.picture.inks.indexOf("text")];
    this.redraw();
  }

  resize() {
    const box = this.canvas.getBoundingClientRect();
    const density = window.devicePixelRatio || 1;
    this.canvas.width = Math.round(box.width * density);
    this.canvas.height = Math.round(box.height * density);
    this.density = density;
    this.camera.width = box.width;
    this.camera.height = box.height;
    this.redraw();
  }

  // Draws at the next frame, once.
  redraw() {
    if (this.waiting) return;
    this.waiting = true;
    requestAnimationFrame(() => {
      this.waiting = false;
      this.draw();
    });
  }

  select(thing) {
    this.selected = thing;
    this.redraw();
  }

  draw() {
    const {context, camera} = this;
    context.setTransform(this.density, 0, 0, this.density, 0, 0);
    context.fillStyle = this.paper;
    context.fillRect(0, 0, camera.width, camera.height);
    context.lineJoin = context.lineCap = "round";
    this.room = new LabelRoom(camera.width, camera.height);
    this.names = [];
    this.spots = [];
    this.drawStrokes();
    this.drawDots();
    this.drawSelection();
    this.drawNames();
  }

  // The grid under all, then axes, faces and lines, each from the back to the front.
  drawStrokes() {
    const layers = this.picture.strokes.map(stroke => {
      const depth = stroke.line.reduce((sum, c, i) => sum + c * this.camera.near[i % 3], 0);
      return {stroke, depth: depth / stroke.line.length};
    });
    layers.sort((a, b) => a.stroke.level - b.stroke.level || a.depth - b.depth);
    for (const {stroke} of layers) this.drawStroke(stroke);
  }

  drawStroke(stroke) {
    const {context} = this;
    const pieces = this.camera.projectLine(stroke.line);
    context.strokeStyle = context.fillStyle = this.colours[stroke.ink];
    if (stroke.pen === "filled") {
      context.globalAlpha = stroke.thing === this.selected ? 0.3 : 0.14;
      if (pieces.length === 1) this.trace(pieces[0], "fill");
      context.globalAlpha = 1;
      return;
    }
    const strong = stroke.pen !== "thin";
    context.lineWidth = (strong ? 2.4 : 1.1) + (stroke.thing === this.selected ? 1.5 : 0);
    for (const piece of pieces) {
      if (stroke.thing !== Nothing) {
        this.spots.push({thing: stroke.thing, piece});
        if (this.spots.length < ManyDots) this.room.takeLine(piece);
      }
      const head = stroke.arrow && piece === pieces[pieces.length - 1];
      const line = head ? this.drawHead(piece, strong ? 11 : 8) : piece;
      context.setLineDash(stroke.pen === "dashed" ? [6, 5] : []);
      this.trace(line, "stroke");
      context.setLineDash([]);
    }
  }

  trace(spots, finish) {
    this.context.beginPath();
    for (const [x, y] of spots) this.context.lineTo(x, y);
    this.context[finish]();
  }

  // Draws the head at the end of `line` and returns the line that is left for its shaft.
  drawHead(line, size) {
    const [tipX, tipY] = line[line.length - 1];
    let length = 0, x = 0, y = 0;
    for (let i = line.length - 2; i >= 0 && length < size / 2; --i) {
      [x, y] = [tipX - line[i][0], tipY - line[i][1]];
      length = Math.hypot(x, y);
    }
    if (length < 0.5) return line;
    const back = Math.min(size, length * 0.8), half = back * 0.36;
    [x, y] = [x / length, y / length];
    const [baseX, baseY] = [tipX - x * back, tipY - y * back];
    this.trace([[tipX, tipY], [baseX - y * half, baseY + x * half],
                [baseX + y * half, baseY - x * half]], "fill");
    return [...line.slice(0, -1), [tipX - x * back * 0.8, tipY - y * back * 0.8]];
  }

  drawDots() {
    const {context} = this;
    const dots = [];
    for (const [thing, ink, x, y, z] of this.picture.dots) {
      const spot = this.camera.project(x, y, z);
      if (spot) dots.push({thing, ink, spot});
    }
    dots.sort((a, b) => a.spot[2] - b.spot[2]);
    const radius = dots.length > ManyDots ? 2.2 : 4;
    context.strokeStyle = this.paper;
    context.lineWidth = 0.8;
    for (const {thing, ink, spot: [x, y]} of dots) {
      context.fillStyle = this.colours[ink];
      context.beginPath();
      context.arc(x, y, radius, 0, 2 * Math.PI);
      context.fill();
      context.stroke();
      this.room.take(x, y, 2 * radius, 2 * radius);
      this.spots.push({thing, piece: [[x, y]]});
    }
  }

  drawSelection() {
    if (this.selected === Unchosen) return;
    const spot = this.camera.project(...this.picture.things[this.selected].at);
    if (!spot) return;
    this.context.strokeStyle = this.colours[this.picture.things[this.selected].ink];
    this.context.lineWidth = 2;
    this.context.beginPath();
    this.context.arc(spot[0], spot[1], 9, 0, 2 * Math.PI);
    this.context.stroke();
  }

  drawNames() {
    const chosen = label => label[0] === this.selected;
    const labels = this.picture.labels;
    let misses = 0;
    for (const label of labels) if (chosen(label)) this.drawName(label);
    for (const label of labels) {
      if (chosen(label)) continue;
      // The numbers of the grid come last and are few: they are always tried.
      if (misses > MostMisses && label[0] !== Nothing) continue;
      if (!this.drawName(label)) ++misses;
    }
  }

  drawName([thing, ink, text, x, y, z, size]) {
    const {context} = this;
    const spot = this.camera.project(x, y, z);
    if (!spot) return true;
    const plain = this.colours[ink] === this.text;
    context.font = `${plain ? "" : "600 "}${size}px system-ui, sans-serif`;
    const width = context.measureText(text).width + 4;
    // What is selected is always named, be it over something else.
    const chosen = thing === this.selected && text === this.picture.things[thing].name;
    const above = chosen ? [spot[0], spot[1] - 20, 0] : null;
    const place = this.room.place(spot[0], spot[1], width, size + 3, plain) || above;
    if (!place) return false;
    const [atX, atY, gap] = place;
    context.fillStyle = this.colours[ink];
    if (gap > Gaps[0]) {
      context.lineWidth = 0.7;
      context.strokeStyle = this.colours[ink];
      this.trace([spot, place], "stroke");
    }
    context.textAlign = "center";
    context.textBaseline = "middle";
    context.strokeStyle = this.paper;
    context.lineWidth = 3;
    context.strokeText(text, atX, atY);
    context.fillText(text, atX, atY);
    this.names.push({text, thing, x: atX, y: atY, width, height: size + 3});
    return true;
  }

  // The thing drawn or named at (x, y), or Nothing.
  thingAt(x, y) {
    const named = this.names.find(name => Math.abs(name.x - x) * 2 <= name.width &&
                                          Math.abs(name.y - y) * 2 <= name.height);
    if (named) return named.thing;
    let best = Nothing, nearest = 10;
    for (const {thing, piece} of this.spots) {
      // A dot at the end of a line is the one that is meant.
      const distance = piece.length === 1 ? Math.hypot(piece[0][0] - x, piece[0][1] - y) - 3
                                          : distanceToLine(piece, x, y);
      if (distance <= nearest) [best, nearest] = [thing, distance];
    }
    return best;
  }
}

function distanceToLine(line, x, y) {
  let nearest = Infinity;
  for (let i = 1; i < line.length; ++i) {
    const [[ax, ay], [bx, by]] = [line[i - 1], line[i]];
    const [wx, wy] = [bx - ax, by - ay];
    const along = ((x - ax) * wx + (y - ay) * wy) / (wx * wx + wy * wy || 1);
    const part = Math.max(0, Math.min(1, along));
    nearest = Math.min(nearest, Math.hypot(x - ax - wx * part, y - ay - wy * part));
  }
  return nearest;
}
