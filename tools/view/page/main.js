// Brings the parts together.

const picture = JSON.parse(document.getElementById("picture").textContent);
const element = id => document.getElementById(id);
const camera = new Camera(picture);
const scene = new Scene(element("canvas"), picture, camera);

function choose(thing) {
  table.select(thing);
  scene.select(picture.things[thing]?.drawn ? thing : Unchosen);
}

// Selects a thing and brings it to the middle.
function find(thing) {
  choose(thing);
  if (scene.selected !== Unchosen) camera.target = [...picture.things[thing].at];
}

const table = new Table(element("values"), picture, find);

const views = {x: [0, 0], X: [180, 0], y: [-90, 0], Y: [90, 0], z: [-90, 90], Z: [-90, -90]};

function togglePerspective() {
  camera.perspective = !camera.perspective;
  element("perspective").setAttribute("aria-pressed", camera.perspective);
}

function toggleTheme() {
  const root = document.documentElement;
  const dark = getComputedStyle(root).getPropertyValue("--is-dark").trim() === "1";
  root.dataset.theme = dark ? "light" : "dark";
  scene.takeColours();
}

const keys = {
  "+": () => camera.zoomBy(1.25),
  "=": () => camera.zoomBy(1.25),
  "-": () => camera.zoomBy(0.8),
  "0": () => camera.reset(),
  Home: () => camera.reset(),
  p: togglePerspective,
  t: toggleTheme,
  "/": () => element("search").focus(),
  Escape: () => choose(Unchosen),
};
for (const [axis, [around, above]] of Object.entries(views)) {
  keys[axis] = () => camera.look(around, above);
}

for (const button of document.querySelectorAll("[data-key]")) {
  button.addEventListener("click", event => {
    const key = button.dataset.key;
    keys[event.shiftKey && views[key] ? key.toUpperCase() : key]();
    scene.redraw();
  });
}
element("search").addEventListener("input", event => table.filter(event.target.value));
element("message").textContent = picture.message;
element("count").textContent = `${picture.things.length} values`;
new Input(scene, {choose, keys});
new ResizeObserver(() => scene.resize()).observe(scene.canvas);
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => scene.takeColours());

// For scripts that drive the page.
window.kelview = {picture, camera, scene, find};
