// One file in the list: its row, and what the row says.

const ENCODING_NAMES = {
  gb18030: 'GBK / GB18030',
  big5: 'Big5',
  'utf-8': 'UTF-8',
  'utf-16le': 'UTF-16 LE',
  'utf-16be': 'UTF-16 BE',
  ascii: 'ASCII',
  shift_jis: 'Shift_JIS',
  'euc-jp': 'EUC-JP',
  'euc-kr': 'EUC-KR',
  'windows-1252': 'Windows-1252',
  'windows-1251': 'Windows-1251',
  'koi8-r': 'KOI8-R',
};
const TEXT_LANGUAGES = { gb18030: 'zh-Hans', big5: 'zh-Hant', shift_jis: 'ja', 'euc-jp': 'ja', 'euc-kr': 'ko' };

// Whether the reader has to look at it.
function isOpen(entry) {
  const { result, chosen } = entry;
  return result !== null && (result.encoding === null || (result.isClose && chosen === null));
}

function sizeOf(bytes, language) {
  const units = ['B', 'kB', 'MB', 'GB'];
  const power = Math.min(3, bytes === 0 ? 0 : Math.floor(Math.log10(bytes) / 3));
  const number = new Intl.NumberFormat(language, { maximumSignificantDigits: 3 }).format(bytes / 1000 ** power);
  return `${number} ${units[power]}`;
}

function noteOf(entry, words) {
  const { result } = entry;
  if (entry.hasFailed) return words.unreadable;
  if (entry.file.size === 0) return words.empty;
  if (entry.share !== null) return words.reading(Math.floor(100 * entry.share));
  if (result === null || entry.isWaiting) return words.waiting;
  if (entry.chosen !== null) return words.chosen;
  if (result.encoding === null) return words.unknown;
  if (result.isClose) return words.close;
  if (result.encoding === 'ascii') return words.ascii;
  return result.encoding === 'utf-8' ? words.already : words.clearAnswer;
}

// A row of the list. `choose` is called with the entry and an encoding or null, `save` with the entry.
class Row {
  constructor(template, choose, save) {
    this.element = template.content.firstElementChild.cloneNode(true);
    const find = (selector) => this.element.querySelector(selector);
    this.parts = {
      name: find('h3'),
      size: find('.size'),
      badge: find('.badge'),
      note: find('.note'),
      preview: find('.preview'),
      readings: find('.readings'),
      legend: find('legend'),
      loss: find('.loss'),
      label: find('label span'),
      select: find('select'),
      save: find('button'),
    };
    const { select } = this.parts;
    select.append(new Option('', ''));
    for (const [encoding, name] of Object.entries(ENCODING_NAMES))
      if (encoding !== 'ascii') select.append(new Option(name, encoding));
    select.addEventListener('change', () => choose(this.entry, select.value || null));
    this.parts.readings.addEventListener('change', (event) => choose(this.entry, event.target.value));
    this.parts.save.addEventListener('click', () => save(this.entry));
  }

  // Shows `entry` as it is now. Elements stay the same, so that none loses the focus.
  update(entry, words, language) {
    const { parts } = this;
    const { result } = entry;
    const isDone = result !== null && !entry.isWaiting && !entry.hasFailed;
    const encoding = isDone ? result.encoding : null;
    const isNew = this.entry !== entry;
    this.entry = entry;
    if (isNew) {
      parts.name.textContent = entry.path;
      parts.name.id = `name-${entry.id}`;
      parts.save.setAttribute('aria-describedby', parts.name.id);
      parts.select.setAttribute('aria-describedby', parts.name.id);
    }
    parts.size.textContent = sizeOf(entry.file.size, language);
    parts.note.textContent = noteOf(entry, words);
    const isOpenNow = isOpen(entry);
    const hasLosses = isDone && (result.losses?.count ?? 0) > 0;
    this.element.dataset.state =
      entry.hasFailed ? 'failed'
      : isOpenNow ? 'open'
      : hasLosses ? 'lossy'
      : isDone ? 'done'
      : 'waiting';
    parts.badge.hidden = !isDone || entry.file.size === 0;
    parts.badge.textContent = encoding === null ? words.undetected : ENCODING_NAMES[encoding];
    const readings = result?.readings ?? [];
    parts.preview.hidden = !isDone || result.preview === '' || (readings.length > 0 && entry.chosen === null);
    parts.preview.textContent = result?.preview ?? '';
    parts.preview.lang = TEXT_LANGUAGES[encoding] ?? '';
    this.updateReadings(entry, readings, words);
    parts.loss.hidden = !hasLosses;
    if (hasLosses) {
      const format = new Intl.NumberFormat(language);
      const { count, lines } = result.losses;
      parts.loss.textContent = words.loss(format.format(count), lines.slice(0, 8).map(format.format), lines.length > 8);
    }
    parts.label.textContent = words.encoding;
    const automatic = result === null ? '…' : result.detected === null ? words.undetected : ENCODING_NAMES[result.detected];
    parts.select.options[0].text = words.automatic(automatic);
    parts.select.value = entry.chosen ?? '';
    parts.select.disabled = entry.hasFailed || entry.file.size === 0;
    parts.save.textContent = hasLosses ? words.saveAnyway : words.save;
    parts.save.disabled = encoding === null || entry.file.size === 0;
  }

  updateReadings(entry, readings, words) {
    const { readings: group, legend } = this.parts;
    group.hidden = readings.length === 0;
    legend.textContent = words.which;
    const key = `${entry.id} ${readings.map((reading) => reading.encoding)}`;
    if (group.dataset.key !== key) {
      group.dataset.key = key;
      group.replaceChildren(
        legend,
        ...readings.map(({ encoding, text }) => {
          const label = document.createElement('label');
          const radio = Object.assign(document.createElement('input'), {
            type: 'radio',
            name: `reading-${entry.id}`,
            value: encoding,
          });
          const name = Object.assign(document.createElement('span'), {
            className: 'encoding',
            textContent: ENCODING_NAMES[encoding],
          });
          const sample = Object.assign(document.createElement('span'), {
            className: 'sample',
            textContent: text,
            lang: TEXT_LANGUAGES[encoding] ?? '',
          });
          label.append(radio, name, sample);
          return label;
        }),
      );
    }
    for (const radio of group.querySelectorAll('input')) radio.checked = radio.value === entry.chosen;
  }
}

export { Row, isOpen };
