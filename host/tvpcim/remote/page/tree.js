// SPDX-License-Identifier: Apache-2.0
// The tree, from drives by their pools to the volumes on those

/** Nodes as they are shown, each with its children when it is open. */
function treeNodes() {
  const {drives, pools, volumes, poolDrives = {}, volumePools = {}} = state.page;
  const poolById = new Map(pools.map((pool) => [String(pool.VirtualPoolId), pool]));
  const poolsOf = new Map(), volumesOf = new Map(), usedOf = new Map();
  const into = (map, key, value) => map.set(key, [...(map.get(key) || []), value]);
  for (const [pool, list] of Object.entries(poolDrives)) {
    for (const number of new Set(list.map((extent) => extent.DeviceNumber))) into(poolsOf, number, pool);
    for (const extent of list) usedOf.set(extent.DeviceNumber, (usedOf.get(extent.DeviceNumber) || 0) + extent.Sectors);
  }
  for (const volume of volumes) {
    for (const use of volumePools[volume.VirtualVolumeId] || []) into(volumesOf, String(use.VirtualPoolId), volume);
  }
  const volumeNode = (volume, above) => ({
    key: above + '/v' + volume.VirtualVolumeId, name: nameOf.volume(volume), level: levelOf('volume', volume), word: trouble('volume', volume),
    text: codeText('VolumeType', volume) + ' · ' + sizeText(volume.CapacityInSectors), children: [],
  });
  const poolNode = (id, above) => {
    const pool = poolById.get(id), key = above + '/p' + id;
    const children = (volumesOf.get(id) || []).map((volume) => volumeNode(volume, key));
    if (!pool) return {key, name: 'pool ' + id, level: 'well', word: '', text: 'internal, of a cached volume', children};
    const use = poolUse(pool);
    return {key, name: nameOf.pool(pool), level: levelOf('pool', pool), word: trouble('pool', pool), share: use.share, text: codeText('TierLevel', pool) + ' · ' + use.text, children};
  };
  return troubledFirst('drive', drives).map((drive) => {
    const key = 'd' + drive.DeviceNumber, used = usedOf.get(drive.DeviceNumber) || 0;
    const share = percent(used, drive.CapacityInSectors);
    return {
      key, name: nameOf.drive(drive), level: levelOf('drive', drive), word: trouble('drive', drive), share: state.page.poolDrives ? share : undefined,
      text: codeText('DeviceType', drive) + ' · ' + sizeText(drive.CapacityInSectors) + (state.page.poolDrives ? ', ' + share + '% used' : '') + (drive.Model ? ' · ' + drive.Model : ''),
      children: (poolsOf.get(drive.DeviceNumber) || []).map((pool) => poolNode(pool, key)),
    };
  });
}

function makeTreeItem() {
  return make('li', {role: 'treeitem', tabindex: '-1'},
    make('div', {class: 'node'}, make('span', {class: 'name'}), makeWord(), makeBar(), make('span', {class: 'sub'})));
}

function showTreeItems(parent, nodes, level) {
  sync(parent, nodes, (node) => node.key, makeTreeItem, (item, node) => {
    const [name, word, bar, text] = item.firstChild.children;
    const open = state.open.has(node.key) && node.children.length > 0;
    item.setAttribute('aria-level', level);
    item.setAttribute('aria-label', [node.name, node.word, node.text].filter(Boolean).join(', '));
    if (node.children.length) item.setAttribute('aria-expanded', String(open));
    else item.removeAttribute('aria-expanded');
    item.tabIndex = state.current === node.key ? 0 : -1;
    setText(name, node.name);
    setWord(word, node.level, node.word);
    word.hidden = !node.word;
    bar.hidden = node.share === undefined;
    setBar(bar, node.share || 0, node.share >= 90);
    setText(text, node.text);
    let group = item.children[1];
    if (open && !group) item.append(group = make('ul', {role: 'group'}));
    if (open) showTreeItems(group, node.children, level + 1);
    else if (group) group.remove();
  });
}

function showTree() {
  const contains = (node, text) => node.name.toLowerCase().includes(text) || node.children.some((child) => contains(child, text));
  const sought = byId('find').value.trim().toLowerCase();
  const nodes = treeNodes().filter((node) => contains(node, sought));
  byId('no-drives').hidden = state.page.drives.length > 0;
  showTreeItems(byId('tree'), nodes, 1);
  const items = treeItems();
  if (items.length && !items.some((item) => item.tabIndex === 0)) items[0].tabIndex = 0;
}

const treeItems = () => [...byId('tree').querySelectorAll('[role="treeitem"]')];

function goTo(item) {
  if (!item) return;
  for (const other of treeItems()) other.tabIndex = -1;
  item.tabIndex = 0;
  state.current = item.dataset.key;
  item.focus();
}

function setOpen(item, open) {
  if (!item.hasAttribute('aria-expanded')) return;
  if (open) state.open.add(item.dataset.key);
  else state.open.delete(item.dataset.key);
  showTree();
}

function onTreeKey(event) {
  const item = event.target.closest('[role="treeitem"]');
  if (!item || event.altKey || event.ctrlKey || event.metaKey) return;
  const items = treeItems(), at = items.indexOf(item), expanded = item.getAttribute('aria-expanded');
  const actions = {
    ArrowDown: () => goTo(items[at + 1]),
    ArrowUp: () => goTo(items[at - 1]),
    Home: () => goTo(items[0]),
    End: () => goTo(items[items.length - 1]),
    ArrowRight: () => expanded === 'true' ? goTo(items[at + 1]) : setOpen(item, true),
    ArrowLeft: () => expanded === 'true' ? setOpen(item, false) : goTo(item.parentElement.closest('[role="treeitem"]')),
    Enter: () => setOpen(item, expanded === 'false'),
    ' ': () => setOpen(item, expanded === 'false'),
  };
  if (actions[event.key]) {
    event.preventDefault();
    actions[event.key]();
  }
}
