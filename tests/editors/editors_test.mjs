// Runs both grammars of editors/ with the engines of their editors. Each gives every character of
// a text a class, written as a letter; they must agree with the table and with each other.
//   node editors_test.mjs SOURCES KELCALC NODE_MODULES
import assert from "node:assert";
import { execFileSync } from "node:child_process";
import fs from "node:fs";
import { createRequire } from "node:module";
import os from "node:os";
import path from "node:path";

const [sources, kelcalc, modules] = process.argv.slice(2).map((name) => path.resolve(name));
const require = createRequire(path.join(modules, "x"));
const oniguruma = require("vscode-oniguruma");
const textmate = require("vscode-textmate");

// The first that is part of a scope tells the class; the vim script has the same letters.
const letters = [
  ["comment.line", "!"], ["comment.block", "c"], ["string", "s"], ["invalid", "?"],
  ["constant.numeric", "1"], ["storage.type", "t"], ["punctuation.section", "t"],
  ["support.function", "f"], ["entity.name", "d"], ["variable", "n"], ["keyword.control", "{"],
  ["comparison", "<"], ["keyword.operator", "o"], ["constant.character", "s"],
];

// A text, and the class of each of its characters.
const table = [
  ["1 -2.5e-3 .5 2x -x", "1 1111111 11 1n on"],
  ["+5 --5 +-5 1.e2", "o1 ??1 ??1 1111"],
  ['"a \\" b" #', "ss ss ss o"],
  ["[ a [ b ] \\] ] c", "c c c c c cc c n"],
  ["v(1, +2 [x] 3) s (1)", "tt1  11 ccc 1t n  1 "],
  ["v(1, a, 3) V(1) vv(2)", "tt1  ?  1t ? 1  ?? 1 "],
  [";sin ;sine ; ;atan2", "ffff ????? ? ffffff"],
  ["x1_b : x , :", "dddd o d   o"],
  ["x :: x y :", "n ?? n d o"],
  ["1 2 < { } }} {} ~== ~=~ >>> >>", "1 1 < { { {{ ?? <<< ??? ??? oo"],
  ["\\\\ \\ '' ' ?? ? ## # | ^ @ $", "oo o oo o oo o oo o o o o o"],
];

async function textmateClasses() {
  const wasm = fs.readFileSync(require.resolve("vscode-oniguruma/release/onig.wasm"));
  await oniguruma.loadWASM(wasm.buffer.slice(wasm.byteOffset, wasm.byteOffset + wasm.length));
  const file = path.join(sources, "editors/textmate/3dc.tmLanguage.json");
  const grammars = new textmate.Registry({
    onigLib: Promise.resolve({
      createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
      createOnigString: (text) => new oniguruma.OnigString(text),
    }),
    loadGrammar: async () => textmate.parseRawGrammar(fs.readFileSync(file, "utf8"), file),
  });
  const grammar = await grammars.loadGrammar("source.3dc");
  return (text) => {
    let state = textmate.INITIAL;
    return text.split("\n").map((line) => {
      const { tokens, ruleStack } = grammar.tokenizeLine(line, state);
      state = ruleStack;
      return tokens.map(({ startIndex, endIndex, scopes }) => {
        const known = letters.find(([part]) => scopes.some((scope) => scope.startsWith(part) ||
                                                               scope.includes("." + part)));
        return (known ? known[1] : " ").repeat(Math.min(endIndex, line.length) - startIndex);
      }).join("").replace(/./g, (letter, i) => (/\s/.test(line[i]) ? " " : letter));
    }).join("\n");
  };
}

const folder = fs.mkdtempSync(path.join(os.tmpdir(), "kel-editors-"));
process.on("exit", () => fs.rmSync(folder, { recursive: true }));

function vimClasses(text) {
  fs.writeFileSync(path.join(folder, "text.3dc"), text);
  execFileSync("vim", ["-N", "-u", "NONE", "-i", "NONE", "-n", "-es",
    "--cmd", `set runtimepath^=${sources}/editors/vim`, "-c", "filetype on", "-c", "syntax on",
    "-c", "edit text.3dc", "-S", path.join(sources, "tests/editors/classes.vim")],
  { cwd: folder, env: { ...process.env, KEL_CLASSES: path.join(folder, "classes") } });
  return fs.readFileSync(path.join(folder, "classes"), "utf8").replace(/\n$/, "");
}

function expect(name, text, classes, wanted) {
  assert.equal(classes, wanted, `${name}:\n${text}\nwanted:\n${wanted}\nclasses:\n${classes}`);
}

const textmateOf = await textmateClasses();

// Every word that the calculator knows, and no other.
const list = execFileSync(kelcalc, ["--list"], { encoding: "utf8" });
const words = [...list.matchAll(/^ {2}(;\w+|[^\s\w]+) /gm)].map((match) => match[1]);
assert.ok(words.length >= 59, `only ${words.length} words in the list`);
const known = words.join("\n");

const rows = table.map(([program]) => program).join("\n");
for (const [name, classesOf] of [["TextMate", textmateOf], ["vim", vimClasses]]) {
  expect(name, rows, classesOf(rows), table.map(([, classes]) => classes).join("\n"));
  expect(name, known, classesOf(known).replace(/[fo<{]/g, "k"), known.replace(/./g, "k"));
}

// The examples hold nothing unknown, and the two grammars say the same of each character.
for (const file of fs.readdirSync(path.join(sources, "examples")).filter((f) => /3dc$/.test(f))) {
  const text = fs.readFileSync(path.join(sources, "examples", file), "utf8").replace(/\n$/, "");
  const classes = textmateOf(text);
  expect(`${file}, nothing unknown`, text, classes, classes.replace(/\?/g, "-"));
  expect(`${file}, vim beside TextMate`, text, vimClasses(text), classes);
}
