// Reads samples as lines of hexadecimal digits, writes the name that jschardet gives each.
// Usage: node jschardet.cjs FOLDER-OF-THE-PACKAGE < samples
const jschardet = require(require('path').resolve(process.argv[2]));
// The texts are said to be Chinese, as they are to the other detectors that take a hint.
const detectEncodings = ['ascii', 'GB2312', 'GB18030', 'Big5', 'UTF-8', 'UTF-16', 'UTF-16LE'];
const lines = require('fs').readFileSync(0, 'ascii').split('\n');
const names = lines.slice(0, -1).map((line) => {
  const found = jschardet.detect(Buffer.from(line, 'hex'), { minimumThreshold: 0, detectEncodings });
  return (found && found.encoding) || 'null';
});
process.stdout.write(names.join('\n') + '\n');
