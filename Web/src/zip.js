// Writes a zip archive of files that are stored, not compressed, with names in UTF-8.

const CRC_TABLE = Uint32Array.from({ length: 256 }, (_, byte) => {
  let crc = byte;
  for (let bit = 0; bit < 8; ++bit) crc = crc & 1 ? (crc >>> 1) ^ 0xedb88320 : crc >>> 1;
  return crc;
});

// The checksum of `bytes` behind text with the checksum `crc`.
function crc32(bytes, crc = 0) {
  crc = ~crc;
  for (let i = 0; i < bytes.length; ++i) crc = CRC_TABLE[(crc ^ bytes[i]) & 0xff] ^ (crc >>> 8);
  return ~crc >>> 0;
}

const MOST_FILES = 0xffff;
const MOST_BYTES = 0xffffffff;

// Little-endian fields of two and four bytes: [size, value], ...
function record(...fields) {
  const bytes = new DataView(new ArrayBuffer(fields.reduce((sum, [size]) => sum + size, 0)));
  let at = 0;
  for (const [size, value] of fields) {
    if (size === 2) bytes.setUint16(at, value, true);
    else bytes.setUint32(at, value, true);
    at += size;
  }
  return bytes;
}

// The fields that both records of a file have.
function common(file) {
  const time = file.modified;
  const isRepresentable = time.getFullYear() >= 1980 && time.getFullYear() < 2108;
  const day = ((time.getFullYear() - 1980) << 9) | ((time.getMonth() + 1) << 5) | time.getDate();
  const second = (time.getHours() << 11) | (time.getMinutes() << 5) | (time.getSeconds() >> 1);
  return [
    [2, 20], // version needed
    [2, 1 << 11], // the name is in UTF-8
    [2, 0], // stored
    [2, isRepresentable ? second : 0],
    [2, isRepresentable ? day : 0x21],
    [4, file.crc],
    [4, file.blob.size],
    [4, file.blob.size],
    [2, file.nameBytes.length],
    [2, 0],
  ];
}

// Files as { name, blob, crc, modified }. Gives a Blob, or null where they do not fit into an archive of this kind.
function zip(files) {
  const parts = [];
  const directory = [];
  let offset = 0;
  for (const file of files) {
    const entry = { ...file, nameBytes: new TextEncoder().encode(file.name) };
    const fields = common(entry);
    parts.push(record([4, 0x04034b50], ...fields), entry.nameBytes, entry.blob);
    directory.push(
      record([4, 0x02014b50], [2, 20], ...fields, [2, 0], [2, 0], [2, 0], [4, 0], [4, offset]),
      entry.nameBytes,
    );
    offset += 30 + entry.nameBytes.length + entry.blob.size;
    if (offset > MOST_BYTES) return null;
  }
  const size = directory.reduce((sum, part) => sum + part.byteLength, 0);
  if (files.length > MOST_FILES || offset + size > MOST_BYTES) return null;
  const count = [2, files.length];
  const end = record([4, 0x06054b50], [2, 0], [2, 0], count, count, [4, size], [4, offset], [2, 0]);
  return new Blob([...parts, ...directory, end], { type: 'application/zip' });
}

export { crc32, zip };
