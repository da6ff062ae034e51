// The package in browsers: the module and the model are fetched from where this file is.
import { loader } from './core.js';

async function get(url) {
  const response = await fetch(url);
  if (!response.ok) throw new Error(`codetrans: ${url} could not be loaded (${response.status})`);
  return response.arrayBuffer();
}

// Bundlers find the two files by these expressions.
export const load = loader({
  wasm: () => get(new URL('codetrans.wasm', import.meta.url)),
  model: () => get(new URL('codetrans.model.gz', import.meta.url)),
});
