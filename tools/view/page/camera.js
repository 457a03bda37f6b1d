// Where the picture is seen from. Angles are degrees, z is up, the screen's y runs downwards.

const Home = {around: -60, above: 30};

class Camera {
  constructor(picture) {
    this.picture = picture;
    this.perspective = false;
    this.width = this.height = 1;
    this.reset();
  }

  reset() {
    this.target = [...this.picture.middle];
    this.zoom = 1;
    this.look(Home.around, Home.above);
  }

  // Looks at the target from `around` degrees (from the x axis towards y) and `above` the floor.
  look(around, above) {
    this.around = around;
    this.above = Math.max(-90, Math.min(90, above));
    const [a, b] = [this.around, this.above].map(angle => angle * Math.PI / 180);
    const [sinA, cosA, sinB, cosB] = [Math.sin(a), Math.cos(a), Math.sin(b), Math.cos(b)];
    this.right = [-sinA, cosA, 0];
    this.up = [-cosA * sinB, -sinA * sinB, cosB];
    this.near = [cosA * cosB, sinA * cosB, sinB];
  }

  turn(dx, dy) { this.look(this.around - dx * 0.4, this.above + dy * 0.4); }

  // Pixels for one unit of the picture at the target.
  scale() { return this.zoom * Math.min(this.width, this.height) / (1.8 * this.picture.radius); }

  pan(dx, dy) {
    const scale = this.scale();
    for (let i = 0; i < 3; ++i) this.target[i] += (this.up[i] * dy - this.right[i] * dx) / scale;
  }

  // Zooms so that whatever is seen at (x, y) stays there.
  zoomBy(factor, x = this.width / 2, y = this.height / 2) {
    const before = this.zoom;
    this.zoom = Math.max(0.05, Math.min(1e5, this.zoom * factor));
    const back = 1 - this.zoom / before;
    this.pan((x - this.width / 2) * back, (y - this.height / 2) * back);
  }

  // How far the eye is from the target, in units.
  distance() { return 4 * this.picture.radius; }

  // Right, up and towards the eye, in units from the target.
  toView(x, y, z) {
    const [dx, dy, dz] = [x - this.target[0], y - this.target[1], z - this.target[2]];
    const along = axis => axis[0] * dx + axis[1] * dy + axis[2] * dz;
    return [along(this.right), along(this.up), along(this.near)];
  }

  // The spot on the screen of a place in view coordinates, and its depth.
  toScreen([x, y, z]) {
    const grown = this.perspective ? this.distance() / (this.distance() - z) : 1;
    const scale = this.scale() * grown;
    return [this.width / 2 + x * scale, this.height / 2 - y * scale, z];
  }

  behind(place) { return this.perspective && place[2] > 0.95 * this.distance(); }

  // The spot of a place of the picture; null when it is behind the eye.
  project(x, y, z) {
    const place = this.toView(x, y, z);
    return this.behind(place) ? null : this.toScreen(place);
  }

  // The visible pieces of a line of places x, y, z, x, y, z, ...
  projectLine(line) {
    const pieces = [];
    let piece = [];
    let last = null;
    for (let i = 0; i < line.length; i += 3) {
      const place = this.toView(line[i], line[i + 1], line[i + 2]);
      if (last && this.behind(place) !== this.behind(last)) piece.push(this.cut(last, place));
      if (this.behind(place)) {
        if (piece.length > 1) pieces.push(piece);
        piece = [];
      } else {
        piece.push(this.toScreen(place));
      }
      last = place;
    }
    if (piece.length > 1) pieces.push(piece);
    return pieces;
  }

  // Where the line from `a` to `b` passes the plane before the eye.
  cut(a, b) {
    const part = (0.95 * this.distance() - a[2]) / (b[2] - a[2]);
    return this.toScreen(a.map((from, i) => from + (b[i] - from) * part));
  }
}
