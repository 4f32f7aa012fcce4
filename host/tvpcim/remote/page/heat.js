// SPDX-License-Identifier: Apache-2.0
// Heat and rates of one volume

function choose(volume) {
  state.chosen = volume;
  showVolumes();
  showRates();
  askHeat();
}

/** Chooses a volume for those who have not, and another one when theirs is gone. */
function keepChoice() {
  const volumes = state.page.volumes;
  if (!volumes.some((volume) => volume.VirtualVolumeId === state.chosen)) {
    state.chosen = volumes.length ? volumes[0].VirtualVolumeId : null;
    state.heatAt = 0;
  }
}

function hatch() {
  return draw('defs', {}, draw('pattern', {id: 'hatch', width: 6, height: 6, patternUnits: 'userSpaceOnUse', patternTransform: 'rotate(45)'},
    draw('line', {class: 'hatch-line', x1: 0, y1: 0, x2: 0, y2: 6})));
}

/** A bar for each part: its height is the heat of the hottest chunk, striped while most chunks are on hard disk. */
function heatChart(heat) {
  const width = 600, height = 140, step = width / heat.cells.length;
  const most = Math.max(heat.threshold, ...heat.cells.map((cell) => cell.hottest));
  const y = (value) => height - height * Math.sqrt(value / most);
  const chart = draw('svg', {viewBox: `0 0 ${width} ${height + 14}`, preserveAspectRatio: 'none', height: 154, role: 'img', 'aria-labelledby': 'heat-text'}, hatch());
  let first = 0;
  for (const [index, cell] of heat.cells.entries()) {
    const title = draw('title', {});
    title.textContent = partText(cell, first);
    const x = index * step, share = cell.ssd / cell.chunks;
    chart.append(draw('g', {}, title,
      draw('rect', {class: 'heat-ground', x, y: height + 4, width: step, height: 10}),
      draw('rect', {class: 'place', x, y: height + 4 + 10 * (1 - share), width: step, height: 10 * share}),
      draw('rect', {class: 'heat-bar ' + (share >= 0.5 ? 'ssd' : 'hdd'), x: x + step * 0.08, y: y(cell.hottest), width: step * 0.84, height: height - y(cell.hottest)})));
    first += cell.chunks;
  }
  chart.append(draw('line', {class: 'threshold', x1: 0, x2: width, y1: y(heat.threshold), y2: y(heat.threshold)}),
    draw('line', {class: 'axis', x1: 0, x2: width, y1: height, y2: height}));
  return chart;
}

function partText(cell, first) {
  return 'Chunks ' + first + ' to ' + (first + cell.chunks - 1) + ': hottest ' + cell.hottest + ', ' + cell.hot + ' hot, ' + cell.ssd + ' of ' + cell.chunks + ' on SSD';
}

function showHeat(heat) {
  const volume = state.page.volumes.find((each) => each.VirtualVolumeId === heat.number);
  if (!volume || heat.number !== state.chosen) return;
  setText(byId('heat-title'), 'Heat of ' + volume.VolumeName);
  byId('no-heat').hidden = !heat.reason;
  byId('heat-view').hidden = Boolean(heat.reason);
  if (heat.reason) {
    setText(byId('no-heat'), heat.reason);
    return;
  }
  const place = heat.type === 'cached' ? 'in the cache' : 'on SSD';
  setText(byId('heat-text'), heat.hotChunksOnSsd + ' of ' + plural(heat.hotChunks, 'hot chunk') + ' ' + (heat.hotChunks === 1 ? 'is ' : 'are ') + place + ', and ' + heat.chunksOnSsd.toLocaleString('en') + ' of all ' + heat.totalChunks.toLocaleString('en') + '.');
  setText(byId('heat-threshold'), 'hot from ' + plural(heat.threshold, 'access').replace(/accesss$/, 'accesses') + ' on; below, what is ' + place);
  byId('heat-chart').replaceChildren(heatChart(heat));
  let first = 0;
  const parts = heat.cells.map((cell) => {
    const part = {cell, first};
    first += cell.chunks;
    return part;
  }).filter((part) => part.cell.hottest > 0).sort((left, right) => right.cell.hottest - left.cell.hottest).slice(0, 10);
  byId('heat-parts').replaceChildren(...parts.map((part) => make('li', {}, partText(part.cell, part.first))));
}

async function askHeat() {
  const volume = state.chosen;
  state.heatAt = Date.now();
  if (volume === null) {
    setText(byId('heat-title'), 'Heat');
    setText(byId('no-heat'), 'There is no volume.');
    byId('no-heat').hidden = false;
    byId('heat-view').hidden = true;
    return;
  }
  try {
    const answer = await fetched('heat.json?volume=' + volume);
    if (answer.ok) showHeat(await answer.json());
    else if (answer.status === 403) showHeat({number: volume, reason: (await answer.text()).trim()});
    else state.heatAt = 0;
  } catch {
    state.heatAt = 0;  // what fails is seen by the question for the page
  }
}

function trace(list, name, most) {
  const points = list.map((sample, index) => sample[name] === null ? null : (600 - (list.length - 1 - index) * 600 / (SAMPLES - 1)).toFixed(1) + ',' + (80 - 78 * sample[name] / most).toFixed(1));
  return draw('polyline', {class: 'trace ' + name, points: points.filter(Boolean).join(' ')});
}

function showRates() {
  const list = state.samples.get(state.chosen) || [];
  byId('rate-view').hidden = !list.length;
  if (!list.length) return;
  const most = Math.max(1, ...list.map((sample) => Math.max(sample.reads || 0, sample.writes || 0)));
  const now = list[list.length - 1];
  const text = rateText(now.reads) + ' reads and ' + rateText(now.writes) + ' writes per second; the top is ' + rateText(most);
  byId('rate-chart').replaceChildren(draw('svg', {viewBox: '0 0 600 80', preserveAspectRatio: 'none', height: 80, role: 'img', 'aria-label': text},
    trace(list, 'reads', most), trace(list, 'writes', most), draw('line', {class: 'axis', x1: 0, x2: 600, y1: 80, y2: 80})));
  if (!byId('rate-text').firstChild) {
    byId('rate-text').append(make('span', {class: 'key reads'}), ' reads ', make('span', {class: 'key writes'}), ' writes', make('span', {id: 'rate-now'}));
  }
  setText(byId('rate-now'), ' · now ' + text);
}
