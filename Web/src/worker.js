// The worker: takes tasks from the page and does one after another.
//
// Page to worker: start { wasm, model }, in base64; then tasks: examine { id, file, chosen }; save { files, isArchive }.
// Worker to page: ready, broken; progress { id, share }, examined { id, chosen, result } or failed { id };
// converting { share }, unsaved { id }, saved { blob, name, count }.
import { create } from '../../Bindings/JavaScript/core.js';
import { convert, examine } from './readings.js';
import { zip } from './zip.js';

let codetrans;
let last = Promise.resolve();

const fromBase64 = (text) => Uint8Array.from(atob(text), (character) => character.charCodeAt(0));

// Calls `report` ten times a second at most.
function seldom(report) {
  let next = performance.now() + 100;
  return (share) => {
    if (performance.now() < next) return;
    next = performance.now() + 100;
    report(share);
  };
}

const tasks = {
  async start({ wasm, model }) {
    try {
      codetrans = await create({ wasm: fromBase64(wasm), model: fromBase64(model) });
      postMessage({ type: 'ready' });
    } catch {
      postMessage({ type: 'broken' });
    }
  },

  async examine({ id, file, chosen }) {
    try {
      const report = seldom((share) => postMessage({ type: 'progress', id, share }));
      const result = await examine(codetrans, file, chosen, report);
      postMessage({ type: 'examined', id, chosen, result });
    } catch {
      postMessage({ type: 'failed', id });
    }
  },

  async save({ files, isArchive, name }) {
    const converted = [];
    const report = seldom((share) => postMessage({ type: 'converting', share: (converted.length + share) / files.length }));
    for (const { id, file, encoding, path } of files) {
      try {
        const { blob, crc } = await convert(file, encoding, report);
        converted.push({ name: path, blob, crc, modified: new Date(file.lastModified) });
      } catch {
        postMessage({ type: 'unsaved', id });
      }
    }
    const blob = isArchive ? zip(converted) : converted[0]?.blob;
    postMessage({ type: 'saved', blob: blob ?? null, name, count: converted.length });
  },
};

onmessage = ({ data }) => {
  last = last.then(() => tasks[data.type](data));
};
