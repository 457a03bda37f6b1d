// Where names go so that they cover neither one another nor what is marked as taken.

const CellSize = 4;
const Sides = [[1, -1], [1, 0], [-1, -1], [1, 1], [-1, 1], [-1, 0], [0, -1], [0, 1]];
const Gaps = [6, 16, 30];

class LabelRoom {
  constructor(width, height) {
    this.columns = Math.floor(width / CellSize);
    this.rows = Math.floor(height / CellSize);
    this.taken = new Uint8Array(this.columns * this.rows);
  }

  cells(x, y, width, height) {
    const cell = at => Math.floor(at / CellSize);
    return [cell(x - width / 2), cell(x + width / 2), cell(y - height / 2), cell(y + height / 2)];
  }

  take(x, y, width, height) {
    const [left, right, top, bottom] = this.cells(x, y, width, height);
    for (let row = Math.max(top, 0); row <= bottom && row < this.rows; ++row) {
      const start = row * this.columns;
      const end = start + Math.min(right + 1, this.columns);
      if (end > start) this.taken.fill(1, start + Math.max(left, 0), end);
    }
  }

  takeLine(spots) {
    for (let i = 1; i < spots.length; ++i) {
      const [[x, y], [toX, toY]] = [spots[i - 1], spots[i]];
      const steps = Math.min(500, 1 + Math.floor(Math.hypot(toX - x, toY - y) / CellSize));
      for (let k = 0; k <= steps; ++k) {
        this.take(x + (toX - x) * k / steps, y + (toY - y) * k / steps, 1, 1);
      }
    }
  }

  free([left, right, top, bottom]) {
    if (left < 0 || top < 0 || right >= this.columns || bottom >= this.rows) return false;
    for (let row = top; row <= bottom; ++row) {
      const start = row * this.columns;
      for (let column = left; column <= right; ++column) {
        if (this.taken[start + column]) return false;
      }
    }
    return true;
  }

  // The middle of the first free box around (x, y), which is then taken; null without room.
  // `beside`: only right beside it.
  place(x, y, width, height, beside) {
    for (const gap of Gaps) {
      for (const [sideX, sideY] of Sides) {
        const atX = x + sideX * (width / 2 + gap);
        const atY = y + sideY * (height / 2 + gap * 0.6);
        if (!this.free(this.cells(atX, atY, width, height))) continue;
        this.take(atX, atY, width, height);
        return [atX, atY, gap];
      }
      if (beside) break;
    }
    return null;
  }
}
