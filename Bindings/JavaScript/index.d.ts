// The types for import and, as index.d.cts, for require().

/** Bytes in any form; they are not copied. */
export type Bytes = ArrayBufferView | ArrayBufferLike;

/** A label that TextDecoder takes. */
export type Encoding = 'utf-8' | 'gb18030' | 'big5' | 'utf-16le' | 'ascii';

export interface Answer {
  /** null if the text is in none of these encodings, or too unclear. */
  readonly encoding: Encoding | null;
  /** The text begins with the byte-order mark of its encoding. */
  readonly bom: boolean;
  /** How clear the answer is, from 0 to 100. */
  readonly margin: number;
  /** The margin is ENOUGH_MARGIN or more, or the text is ASCII. */
  readonly confident: boolean;
  /** The encoding that comes next, for a choice where the answer is not confident. */
  readonly runnerUp: Encoding | null;
}

export interface Detector {
  /** Takes the next piece. Returns false once the rest of the text no longer matters. */
  push(piece: Bytes): boolean;
  /** The answer for what has come so far. */
  answer(): Answer;
}

export interface DecodeOptions {
  /** The encoding, for a text that is not to be detected. */
  encoding?: string;
  /** The encoding of a text that is not detected; otherwise decode throws an Error named UndetectedError. */
  fallback?: string;
  /** Throw a TypeError for invalid bytes instead of putting U+FFFD in their place. */
  fatal?: boolean;
}

export interface CodeTrans {
  detect(text: Bytes): Answer;
  decode(text: Bytes, options?: DecodeOptions): string;
  /** Detects a text that comes in pieces. */
  detector(): Detector;
  readonly ENOUGH_MARGIN: number;
}

export interface Sources {
  /** The content of codetrans.wasm, or the compiled module. */
  wasm?: Bytes | WebAssembly.Module;
  /** The content of codetrans.model.gz, decompressed or not. */
  model?: Bytes;
}

/** Loads the module and the model, by default once, from the folder of the package. */
export function load(sources?: Sources): Promise<CodeTrans>;
