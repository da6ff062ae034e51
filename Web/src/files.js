// Files with their paths, from a drop or a file input, and the names under which they are saved.

// Calls `take` with what was dropped, as some [{ file, path }] at a time, folders with all that is in them. The list of
// items ends with the event, so each is asked at once for all that may be needed.
async function filesOfDrop(transfer, take) {
  const items = [...transfer.items].filter((item) => item.kind === 'file');
  const dropped = items.map((item) => {
    const entry = item.webkitGetAsEntry();
    const isFolder = entry?.isDirectory ?? false;
    // Chromium reads no entries on a page from disk, but handles, which other browsers lack.
    return { file: item.getAsFile(), entry, isFolder, handle: isFolder ? item.getAsFileSystemHandle?.() : null };
  });
  take(dropped.filter(({ isFolder }) => !isFolder).map(({ file }) => ({ file, path: file.name })));
  for (const { entry, isFolder, handle } of dropped)
    if (isFolder) await readFolder(handle ? ofHandle(await handle) : ofEntry(entry), '', take);
}

// A folder or file as { name, children, open }: one of the functions gives its content.
function ofHandle(handle) {
  const children = async () => {
    const all = [];
    for await (const child of handle.values()) all.push(ofHandle(child));
    return all;
  };
  return { name: handle.name, ...(handle.kind === 'directory' ? { children } : { open: () => handle.getFile() }) };
}

function ofEntry(entry) {
  const children = async () => {
    const reader = entry.createReader();
    const all = [];
    for (;;) {
      // A reader gives some entries at a time, and none at the end.
      const some = await new Promise((resolve, reject) => reader.readEntries(resolve, reject));
      if (some.length === 0) return all.map(ofEntry);
      all.push(...some);
    }
  };
  const open = () => new Promise((resolve, reject) => entry.file(resolve, reject));
  return { name: entry.name, ...(entry.isDirectory ? { children } : { open }) };
}

const AT_ONCE = 64;

// Files by name before folders. What cannot be opened is left out.
async function readFolder(folder, above, take) {
  const path = `${above}${folder.name}/`;
  const all = await folder.children().catch(() => []);
  all.sort((a, b) => a.name.localeCompare(b.name, undefined, { numeric: true }));
  const files = all.filter((child) => child.open !== undefined);
  for (let i = 0; i < files.length; i += AT_ONCE) {
    const opened = files.slice(i, i + AT_ONCE).map(async ({ name, open }) => ({ file: await open(), path: path + name }));
    const settled = await Promise.allSettled(opened);
    take(settled.filter(({ status }) => status === 'fulfilled').map(({ value }) => value));
  }
  for (const child of all) if (child.children !== undefined) await readFolder(child, path, take);
}

// A browser gives the files of a folder in no certain order.
function filesOfInput(list) {
  const found = Array.from(list, (file) => ({ file, path: file.webkitRelativePath || file.name }));
  return found.sort((a, b) => a.path.localeCompare(b.path, undefined, { numeric: true }));
}

// Gives each path that was given before a number: "a.txt", "a (2).txt".
function uniquePaths(paths) {
  const taken = new Set();
  return paths.map((path) => {
    const dot = path.lastIndexOf('.');
    const end = dot > path.lastIndexOf('/') + 1 ? dot : path.length;
    let name = path;
    for (let n = 2; taken.has(name); ++n) name = `${path.slice(0, end)} (${n})${path.slice(end)}`;
    taken.add(name);
    return name;
  });
}

export { filesOfDrop, filesOfInput, uniquePaths };
