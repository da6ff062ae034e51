#!/usr/bin/env node
// Compares the JavaScript package with the other detectors that npm has: how often each is right, and how long it takes.
//
//     node compare.mjs TEXTS PACKAGE MODULES [--count N] [--native ANSWERS MODEL]
//
// TEXTS is a folder that Bench/Detection/fetch-judge-texts wrote: its folder "choose" or "final". PACKAGE is the folder that
// Bindings/JavaScript/build.sh made, MODULES one in which `npm install jschardet chardet` was run. N texts are drawn for each
// row (2000); the same N gives the same texts. With --native, the answers are compared with those of the native engine,
// which ANSWERS (build/Bindings/JavaScript/JavaScriptAnswers) prints. Each detector is told that the text is Chinese, if it
// can be told, and is left out if it is not installed.
import { execFileSync } from 'node:child_process';
import { readFileSync, readdirSync, statSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join, resolve } from 'node:path';
import { parseArgs } from 'node:util';

const { positionals, values } = parseArgs({
  allowPositionals: true,
  options: { count: { type: 'string', default: '2000' }, native: { type: 'string' } },
});
const [texts, packageFolder, modules, model] = positionals;
const COUNT = Number(values.count);
const LENGTHS = [2, 4, 8, 16, 64]; // characters
const SIZES = { '64 B': 64, '1 KB': 1024, '1 MB': 1 << 20 };
const ENCODINGS = ['GBK', 'Big5', 'UTF-8', 'UTF-16LE'];

// One of ENCODINGS, or null, for the name that a detector gives. ASCII is a part of them all and counts as GBK.
function family(name) {
  const lower = (name ?? '').toLowerCase();
  if (/^(gb|hz)/.test(lower) || lower === 'ascii') return 'GBK';
  if (lower.startsWith('big5')) return 'Big5';
  return ENCODINGS.find((encoding) => encoding.toLowerCase() === lower) ?? null;
}

async function findDetectors() {
  const { load } = createRequire(import.meta.url)(resolve(packageFolder, 'node.cjs'));
  const { detect } = await load();
  const found = { codetrans: (bytes) => detect(bytes).encoding };
  const require = createRequire(resolve(modules, 'any.js'));
  try {
    const { detect: jschardet } = require('jschardet');
    const detectEncodings = ['ascii', 'GB2312', 'GB18030', 'Big5', 'UTF-8', 'UTF-16', 'UTF-16LE'];
    found.jschardet = (bytes) => jschardet(bytes, { minimumThreshold: 0, detectEncodings })?.encoding;
  } catch {
    console.error('no jschardet');
  }
  try {
    const { analyse } = require('chardet');
    found.chardet = (bytes) => analyse(bytes).find(({ name }) => family(name) !== null)?.name;
  } catch {
    console.error('no chardet');
  }
  return found;
}

// -------------------------------------------------------------------------------------------------------------------
// Texts

// Repeatable random numbers below `bound` (xorshift).
let seed = 0x2545f491;
function below(bound) {
  seed ^= seed << 13;
  seed ^= seed >>> 17;
  seed ^= seed << 5;
  return (seed >>> 0) % bound;
}

// Encoders of the two encodings that only have decoders here. The first of two codes for one character is taken, as is the
// part of Big5 that is the same everywhere.
function pairEncoder(label, [firstLead, lastLead]) {
  const decoder = new TextDecoder(label);
  const codes = new Map(Array.from({ length: 0x80 }, (_, ascii) => [String.fromCharCode(ascii), [ascii]]));
  for (let lead = firstLead; lead <= lastLead; ++lead)
    for (let trail = 0x40; trail <= 0xfe; ++trail) {
      const character = decoder.decode(Uint8Array.of(lead, trail));
      const isPrivate = character >= '\ue000' && character < '\uf900';
      if (character.length === 1 && character !== '\ufffd' && !isPrivate && !codes.has(character))
        codes.set(character, [lead, trail]);
    }
  return (text) => {
    const bytes = [];
    for (const character of text) {
      const code = codes.get(character);
      if (code === undefined) return null;
      bytes.push(...code);
    }
    return Buffer.from(bytes);
  };
}

const ENCODERS = {
  GBK: pairEncoder('gb18030', [0x81, 0xfe]),
  Big5: pairEncoder('big5', [0xa1, 0xf9]),
  'UTF-8': (text) => Buffer.from(text, 'utf8'),
  'UTF-16LE': (text) => Buffer.from(text, 'utf16le'),
};

function filesIn(folder) {
  const all = readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    const path = join(folder, entry.name);
    return entry.isDirectory() ? filesIn(path) : [path];
  });
  return all.sort();
}

const running = Object.fromEntries(
  ['hans', 'hant'].map((script) => [
    script,
    filesIn(join(texts, 'windows', script)).map((path) => readFileSync(path, 'utf8')).join('\n'),
  ]),
);

const scriptsOf = (encoding) => (encoding === 'Big5' ? ['hant'] : ['hans', 'hant']);
const isHanzi = (character) => character >= '\u4e00' && character <= '\u9fff';

// Pieces of running text, at least half of which are hanzi. Only traditional text is in Big5.
function drawWindows(encoding, length) {
  const pieces = [];
  const scripts = scriptsOf(encoding);
  while (pieces.length < COUNT) {
    const text = running[scripts[pieces.length % scripts.length]];
    const start = below(text.length - length);
    const window = text.slice(start, start + length);
    if (!window.isWellFormed?.() && /[\ud800-\udfff]/.test(window)) continue;
    if (2 * Array.from(window).filter(isHanzi).length < length) continue;
    const bytes = ENCODERS[encoding](window);
    if (bytes !== null) pieces.push(bytes);
  }
  return pieces;
}

