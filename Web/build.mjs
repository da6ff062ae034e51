// Makes the page: one HTML file that contains its style, its scripts, the WebAssembly module and the model, so that it
// also works from a folder on disk, where a browser fetches nothing.
//
// Usage: node build.mjs PACKAGE OUTPUT. PACKAGE is the folder with codetrans.wasm and codetrans.model.gz.
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const [, , packageFolder, output] = process.argv;
const sources = join(dirname(fileURLToPath(import.meta.url)), 'src');
const read = (name) => readFileSync(join(sources, name), 'utf8');
const base64 = (name) => readFileSync(join(packageFolder, name)).toString('base64');

// A module and those that it imports, each once and before it is used, as one script. Top-level names of all of them
// share one scope, so no two may be the same.
function bundle(path, included = new Set()) {
  if (included.has(path)) return '';
  included.add(path);
  let imported = '';
  const text = readFileSync(path, 'utf8')
    .replace(/^import \{[^}]*\} from '(.+)';\n/gm, (_, name) => {
      imported += bundle(resolve(dirname(path), name), included);
      return '';
    })
    .replace(/^export \{[^}]*\};\n/gm, '')
    .replace(/^export /gm, '');
  return imported + text;
}

// Within HTML, nothing in a script may look like its end.
const inScript = (text) => text.replaceAll('</script', '<\\/script').replaceAll('<!--', '<\\!--');
const hashOf = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;

const style = `\n${read('style.css')}`;
const app = `\n${inScript(bundle(join(sources, 'app.js')))}`;
const policy = [
  "default-src 'none'", // nothing is fetched from anywhere
  `script-src ${hashOf(app)} 'wasm-unsafe-eval'`,
  `style-src ${hashOf(style)}`,
  'worker-src blob:',
  'img-src data:',
  "base-uri 'none'",
  "form-action 'none'",
].join('; ');

const parts = [
  ['POLICY', policy],
  ['<link rel="stylesheet" href="style.css">', `<style>${style}</style>`],
  ['id="wasm"></script>', `id="wasm">${base64('codetrans.wasm')}</script>`],
  ['id="model"></script>', `id="model">${base64('codetrans.model.gz')}</script>`],
  ['id="worker"></script>', `id="worker">${inScript(bundle(join(sources, 'worker.js')))}</script>`],
  ['<script type="module" src="app.js"></script>', `<script type="module">${app}</script>`],
];
let html = read('index.html');
for (const [mark, text] of parts) {
  if (html.split(mark).length !== 2) throw new Error(`index.html must contain this once: ${mark}`);
  html = html.replace(mark, () => text);
}
writeFileSync(output, html);
