// Reads samples as lines of hexadecimal digits, writes the name that jschardet gives each.
// Usage: node jschardet.cjs FOLDER-OF-THE-PACKAGE < samples
const jschardet = require(require('path').resolve(process.argv[2]));
const lines = require('fs').readFileSync(0, 'ascii').split('\n');
const names = lines.slice(0, -1).map((line) => {
  const found = jschardet.detect(Buffer.from(line, 'hex'), { minimumThreshold: 0 });
  return (found && found.encoding) || 'null';
});
process.stdout.write(names.join('\n') + '\n');