function sample(all, count) {
  const rest = [...all];
  return Array.from({ length: Math.min(count, rest.length) }, () => rest.splice(below(rest.length), 1)[0]);
}

function drawFiles(folder) {
  const small = filesIn(join(texts, 'files', folder)).filter((path) => statSync(path).size < 1 << 16);
  return sample(small, COUNT / 10).map((path) => readFileSync(path));
}

function drawLines() {
  const lines = filesIn(join(texts, 'world/lines')).flatMap((path) => readFileSync(path, 'utf8').split('\n'));
  return sample(lines.filter((line) => /[^\0-\x7f]/.test(line)), COUNT).map((line) => Buffer.from(line));
}

function* rowsOfSamples() {
  for (const length of LENGTHS)
    for (const encoding of ENCODINGS) yield [`${length} characters`, encoding, drawWindows(encoding, length)];
  for (const [i, folder] of ['gbk', 'big5', 'utf8', 'utf16'].entries())
    yield ['whole files', ENCODINGS[i], drawFiles(folder)];
  yield ['lines in other languages', 'UTF-8', drawLines()];
}

// -------------------------------------------------------------------------------------------------------------------
// Accuracy

const allTexts = [];

function printAccuracy(detectors) {
  console.log(`| right | ${Object.keys(detectors).join(' | ')} |\n|---|${'---|'.repeat(Object.keys(detectors).length)}`);
  for (const [what, encoding, pieces] of rowsOfSamples()) {
    allTexts.push(...pieces);
    const cells = Object.values(detectors).map((detect) => {
      const right = pieces.filter((bytes) => family(detect(bytes)) === encoding).length;
      return `${((100 * right) / pieces.length).toFixed(1)} %`;
    });
    console.log(`| ${what}, ${encoding} (${pieces.length}) | ${cells.join(' | ')} |`);
  }
}

function compareWithNative(detect) {
  const framed = allTexts.flatMap((text) => {
    const size = Buffer.alloc(4);
    size.writeUInt32LE(text.length);
    return [size, text];
  });
  const lines = execFileSync(values.native, [model], { input: Buffer.concat(framed), maxBuffer: 1 << 28 }).toString();
  const names = { 0: null, 1: 'utf-8', 2: 'gb18030', 3: 'big5', 8: 'utf-16le' };
  const answers = lines.trimEnd().split('\n').map((line) => {
    const [code, , ascii] = line.split(' ');
    return ascii === '1' ? 'ascii' : names[code];
  });
  const differing = allTexts.filter((text, i) => detect(text) !== answers[i]).length;
  console.log(`\nAnswers other than those of the native engine: ${differing} of ${answers.length}`);
}

// -------------------------------------------------------------------------------------------------------------------
// Time

// Nanoseconds for a call, the median of `runs`, each of which takes a tenth of a second or one call.
function timeOf(detect, pieces, runs) {
  const once = () => pieces.forEach(detect);
  const start = process.hrtime.bigint();
  once();
  const first = Number(process.hrtime.bigint() - start);
  const rounds = Math.max(1, Math.floor(1e8 / first));
  const times = Array.from({ length: runs }, () => {
    const begin = process.hrtime.bigint();
    for (let i = 0; i < rounds; ++i) once();
    return Number(process.hrtime.bigint() - begin) / rounds / pieces.length;
  });
  return times.sort((a, b) => a - b)[runs >> 1];
}

function readable(nanoseconds) {
  const units = ['ns', 'µs', 'ms', 's'];
  const power = Math.min(3, Math.floor(Math.log10(nanoseconds) / 3));
  return `${Number((nanoseconds / 1000 ** power).toPrecision(3))} ${units[power]}`;
}

// 200 different texts of one size in turn, five of 1 MB.
function drawTexts(encoding, size) {
  return Array.from({ length: size < 1 << 20 ? 200 : 5 }, (_, i) => {
    const text = running[scriptsOf(encoding).at(i % scriptsOf(encoding).length)];
    const parts = [];
    for (let length = 0; length < size; length += parts.at(-1).length) {
      const start = below(text.length - 40);
      parts.push(ENCODERS[encoding](text.slice(start, start + 40)) ?? Buffer.alloc(0));
    }
    return Buffer.concat(parts).subarray(0, size);
  });
}

function printTimes(detectors) {
  const names = Object.keys(detectors);
  console.log(`\n| time | ${names.join(' | ')} |\n|---|${'---|'.repeat(names.length)}`);
  for (const [label, size] of Object.entries(SIZES))
    for (const encoding of ENCODINGS) {
      const pieces = drawTexts(encoding, size);
      const times = names.map((name) => timeOf(detectors[name], pieces, size < 1 << 20 ? 7 : 3));
      const cells = times.map((time, i) => readable(time) + (i > 0 ? ` (× ${Math.round(time / times[0])})` : ''));
      console.log(`| ${label}, ${encoding} | ${cells.join(' | ')} |`);
    }
}

const detectors = await findDetectors();
printAccuracy(detectors);
if (values.native !== undefined) compareWithNative(detectors.codetrans);
printTimes(detectors);
