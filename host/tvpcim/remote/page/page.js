// SPDX-License-Identifier: Apache-2.0
// The parts of the page, and the questions for what they show.

function setBar(bar, share, tight) {
  bar.firstChild.style.width = Math.min(share, 100) + '%';
  bar.toggleAttribute('data-tight', tight);
}

const makeBar = () => make('span', {class: 'bar', 'aria-hidden': 'true'}, make('span'));

function makeWord() {
  return make('span', {class: 'word'}, make('span', {class: 'mark', 'aria-hidden': 'true'}), make('span'));
}

function setWord(word, level, text) {
  word.dataset.level = level;
  setText(word.lastChild, ' ' + text);
}

const sentence = (text) => text.charAt(0).toUpperCase() + text.slice(1) + (/[.!?]$/.test(text) ? '' : '.');

/** A sentence in which `commands` stand between backquotes. */
function setMarked(element, text) {
  if (element.textContent === text.replaceAll('`', '')) return;
  element.replaceChildren(...text.split('`').map((part, index) => index % 2 ? make('code', {}, part) : part));
}

function showHealth() {
  const findings = findingsOf(state.page);
  const failed = findings.filter((finding) => finding.severity === 'failed').length;
  const level = failed ? 'failed' : findings.length ? 'degraded' : 'well';
  const text = findings.length ? plural(findings.length, 'finding') + (failed ? ', ' + failed + ' failed' : '') : 'All is well';
  setHealth(level, text);
  const none = byId('no-findings');
  none.hidden = findings.length > 0;
  setText(none, 'Nothing: all is well.');
  sync(byId('finding-list'), findings, (finding) => finding.object + '\n' + finding.cause,
    () => make('li', {class: 'finding'}, make('span', {class: 'mark', 'aria-hidden': 'true'}), make('strong'), make('p'), make('p', {class: 'remedy'})),
    (item, finding) => {
      item.dataset.level = finding.severity;
      setText(item.children[1], finding.object + ' – ' + finding.severity);
      setMarked(item.children[2], sentence(finding.cause));
      setMarked(item.children[3], sentence(finding.remedy));
    });
}

/** The state of all in the title, the badge and, when it changes, to a screen reader. */
function setHealth(level, text) {
  const badge = byId('health');
  const sign = {well: '✓', degraded: '▲', failed: '✖', unknown: '?'}[level];
  badge.dataset.level = level;
  setText(byId('health-text'), text);
  document.title = sign + ' ' + text + ' – storage of ' + byId('host').textContent;
  if (state.level !== null && state.level !== text) announce(text);
  state.level = text;
}

/** What is said at once is said together, as one text would take the other's place. */
function announce(text) {
  if (!state.toSay.length) {
    queueMicrotask(() => {
      byId('announcer').textContent = state.toSay.join('. ');
      state.toSay = [];
    });
  }
  state.toSay.push(text);
}

function showTiles() {
  const {drives, pools, volumes, counters} = state.page;
  const sum = (list, name) => list.reduce((total, object) => total + object[name], 0);
  const rates = volumes.map(ratesOf).filter((rate) => rate.reads !== null && rate.writes !== null);
  const total = rates.reduce((all, rate) => all + rate.reads + rate.writes, 0);
  const all = {ReadIO_Count: 0, WriteIO_Count: 0, SSD_RIO_Count: 0, SSD_WIO_Count: 0};
  for (const each of Object.values(counters || {})) for (const name of Object.keys(all)) all[name] += each[name];
  const tiles = [
    ['Drives', String(drives.length), drives.filter((drive) => drive.isUsedByTarvexPro).length + ' in pools'],
    ['Pools', String(pools.length), sizeText(sum(pools, 'CapacityInSectors')) + ' in all'],
    ['Volumes', String(volumes.length), sizeText(sum(volumes, 'CapacityInSectors')) + ' in all'],
  ];
  for (const [level, name] of [[1, 'Hard-disk pools'], [3, 'SSD pools']]) {
    const tier = pools.filter((pool) => pool.TierLevel === level);
    const used = sum(tier, 'UsedCapacityInSectors'), size = sum(tier, 'CapacityInSectors');
    if (tier.length) tiles.push([name, percent(used, size) + '% used', sizeText(used) + ' of ' + sizeText(size)]);
  }
  if (counters) {
    tiles.push(['Operations', rates.length ? rateText(total) + '/s' : '–', 'reads and writes of all volumes']);
    tiles.push(['Served by SSD', shareText(hitShare(all)), 'of the operations counted']);
  }
  sync(byId('tiles'), tiles, (tile) => tile[0],
    (tile) => make('div', {class: 'tile'}, make('dt', {}, tile[0]), make('dd'), make('dd', {class: 'sub'})),
    (item, tile) => {
      setText(item.children[1], tile[1]);
      setText(item.children[2], tile[2]);
    });
}

