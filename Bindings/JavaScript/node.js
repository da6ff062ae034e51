// The package in Node: the module and the model are read from its folder.
import { readFile } from 'node:fs/promises';

import { loader } from './core.js';

export const load = loader({
  wasm: () => readFile(new URL('codetrans.wasm', import.meta.url)),
  model: () => readFile(new URL('codetrans.model.gz', import.meta.url)),
});
