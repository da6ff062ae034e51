// The page: takes files, has the worker examine them, shows the list, and saves.
//
// The worker gets a few files at a time, and the page shows at most PAGE_SIZE of them, at most ten times a second. So
// neither many files nor large ones keep the page from answering.
import { filesOfDrop, filesOfInput, uniquePaths } from './files.js';
import { Row, isOpen } from './row.js';
import { TEXTS, preferredLanguage } from './texts.js';

const PAGE_SIZE = 50;
const IN_FLIGHT = 8;
const RENDER_EVERY = 100; // milliseconds

const byId = (id) => document.getElementById(id);
const state = {
  language: preferredLanguage(navigator.languages),
  entries: [],
  queue: [], // entries that the worker has not got yet, the next one last
  inFlight: 0,
  done: 0,
  onlyOpen: false,
  page: 0,
  collecting: 0, // drops that are still being read
  saving: null, // { name, share } while the worker converts
  saved: null, // { name, count }
  problem: null, // a key of TEXTS
};
const words = () => TEXTS[state.language];
const count = (n) => new Intl.NumberFormat(state.language).format(n);

// -------------------------------------------------------------------------------------------------------------------
// The worker

const script = new Blob([byId('worker').textContent], { type: 'text/javascript' });
const worker = new Worker(URL.createObjectURL(script));
worker.postMessage({ type: 'start', wasm: byId('wasm').textContent, model: byId('model').textContent });

function feed() {
  for (; state.inFlight < IN_FLIGHT && state.queue.length > 0; ++state.inFlight) {
    const { id, file, chosen } = state.queue.pop();
    worker.postMessage({ type: 'examine', id, file, chosen });
  }
}

const messages = {
  ready: feed,
  broken() {
    state.problem = 'broken';
  },
  progress({ id, share }) {
    const entry = entryOf(id);
    if (entry !== undefined) entry.share = share;
  },
  converting({ share }) {
    state.saving.share = share;
  },
  unsaved({ id }) {
    const entry = entryOf(id);
    if (entry !== undefined) entry.hasFailed = true;
  },
  examined({ id, chosen, result }) {
    finish(id, (entry) => {
      if (entry.chosen !== chosen) return; // chosen anew in between
      entry.result = result;
      entry.isWaiting = false;
      entry.wasOpen ||= isOpen(entry);
    });
  },
  failed({ id }) {
    finish(id, (entry) => Object.assign(entry, { hasFailed: true, isWaiting: false }));
  },
  saved({ blob, name, count: converted }) {
    state.saving = null;
    if (converted === 0) return; // the rows say why
    if (blob === null) {
      state.problem = 'tooLarge';
      return;
    }
    state.saved = { name, count: converted };
    download(blob, name);
  },
};

worker.onmessage = ({ data }) => {
  messages[data.type](data);
  renderSoon();
};
worker.onerror = () => {
  state.problem = 'broken';
  renderSoon();
};

// An entry's place in the list is its number less that of the first one.
const entryOf = (id) => state.entries[id - (state.entries[0]?.id ?? 0)];

function finish(id, apply) {
  --state.inFlight;
  feed();
  const entry = entryOf(id);
  if (entry === undefined) return; // the list was cleared
  entry.share = null;
  apply(entry);
  if (!entry.isWaiting && !entry.isCounted) {
    entry.isCounted = true;
    ++state.done;
  }
}

function download(blob, name) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60000);
}

// -------------------------------------------------------------------------------------------------------------------
// What the reader does

let nextId = 0;

function add(found) {
  const added = found.map(({ file, path }) => ({
    id: nextId++,
    file,
    path,
    chosen: null,
    result: null,
    share: null, // of a large file that has been read
    isWaiting: true,
    isCounted: false,
    hasFailed: false,
    wasOpen: false,
  }));
  state.entries = state.entries.concat(added);
  state.queue = added.reverse().concat(state.queue);
  state.saved = state.problem = null;
  feed();
  renderSoon();
}

function choose(entry, encoding) {
  entry.chosen = encoding;
  entry.isWaiting = true;
  if (entry.isCounted) {
    entry.isCounted = false;
    --state.done;
  }
  if (!state.queue.includes(entry)) state.queue.push(entry);
  feed();
  render();
}

const isSavable = (entry) => !entry.hasFailed && (entry.result?.encoding ?? null) !== null;

function save(entries, isArchive, name) {
  if (state.saving !== null || entries.length === 0) return;
  const paths = uniquePaths(entries.map((entry) => entry.path));
  const files = entries.map(({ id, file, result }, i) => ({ id, file, encoding: result.encoding, path: paths[i] }));
  state.saving = { name, share: 0 };
  state.saved = state.problem = null;
  worker.postMessage({ type: 'save', files, isArchive, name });
  render();
}

function clear() {
  Object.assign(state, { entries: [], queue: [], done: 0, page: 0, onlyOpen: false, saved: null, problem: null });
  render();
  byId('choose-files').focus();
}

function show(onlyOpen) {
  state.onlyOpen = onlyOpen;
  state.page = 0;
  for (const entry of state.entries) entry.wasOpen = isOpen(entry);
  render();
}

function turn(pages) {
  state.page += pages;
  render();
  byId('results').scrollIntoView();
}

// -------------------------------------------------------------------------------------------------------------------
// What the page shows

const rows = [];
let timer = null;

function renderSoon() {
  timer ??= setTimeout(render, RENDER_EVERY);
}