function poolUse(pool) {
  const full = pool.UsedCapacityInSectors >= pool.CapacityInSectors;
  const share = full ? 100 : Math.min(percent(pool.UsedCapacityInSectors, pool.CapacityInSectors), 99);
  const word = full ? ', full' : share >= 90 ? ', nearly full' : '';
  return {share, text: sizeText(pool.UsedCapacityInSectors) + ' of ' + sizeText(pool.CapacityInSectors) + ', ' + share + '%' + word};
}

function showPools() {
  const pools = troubledFirst('pool', state.page.pools).filter((pool) => isSought('pool', pool));
  byId('no-pools').hidden = state.page.pools.length > 0;
  sync(byId('pool-list'), pools, (pool) => pool.VirtualPoolId,
    () => make('li', {}, make('span', {class: 'name'}), makeWord(), makeBar(), make('span', {class: 'sub'})),
    (item, pool) => {
      const use = poolUse(pool);
      setText(item.children[0], pool.Name);
      setWord(item.children[1], levelOf('pool', pool), trouble('pool', pool));
      setBar(item.children[2], use.share, use.share >= 90);
      setText(item.children[3], codeText('TierLevel', pool) + ' · ' + use.text + ' · ' + plural(pool.NumberOfLogicalDevice, 'drive') + ', ' + plural(pool.NumberOfVirtualVolume, 'volume'));
    });
}

/** The columns of the volumes: title, text, what is sorted by, and whether they are numbers. */
const COLUMNS = [
  ['Volume', (volume) => volume.VolumeName, (volume) => volume.VirtualVolumeId, false],
  ['State', (volume) => trouble('volume', volume), (volume) => -volume.State, false],
  ['Type', (volume) => codeText('VolumeType', volume), (volume) => volume.VolumeType, false],
  ['Capacity', (volume) => sizeText(volume.CapacityInSectors), (volume) => volume.CapacityInSectors, true],
  ['On SSD', (volume) => shareText(ssdShare(volume)), ssdShare, true],
  ['Reads/s', (volume) => rateText(ratesOf(volume).reads), (volume) => ratesOf(volume).reads, true],
  ['Writes/s', (volume) => rateText(ratesOf(volume).writes), (volume) => ratesOf(volume).writes, true],
  ['SSD hits', (volume) => shareText(hitShare((state.page.counters || {})[volume.VirtualVolumeId])), (volume) => hitShare((state.page.counters || {})[volume.VirtualVolumeId]), true],
];

function makeHead() {
  COLUMNS.forEach(([title, , , numbers], index) => {
    const button = make('button', {type: 'button'}, title);
    button.addEventListener('click', () => {
      state.sort = {column: index, down: state.sort.column === index ? !state.sort.down : numbers};
      if (state.page) showVolumes();
    });
    byId('volume-head').append(make('th', {scope: 'col', role: 'columnheader', class: numbers ? 'number' : ''}, button));
  });
}

function makeVolumeRow(volume) {
  const button = make('button', {type: 'button', 'aria-pressed': 'false'});
  button.addEventListener('click', () => choose(volume.VirtualVolumeId));
  const row = make('tr', {role: 'row'}, make('th', {scope: 'row', role: 'rowheader'}, button));
  COLUMNS.slice(1).forEach(([title, , , numbers], index) => {
    const cell = make('td', {role: 'cell', class: numbers ? 'number' : '', 'data-label': title});
    if (index === 0) cell.append(makeWord());
    if (title === 'On SSD') cell.append(makeBar());
    if (index !== 0) cell.append(make('span'));
    row.append(cell);
  });
  return row;
}

