// The package against the native engine, and as its users get it.
// Environment: PACKAGE, the folder that build.sh made; ANSWERS, the program of Answers.cpp; ROOT, the project's folder.
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, readdirSync, statSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { gunzipSync, gzipSync } from 'node:zlib';

const PACKAGE = resolve(process.env.PACKAGE);
const { ANSWERS, ROOT } = process.env;
const file = (name) => readFileSync(join(PACKAGE, name));
const { load } = await import(pathToFileURL(join(PACKAGE, 'node.js')));
const codetrans = await load();

const samples = join(ROOT, 'Test/Samples');
const texts = readdirSync(samples).map((name) => readFileSync(join(samples, name)));

// Repeatable random numbers below `bound` (xorshift).
let seed = 0x2545f491;
function below(bound) {
  seed ^= seed << 13;
  seed ^= seed >>> 17;
  seed ^= seed << 5;
  return (seed >>> 0) % bound;
}

// What the engine is asked: samples, pieces cut anywhere, some with a stray byte or a mark, and random bytes.
function questions() {
  const all = [...texts, ...texts.map((text) => Buffer.concat(Array(9).fill(text)))];
  for (let i = 0; i < 20000; ++i) {
    const text = texts[below(texts.length)];
    const start = below(text.length);
    const part = Buffer.from(text.subarray(start, start + below(below(8) === 0 ? 3000 : 24)));
    if (i % 5 === 0 && part.length > 0) part[below(part.length)] = below(256);
    const mark = [[0xef, 0xbb, 0xbf], [0xff, 0xfe], []][below(9)] ?? [];
    all.push(Buffer.concat([Buffer.from(mark), part]));
  }
  for (let i = 0; i < 2000; ++i) all.push(Buffer.from(Array.from({ length: below(40) }, () => below(256))));
  // Nothing decides early here, so that the walk crosses the ends of the module's buffer.
  const undecided = texts.find((text) => codetrans.detect(text).encoding === null);
  for (const size of [16383, 16384, 16385, 32768, 100001]) all.push(Buffer.alloc(size, undecided), Buffer.alloc(size, 'a'));
  return all;
}

function nativeAnswers(all) {
  const framed = all.flatMap((text) => {
    const size = Buffer.alloc(4);
    size.writeUInt32LE(text.length);
    return [size, text];
  });
  const { stdout, status } = spawnSync(ANSWERS, [join(ROOT, 'Data/CodeTrans.model')], {
    input: Buffer.concat(framed),
    maxBuffer: 1 << 26,
  });
  assert.equal(status, 0);
  const names = { 0: null, 1: 'utf-8', 2: 'gb18030', 3: 'big5', 8: 'utf-16le' };
  return stdout.toString().trimEnd().split('\n').map((line) => {
    const [code, margin, ascii, mark] = line.split(' ').map(Number);
    const encoding = ascii === 1 ? 'ascii' : names[code] ?? null;
    return { encoding, bom: mark > 0, margin, confident: ascii === 1 || margin >= 10 };
  });
}

test('detects exactly what the native engine detects, whole and in pieces', () => {
  const all = questions();
  const expected = nativeAnswers(all);
  assert.equal(expected.length, all.length);
  assert.equal(new Set(expected.map((answer) => answer.encoding)).size, 6);
  const detectors = all.map(() => codetrans.detector());
  // All detectors take turns, so that each must keep its own place.
  for (let round = 0; round < 3; ++round)
    all.forEach((text, i) => {
      const cuts = [0, Math.min(2, text.length), Math.ceil(text.length / 2), text.length];
      detectors[i].push(text.subarray(cuts[round], Math.max(cuts[round], cuts[round + 1])));
    });
  all.forEach((text, i) => {
    const { runnerUp, ...answer } = codetrans.detect(text);
    assert.deepEqual(answer, expected[i], text.toString('hex'));
    assert.notEqual(runnerUp, answer.encoding);
    if (text.length >= 4) assert.deepEqual(detectors[i].answer(), { ...answer, runnerUp }, text.toString('hex'));
  });
});

test('takes bytes in any form', () => {
  const text = texts.find((bytes) => codetrans.detect(bytes).encoding === 'gb18030');
  const shared = new Uint8Array(new SharedArrayBuffer(text.length));
  shared.set(text);
  const middle = new Uint8Array(text.length + 20).fill(0xff);
  middle.set(text, 7);
  const view = middle.subarray(7, 7 + text.length);
  const plain = Uint8Array.from(text);
  for (const form of [text, plain, plain.buffer, shared, shared.buffer, view, new DataView(plain.buffer)]) {
    assert.equal(codetrans.detect(form).encoding, 'gb18030');
    assert.equal(codetrans.decode(form), new TextDecoder('gb18030').decode(text));
  }
  for (const odd of ['text', null, undefined, 3, [1, 2]]) assert.throws(() => codetrans.detect(odd), TypeError);
  assert.equal(codetrans.detect(new Uint8Array(0)).encoding, 'ascii');
  assert.equal(codetrans.detect(Buffer.alloc(1e8, 'all ASCII ')).encoding, 'ascii');
});