function render() {
  clearTimeout(timer);
  timer = null;
  const { entries } = state;
  const open = entries.filter(isOpen).length;
  // What was decided while only open files are shown stays until the reader asks for the list again.
  const shown = state.onlyOpen ? entries.filter((entry) => entry.wasOpen) : entries;
  const pages = Math.max(1, Math.ceil(shown.length / PAGE_SIZE));
  state.page = Math.min(state.page, pages - 1);
  renderStatus(open);
  renderTools(open);
  renderRows(shown.slice(state.page * PAGE_SIZE, (state.page + 1) * PAGE_SIZE));
  byId('nothing').hidden = shown.length > 0 || !state.onlyOpen;
  byId('pager').hidden = pages === 1;
  byId('page').textContent = words().page(count(state.page + 1), count(pages));
  byId('previous').disabled = state.page === 0;
  byId('next').disabled = state.page === pages - 1;
}

// The text is read out when it changes, so the count in it goes on in steps.
function renderStatus(open) {
  const { entries, done, collecting, saving, saved, problem } = state;
  const total = entries.length;
  const isBusy = saving !== null || collecting > 0 || done < total;
  const step = Math.max(1, Math.ceil(total / 5));
  const statusText =
    problem !== null ? words()[problem]
    : saving !== null ? words().saving(saving.name)
    : saved !== null ? words().saved(saved.name, saved.count)
    : collecting > 0 ? words().collecting
    : total === 0 ? ''
    : done < total ? words().checking(count(done - (done % step)), count(total))
    : words().checked(count(total), open);
  if (byId('status').textContent !== statusText) byId('status').textContent = statusText;
  byId('status').classList.toggle('problem', problem !== null);
  const progress = byId('progress');
  progress.hidden = !isBusy;
  const shares = total < 100 ? entries.reduce((sum, entry) => sum + (entry.share ?? 0), 0) : 0;
  progress.value = saving !== null ? saving.share : (done + shares) / Math.max(1, total);
  document.body.toggleAttribute('data-busy', isBusy);
}

function renderTools(open) {
  const { entries } = state;
  byId('results').hidden = entries.length === 0;
  document.body.toggleAttribute('data-filled', entries.length > 0);
  byId('show-all').textContent = words().all(count(entries.length));
  byId('show-open').textContent = words().open(count(open));
  byId('show-all').setAttribute('aria-pressed', String(!state.onlyOpen));
  byId('show-open').setAttribute('aria-pressed', String(state.onlyOpen));
  byId('save-all').disabled = state.collecting > 0 || state.done < entries.length || !entries.some(isSavable);
  const leftOut = entries.filter((entry) => entry.result?.encoding === null).length;
  const lossy = entries.filter((entry) => (entry.result?.losses?.count ?? 0) > 0).length;
  const guessed = entries.filter((entry) => isOpen(entry) && isSavable(entry)).length;
  byId('caveat').textContent = [
    guessed > 0 ? words().guessed(count(guessed)) : '',
    leftOut > 0 ? words().leftOut(count(leftOut)) : '',
    lossy > 0 ? words().lossyFiles(count(lossy)) : '',
  ].join(' ').trim();
}

function renderRows(entries) {
  const list = byId('list');
  while (rows.length < entries.length)
    rows.push(new Row(byId('row'), choose, (entry) => save([entry], false, entry.path.split('/').at(-1))));
  while (list.children.length > entries.length) list.lastElementChild.remove();
  entries.forEach((entry, i) => {
    rows[i].update(entry, words(), state.language);
    if (!rows[i].element.isConnected) list.append(rows[i].element);
  });
}

function renderWords() {
  document.documentElement.lang = state.language;
  byId('language').value = state.language;
  for (const element of document.querySelectorAll('[data-text]')) element.textContent = words()[element.dataset.text];
  for (const element of document.querySelectorAll('[data-label]'))
    element.setAttribute('aria-label', words()[element.dataset.label]);
  render();
}

// -------------------------------------------------------------------------------------------------------------------
// Events

function take(input) {
  const found = filesOfInput(input.files);
  input.value = ''; // so that the same files can be chosen again
  if (found.length > 0) add(found);
}

byId('choose-files').addEventListener('click', () => byId('files').click());
byId('choose-folder').addEventListener('click', () => byId('folder').click());
for (const id of ['files', 'folder']) byId(id).addEventListener('change', (event) => take(event.target));
byId('language').addEventListener('change', (event) => {
  state.language = event.target.value;
  renderWords();
});
byId('show-all').addEventListener('click', () => show(false));
byId('show-open').addEventListener('click', () => show(true));
byId('previous').addEventListener('click', () => turn(-1));
byId('next').addEventListener('click', () => turn(1));
byId('clear').addEventListener('click', clear);
byId('save-all').addEventListener('click', () => save(state.entries.filter(isSavable), true, 'utf-8.zip'));

// Files may be dropped anywhere on the page.
let dragged = 0;
const mark = (change) => {
  dragged += change;
  byId('drop').classList.toggle('over', dragged > 0);
};
addEventListener('dragenter', () => mark(1));
addEventListener('dragleave', () => mark(-1));
addEventListener('dragover', (event) => event.preventDefault());
addEventListener('drop', async (event) => {
  event.preventDefault();
  mark(-dragged);
  ++state.collecting;
  await filesOfDrop(event.dataTransfer, add);
  --state.collecting;
  render();
});

renderWords();