function showVolumes() {
  const {column, down} = state.sort;
  const key = COLUMNS[column][2];
  const order = (left, right) => ((key(left) ?? -1) - (key(right) ?? -1)) * (down ? -1 : 1) || left.VirtualVolumeId - right.VirtualVolumeId;
  const volumes = state.page.volumes.filter((volume) => isSought('volume', volume)).sort(order);
  byId('no-volumes').hidden = state.page.volumes.length > 0;
  byId('volume-head').parentElement.hidden = state.page.volumes.length === 0;
  [...byId('volume-head').children].forEach((head, index) => {
    if (index === column) head.setAttribute('aria-sort', down ? 'descending' : 'ascending');
    else head.removeAttribute('aria-sort');
  });
  sync(byId('volume-list'), volumes, (volume) => volume.VirtualVolumeId, makeVolumeRow, (row, volume) => {
    const chosen = volume.VirtualVolumeId === state.chosen;
    const button = row.firstChild.firstChild;
    row.classList.toggle('chosen', chosen);
    button.setAttribute('aria-pressed', String(chosen));
    setText(button, volume.VolumeName);
    COLUMNS.forEach(([title, text], index) => {
      if (index === 1) setWord(row.children[index].firstChild, levelOf('volume', volume), text(volume));
      else if (index > 1) setText(row.children[index].lastChild, text(volume));
      if (title === 'On SSD') setBar(row.children[index].firstChild, ssdShare(volume) || 0, false);
    });
  });
}

// ---- Events

function showEvents(page) {
  state.events = page.events;
  byId('no-events').hidden = page.events.length > 0;
  sync(byId('event-list'), [...page.events].reverse(), (event) => page.started + ' ' + event.sequence,
    (event) => {
      const level = {1: 'failed', 2: 'degraded'}[event.eventType] || 'information';
      const kind = {1: 'Error', 2: 'Warning', 3: 'Information'}[event.eventType] || '';
      return make('li', {'data-level': level}, make('span', {class: 'mark', 'aria-hidden': 'true'}),
        make('time', {datetime: event.eventTime}, event.eventTime.slice(0, 10) + ' ' + timeText(event.eventTime) + ' · ' + kind),
        make('span', {class: 'text'}, event.eventDesc));
    }, () => {});
  const newest = page.events.length ? page.events[page.events.length - 1].sequence : 0;
  const fresh = page.events.filter((event) => event.sequence > state.announced);
  if (state.level !== null && fresh.length) announce(plural(fresh.length, 'new event') + ': ' + fresh[fresh.length - 1].eventDesc);
  state.announced = newest;
}

// ---- Asking

function showBanner(text) {
  const banner = byId('banner');
  banner.hidden = !text;
  setText(banner, text);
  document.body.classList.toggle('stale', Boolean(text));
}

function showAll() {
  keepChoice();
  showTiles();
  showPools();
  showVolumes();
  showTree();
  showRates();
}

function show(page) {
  setText(byId('host'), page.host || 'this machine');
  setText(byId('version'), page.version);
  if (state.page && state.page.started !== page.started) {  // another server, which counts its events anew
    state.announced = 0;
    state.counters = null;
  }
  showEvents(page);
  if (page.error) {
    setHealth('failed', 'Not readable');
    showBanner(page.error.message + (page.error.hint ? ': ' + page.error.hint : '') + (state.page ? '. What is shown is of ' + timeText(state.page.time) + '.' : ''));
    return;
  }
  state.page = page;
  takeSample(page);
  showBanner('');
  setText(byId('policy'), page.identity.PolicyEngineStatus ? 'Policy engine running.' : 'Policy engine stopped.');
  setText(byId('updated'), 'As of ' + timeText(page.time) + '.');
  showHealth();
  showAll();
}

async function ask() {
  clearTimeout(state.timer);
  try {
    const answer = await fetched('page.json');
    if (!answer.ok) throw new Error(answer.status === 401 || answer.status === 403 ? 'The server asks who you are: reload the page' : 'The server answers with ' + answer.status);
    show(await answer.json());
    if (Date.now() - state.heatAt >= HEAT_INTERVAL && state.page) askHeat();  // which may take long
  } catch (error) {
    setHealth('unknown', 'No answer');
    showBanner((error instanceof TypeError || error.name === 'TimeoutError' ? 'The server does not answer' : error.message) + '. It is asked again.');
  }
  clearTimeout(state.timer);
  if (!state.paused && !document.hidden) state.timer = setTimeout(ask, INTERVAL);
}

byId('pause').addEventListener('click', () => {
  state.paused = !state.paused;
  byId('pause').setAttribute('aria-pressed', String(state.paused));
  setText(byId('pause'), state.paused ? 'Paused' : 'Pause');
  if (state.paused) clearTimeout(state.timer);
  else ask();
});
byId('find').addEventListener('input', () => state.page && showAll());
byId('tree').addEventListener('keydown', onTreeKey);
byId('tree').addEventListener('click', (event) => {
  const item = event.target.closest('[role="treeitem"]');
  if (!item) return;
  goTo(item);
  setOpen(item, item.getAttribute('aria-expanded') === 'false');
});
document.addEventListener('visibilitychange', () => {
  if (!document.hidden && !state.paused) ask();
});
makeHead();
ask();
