// What the worker does with one file: detect it, show how it reads, look for losses, convert it.
//
// Files are read in pieces, so that a large one needs little memory, and others get their turn in between.
import { crc32 } from './zip.js';

const PIECE = 1 << 20;
const PREVIEW_BYTES = 1 << 16;
const PREVIEW_CHARACTERS = 200;
const MOST_LINES = 8;

// The bytes of a file from `from` to `to`. A small file, which is looked at more than once, is kept.
let kept = { file: null, bytes: null };
async function readBytes(file, from, to) {
  if (file.size > PIECE) return new Uint8Array(await file.slice(from, to).arrayBuffer());
  if (kept.file !== file) kept = { file, bytes: new Uint8Array(await file.arrayBuffer()) };
  return kept.bytes.subarray(from, to);
}

// Calls `take` with each piece until it returns false, and `report` with the share that is done.
async function readPieces(file, report, take) {
  for (let at = 0; at < file.size; at += PIECE) {
    const piece = await readBytes(file, at, at + PIECE);
    if (take(piece) === false) return;
    report((at + piece.length) / file.size);
  }
}

// The detector does not know UTF-16BE, but browsers decode it, and its mark leaves no doubt.
const UTF16BE = Object.freeze({ encoding: 'utf-16be', confident: true });

async function detectFile(codetrans, file, report) {
  const mark = await readBytes(file, 0, 2);
  if (mark[0] === 0xfe && mark[1] === 0xff) return UTF16BE;
  const detector = codetrans.detector();
  await readPieces(file, report, (piece) => detector.push(piece));
  return detector.answer();
}

// The first characters from the first line on that is not ASCII: where readings differ.
function preview(head, encoding) {
  const isWide = encoding.startsWith('utf-16');
  const high = isWide ? -1 : head.findIndex((byte) => byte >= 0x80);
  let start = high;
  while (start > 0 && high - start < 80 && head[start - 1] !== 0x0a) --start;
  const text = new TextDecoder(encoding).decode(head.subarray(Math.max(start, 0)), { stream: true });
  return Array.from(text.slice(0, 4 * PREVIEW_CHARACTERS).replace(/[\s\0]+/g, ' ').trim())
    .slice(0, PREVIEW_CHARACTERS)
    .join('');
}

async function previews(file, encodings) {
  const head = await readBytes(file, 0, PREVIEW_BYTES);
  return encodings.map((encoding) => ({ encoding, text: preview(head, encoding) }));
}

// How often the text cannot be decoded, and the first lines where. A strict decoder says first whether it can be: U+FFFD
// may also be in the text itself.
async function findLosses(file, encoding, report) {
  const strict = new TextDecoder(encoding, { fatal: true });
  try {
    await readPieces(file, report, (piece) => void strict.decode(piece, { stream: true }));
    strict.decode();
    return { count: 0, lines: [] };
  } catch (error) {
    if (!(error instanceof TypeError)) throw error;
  }
  const decoder = new TextDecoder(encoding);
  const losses = { count: 0, lines: [] };
  let line = 1;
  const look = (text) => {
    let at = 0;
    for (let found = text.indexOf('\ufffd'); found >= 0; found = text.indexOf('\ufffd', found + 1)) {
      for (let end = text.indexOf('\n', at); end >= 0 && end < found; end = text.indexOf('\n', at)) {
        ++line;
        at = end + 1;
      }
      ++losses.count;
      if (losses.lines.length <= MOST_LINES && losses.lines.at(-1) !== line) losses.lines.push(line);
    }
    for (let end = text.indexOf('\n', at); end >= 0; end = text.indexOf('\n', end + 1)) ++line;
  };
  await readPieces(file, report, (piece) => look(decoder.decode(piece, { stream: true })));
  look(decoder.decode());
  return losses;
}

// What is shown of a file. `chosen` is the reader's choice of an encoding, or null.
async function examine(codetrans, file, chosen, report) {
  const answer = await detectFile(codetrans, file, (share) => report(share / 2));
  const encoding = chosen ?? answer.encoding;
  const isClose = answer.encoding !== null && !answer.confident;
  const candidates = isClose ? [answer.encoding, answer.runnerUp] : answer.encoding === null ? ['gb18030', 'big5'] : [];
  return {
    detected: answer.encoding,
    isClose,
    encoding,
    readings: await previews(file, candidates),
    preview: encoding === null ? '' : (await previews(file, [encoding]))[0].text,
    losses: encoding === null ? null : await findLosses(file, encoding, (share) => report((1 + share) / 2)),
  };
}

// The file in UTF-8 as { blob, crc }. Parts are handed to blobs as they come, which need not stay in memory.
async function convert(file, encoding, report) {
  const decoder = new TextDecoder(encoding);
  const encoder = new TextEncoder();
  const blobs = [];
  let crc = 0;
  const write = (text) => {
    const bytes = encoder.encode(text);
    crc = crc32(bytes, crc);
    blobs.push(new Blob([bytes]));
  };
  await readPieces(file, report, (piece) => write(decoder.decode(piece, { stream: true })));
  write(decoder.decode());
  return { blob: new Blob(blobs, { type: 'text/plain;charset=utf-8' }), crc };
}

export { convert, examine };
