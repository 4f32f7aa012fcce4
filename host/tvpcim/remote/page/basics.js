// SPDX-License-Identifier: Apache-2.0
// The script of the page, of which this is the first file, shows what /page.json says, again and again. Texts of the
// storage reach the page as texts only (textContent), never as markup.
'use strict';

const INTERVAL = 2000;       // between two questions, in milliseconds
const HEAT_INTERVAL = 5000;
const SAMPLES = 60;          // of a volume's rates that are kept
const SVG = 'http://www.w3.org/2000/svg';
const IN_ORDER = 1;          // the status of what is present and good
const ONLINE = {drive: 'LD_Status', pool: 'PoolStatus', volume: 'State'};

const state = {
  page: null,          // the last page.json without an error
  events: [], announced: 0,
  samples: new Map(),  // by volume: [{time, reads, writes}], rates
  counters: null,      // of the last sample, with their time
  chosen: null,        // volume whose heat is shown
  open: new Set(),     // nodes of the tree
  current: null,       // node of the tree that has the focus when the tree has it
  sort: {column: 1, down: false},  // what is in trouble first
  paused: false, timer: 0, heatAt: 0, level: null,
  patience: 20000,     // how long an answer may take, in milliseconds
  toSay: [],           // to a screen reader
};

const byId = (id) => document.getElementById(id);

function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

/** Makes an element: attributes, then children, which are elements or texts. */
function make(name, attributes = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.append(...children);
  return element;
}

function draw(name, attributes, ...children) {
  const element = document.createElementNS(SVG, name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.append(...children);
  return element;
}

/** Asks the server, which may be gone without a word. */
const fetched = (path) => fetch(path, {cache: 'no-store', signal: AbortSignal.timeout(state.patience)});

/** Keeps one child for each item, in their order, so that focus and scrolling stay where they are. */
function sync(parent, items, keyOf, create, update) {
  const focused = parent.contains(document.activeElement) ? document.activeElement : null;
  const old = new Map([...parent.children].map((child) => [child.dataset.key, child]));
  let previous = null;
  for (const item of items) {
    const key = String(keyOf(item));
    let child = old.get(key);
    if (child) {
      old.delete(key);
    } else {
      child = create(item);
      child.dataset.key = key;
    }
    update(child, item);
    const next = previous ? previous.nextSibling : parent.firstChild;
    if (child !== next) parent.insertBefore(child, next);
    previous = child;
  }
  for (const child of old.values()) child.remove();
  // What is moved loses the focus.
  if (focused && focused !== document.activeElement && parent.contains(focused)) focused.focus({preventScroll: true});
}

// ---- Words and numbers, as the commands print them

function sizeText(sectors) {
  if (sectors < 2) return sectors * 512 + ' B';
  const units = ['KiB', 'MiB', 'GiB', 'TiB', 'PiB', 'EiB'];
  let divisor = 2, unit = 0;
  for (; unit + 1 < units.length && Math.floor(sectors / divisor) >= 1024; ++unit) divisor *= 1024;
  return String(Number((sectors / divisor).toFixed(2))) + ' ' + units[unit];
}

const percent = (part, whole) => whole ? Math.round(100 * part / whole) : 0;
const plural = (count, noun) => count + ' ' + noun + (count === 1 ? '' : 's');
const rateText = (rate) => rate === null ? '–' : rate < 10 ? String(Math.round(rate * 10) / 10) : Math.round(rate).toLocaleString('en');

function codeText(property, object) {
  const names = state.page.names[property] || {};
  return names[object[property]] || String(object[property]);
}

function timeText(iso) {
  return iso ? iso.slice(11, 19) : '';
}

// ---- What is derived from the data

function levelOf(kind, object) {
  return object[ONLINE[kind]] === IN_ORDER ? 'well' : 'degraded';
}

/** What is in trouble, then the others, each in their order. */
function troubledFirst(kind, objects) {
  const well = (object) => levelOf(kind, object) === 'well';
  return [...objects.filter((object) => !well(object)), ...objects.filter(well)];
}

function trouble(kind, object) {
  return codeText(ONLINE[kind], object);
}

const nameOf = {
  drive: (drive) => 'drive ' + drive.DeviceNumber + ' ' + drive.DeviceName,
  pool: (pool) => 'pool ' + pool.VirtualPoolId + ' ' + pool.Name,
  volume: (volume) => 'volume ' + volume.VirtualVolumeId + ' ' + volume.VolumeName,
};

function isSought(kind, object) {
  return nameOf[kind](object).toLowerCase().includes(byId('find').value.trim().toLowerCase());
}

/** The findings; where the storage library cannot be asked for them, what is not in order. */
function findingsOf(page) {
  if (page.findings) return page.findings;
  const lists = {drive: page.drives, pool: page.pools, volume: page.volumes};
  return Object.entries(lists).flatMap(([kind, objects]) => objects.filter((object) => levelOf(kind, object) !== 'well').map((object) => (
    {object: nameOf[kind](object), severity: 'degraded', cause: trouble(kind, object), remedy: '`tvpcim status -x` on the machine says more.'})));
}

/** Notes the rates since the sample before; a counter that was set to 0 has none. */
function takeSample(page) {
  const before = state.counters;
  if (!page.counters || (before && before.time === page.milliseconds)) return;
  const seconds = before ? (page.milliseconds - before.time) / 1000 : 0;
  for (const volume of page.volumes) {
    const id = volume.VirtualVolumeId;
    const now = page.counters[id];
    const then = before && before.of[id];
    const rate = (name) => now && then && now[name] >= then[name] ? (now[name] - then[name]) / seconds : null;
    const list = state.samples.get(id) || [];
    list.push({reads: rate('ReadIO_Count'), writes: rate('WriteIO_Count')});
    if (list.length > SAMPLES) list.shift();
    state.samples.set(id, list);
  }
  const present = new Set(page.volumes.map((volume) => volume.VirtualVolumeId));
  for (const id of state.samples.keys()) if (!present.has(id)) state.samples.delete(id);
  state.counters = {time: page.milliseconds, of: page.counters};
}

function ratesOf(volume) {
  const list = state.samples.get(volume.VirtualVolumeId);
  return list && list.length ? list[list.length - 1] : {reads: null, writes: null};
}

function ssdShare(volume) {
  const counters = state.page.counters && state.page.counters[volume.VirtualVolumeId];
  return counters ? percent(counters.SSD_VDTotalChunks, counters.VD_TotalChunks) : null;
}

function hitShare(counters) {
  const all = counters ? counters.ReadIO_Count + counters.WriteIO_Count : 0;
  return all ? percent(counters.SSD_RIO_Count + counters.SSD_WIO_Count, all) : null;
}

const shareText = (share) => share === null ? '–' : share + '%';
