// Mouse, touch and keys.

const ClickSlack = 4;  // pixels that a click may move

class Input {
  constructor(scene, commands) {
    this.scene = scene;
    this.camera = scene.camera;
    this.commands = commands;
    this.pointers = new Map();
    const canvas = scene.canvas;
    canvas.addEventListener("pointerdown", event => this.press(event));
    canvas.addEventListener("pointermove", event => this.move(event));
    canvas.addEventListener("pointerup", event => this.release(event));
    canvas.addEventListener("pointercancel", event => this.pointers.delete(event.pointerId));
    canvas.addEventListener("contextmenu", event => event.preventDefault());
    canvas.addEventListener("wheel", event => this.wheel(event), {passive: false});
    document.addEventListener("keydown", event => this.key(event));
  }

  press(event) {
    this.scene.canvas.setPointerCapture(event.pointerId);
    this.scene.canvas.focus({preventScroll: true});
    if (this.pointers.size === 0) this.travelled = 0;
    this.pointers.set(event.pointerId, [event.offsetX, event.offsetY]);
  }

  move(event) {
    const from = this.pointers.get(event.pointerId);
    if (!from) return;
    const to = [event.offsetX, event.offsetY];
    const [dx, dy] = [to[0] - from[0], to[1] - from[1]];
    this.travelled += Math.hypot(dx, dy);
    this.pointers.set(event.pointerId, to);
    if (this.pointers.size === 2) {
      this.pinch(event.pointerId, from, to);
    } else if (event.shiftKey || (event.buttons & 6) !== 0) {
      this.camera.pan(dx, dy);
    } else {
      this.camera.turn(dx, dy);
    }
    this.scene.redraw();
  }

  // One of two fingers moved: their middle pans, their distance zooms.
  pinch(moved, from, to) {
    const [, other] = [...this.pointers].find(([id]) => id !== moved);
    const apart = spot => Math.hypot(spot[0] - other[0], spot[1] - other[1]) || 1;
    this.camera.pan((to[0] - from[0]) / 2, (to[1] - from[1]) / 2);
    this.camera.zoomBy(apart(to) / apart(from), (to[0] + other[0]) / 2, (to[1] + other[1]) / 2);
  }

  release(event) {
    const clicked = this.pointers.delete(event.pointerId) && this.travelled < ClickSlack;
    if (clicked) this.commands.choose(this.scene.thingAt(event.offsetX, event.offsetY));
  }

  wheel(event) {
    event.preventDefault();
    const pixels = event.deltaY * (event.deltaMode === 1 ? 30 : 1);
    this.camera.zoomBy(Math.exp(-pixels * 0.0015), event.offsetX, event.offsetY);
    this.scene.redraw();
  }

  key(event) {
    if (event.target.tagName === "INPUT" || event.ctrlKey || event.altKey || event.metaKey) return;
    const arrow = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1],
                   ArrowDown: [0, 1]}[event.key];
    if (arrow && event.shiftKey) {
      this.camera.pan(-30 * arrow[0], -30 * arrow[1]);
    } else if (arrow) {
      this.camera.turn(12.5 * arrow[0], 12.5 * arrow[1]);
    } else if (this.commands.keys[event.key]) {
      this.commands.keys[event.key]();
    } else {
      return;
    }
    event.preventDefault();
    this.scene.redraw();
  }
}
