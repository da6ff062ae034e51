// Detection and decoding, once the WebAssembly module and the model are in memory. The same in Node and in browsers.

const NAMES = [null, 'utf-8', 'gb18030', 'big5', 'utf-16le', 'ascii'];

// The bytes of a typed array, DataView, ArrayBuffer or SharedArrayBuffer, not copied.
function bytesOf(source) {
  if (source instanceof Uint8Array) return source;
  if (ArrayBuffer.isView(source)) return new Uint8Array(source.buffer, source.byteOffset, source.byteLength);
  if (source instanceof ArrayBuffer || Object.prototype.toString.call(source) === '[object SharedArrayBuffer]')
    return new Uint8Array(source);
  throw new TypeError('codetrans: expected a Uint8Array, another view of bytes, or a buffer');
}

// A server may have decompressed the model on the way, so its first bytes decide.
async function inflate(bytes) {
  if (bytes[0] !== 0x1f || bytes[1] !== 0x8b) return bytes;
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

async function instantiate(wasm) {
  const module = wasm instanceof WebAssembly.Module ? wasm : await WebAssembly.compile(wasm);
  const { exports } = await WebAssembly.instantiate(module, {});
  exports._initialize?.();
  return exports;
}

// Puts the model behind the memory that the module uses itself.
function useModel(exports, model) {
  const pageSize = 1 << 16;
  const address = exports.memory.grow(Math.ceil(model.length / pageSize)) * pageSize;
  new Uint8Array(exports.memory.buffer).set(model, address);
  const code = exports.useModel(address, model.length);
  if (code !== 0) throw new Error(`codetrans: the model is damaged (${code})`);
}

// Gives the functions of the package from the bytes (or module) of codetrans.wasm and the bytes of the model, gzipped
// or not.
export async function create({ wasm, model }) {
  const exports = await instantiate(wasm);
  useModel(exports, await inflate(bytesOf(model)));
  // The module never grows its memory again, so these views stay valid.
  const piece = new Uint8Array(exports.memory.buffer, exports.piece(), exports.pieceSize());
  const position = new Uint8Array(exports.memory.buffer, exports.position(), exports.positionSize());
  const PIECE = piece.length;
  const ENOUGH_MARGIN = exports.enoughMargin();

  // Answers are frozen, and one object serves all texts with the same answer.
  const answers = new Map();
  function answerOf(bits) {
    let answer = answers.get(bits);
    if (answer === undefined) {
      const margin = (bits >> 3) & 127;
      answer = Object.freeze({
        encoding: NAMES[bits & 7],
        bom: ((bits >> 10) & 3) !== 0,
        margin,
        confident: (bits & 7) === NAMES.indexOf('ascii') || margin >= ENOUGH_MARGIN,
        runnerUp: NAMES[bits >> 12],
      });
      answers.set(bits, answer);
    }
    return answer;
  }

  // Walks on over `bytes`, until the rest no longer matters. Returns whether it still does.
  function walk(bytes) {
    for (let at = 0; at < bytes.length; at += PIECE) {
      const part = bytes.subarray(at, at + PIECE);
      piece.set(part);
      if (!exports.walk(part.length)) return false;
    }
    return true;
  }

  // The module looks for a mark at the start of its buffer.
  function answerFor(head) {
    piece.set(head);
    return answerOf(exports.answer(head.length));
  }

  function detect(source) {
    const bytes = bytesOf(source);
    if (bytes.length <= PIECE) {
      piece.set(bytes);
      return answerOf(exports.detect(bytes.length));
    }
    exports.begin();
    walk(bytes);
    return answerFor(bytes.subarray(0, 3));
  }

  // Detects a text that comes in pieces. Between calls, each detector keeps the place where its walk stands.
  class Detector {
    #head = [];
    #position;
    #undecided = true;

    constructor() {
      exports.begin();
      this.#position = position.slice();
    }

    // Takes the next piece. Returns false once the rest of the text no longer matters.
    push(source) {
      const bytes = bytesOf(source);
      if (this.#head.length < 3) this.#head.push(...bytes.subarray(0, 3 - this.#head.length));
      if (this.#undecided) {
        position.set(this.#position);
        this.#undecided = walk(bytes);
        this.#position.set(position);
      }
      return this.#undecided;
    }

    // The answer for what has come so far.
    answer() {
      position.set(this.#position);
      return answerFor(this.#head);
    }
  }

  function decode(source, { encoding, fallback, fatal = false } = {}) {
    const bytes = bytesOf(source);
    const label = encoding ?? detect(bytes).encoding ?? fallback ?? null;
    if (label === null)
      throw Object.assign(new Error('codetrans: the encoding is not known'), { name: 'UndetectedError' });
    const decoder = new TextDecoder(label, { fatal });
    // Browsers do not decode shared memory.
    return decoder.decode(bytes.buffer instanceof ArrayBuffer ? bytes : bytes.slice());
  }

  return Object.freeze({ detect, decode, detector: () => new Detector(), ENOUGH_MARGIN });
}

// The package's `load`. The functions in `read` get what the caller does not hand over; what they get is loaded once.
export function loader(read) {
  let loaded;
  const start = async ({ wasm, model }) => {
    const parts = await Promise.all([wasm ?? read.wasm(), model ?? read.model()]);
    return create({ wasm: parts[0], model: parts[1] });
  };
  return function load(sources = {}) {
    if (sources.wasm !== undefined || sources.model !== undefined) return start(sources);
    if (loaded === undefined) {
      loaded = start({});
      loaded.catch(() => (loaded = undefined)); // another try may succeed
    }
    return loaded;
  };
}