test('decodes, and says what it cannot', () => {
  const undetected = texts.find((bytes) => codetrans.detect(bytes).encoding === null);
  for (const fallback of [undefined, null])
    assert.throws(() => codetrans.decode(undetected, { fallback }), { name: 'UndetectedError' });
  assert.equal(codetrans.decode(undetected, { fallback: 'latin1' }), new TextDecoder('latin1').decode(undetected));
  assert.equal(codetrans.decode(Buffer.from('plain')), 'plain');
  assert.equal(codetrans.decode(Buffer.from('\ufeff\u4e2d\u6587\u6587\u5b57')), '\u4e2d\u6587\u6587\u5b57');
  const cut = Buffer.from('\u4e2d\u6587').subarray(0, 5);
  assert.equal(codetrans.decode(cut, { encoding: 'utf-8' }), '\u4e2d\ufffd');
  assert.throws(() => codetrans.decode(cut, { encoding: 'utf-8', fatal: true }), TypeError);
});

test('loads once, or from the sources that it is given', async () => {
  assert.equal(await load(), codetrans);
  assert.equal(await createRequire(import.meta.url)(join(PACKAGE, 'node.cjs')).load(), codetrans);
  const model = gunzipSync(file('codetrans.model.gz'));
  const wasm = await WebAssembly.compile(file('codetrans.wasm'));
  const other = await load({ wasm, model });
  assert.notEqual(other, codetrans);
  assert.deepEqual(other.detect(texts[1]), codetrans.detect(texts[1]));
  await assert.rejects(load({ model: model.subarray(0, 200000) }), /damaged \(-4\)/);
});

// npm and tsc are packaged apart from node.
const has = (program) => spawnSync(program, ['--version']).status === 0;

test('packs, installs into an empty folder and runs there', { skip: !has('npm') && 'no npm' }, () => {
  const folder = mkdtempSync(join(tmpdir(), 'package-'));
  const npm = (...args) => execFileSync('npm', ['--offline', '--no-audit', '--no-fund', ...args], { cwd: folder });
  const archive = npm('pack', '--silent', PACKAGE).toString().trim();
  assert.ok(statSync(join(folder, archive)).size < 600e3);
  writeFileSync(join(folder, 'package.json'), '{}');
  npm('install', join(folder, archive));
  const show = "load().then((c) => console.log(c.decode(Uint8Array.of(0xd6, 0xd0, 0xce, 0xc4, 0xce, 0xc4, 0xd7, 0xd6))))";
  writeFileSync(join(folder, 'a.mjs'), `import { load } from 'codetrans'; ${show}`);
  writeFileSync(join(folder, 'a.cjs'), `const { load } = require('codetrans'); ${show}`);
  for (const name of ['a.mjs', 'a.cjs'])
    assert.equal(execFileSync('node', [name], { cwd: folder }).toString(), '\u4e2d\u6587\u6587\u5b57\n');
  if (!has('tsc')) return;
  const typed = `import { load } from 'codetrans';
     load().then(({ detect, decode, detector }) => {
       const label: string | null = detect(new Uint8Array(2)).encoding;
       const text: string = decode(new ArrayBuffer(2), { fatal: true, encoding: label ?? 'big5' });
       const more: boolean = detector().push(new Uint8Array(1));
       // @ts-expect-error
       detect('text');
       return [text, more];
     });`;
  for (const name of ['typed.mts', 'typed.cts']) writeFileSync(join(folder, name), typed);
  const options = ['--strict', '--noEmit', '--target', 'es2020', '--module', 'node16', '--moduleResolution', 'node16'];
  execFileSync('tsc', [...options, 'typed.mts', 'typed.cts'], { cwd: folder, stdio: 'inherit' });
});

test('is small as transferred, and imports nothing', async () => {
  assert.deepEqual(WebAssembly.Module.imports(await WebAssembly.compile(file('codetrans.wasm'))), []);
  const sizes = ['codetrans.wasm', 'core.js', 'web.js'].map((name) => gzipSync(file(name)).length);
  const total = sizes.reduce((sum, size) => sum + size, file('codetrans.model.gz').length);
  assert.ok(total < 600e3, `${total} bytes`);
});
