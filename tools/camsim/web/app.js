// The image-settings pages of the simulated camera, drawn from the XML texts the
// library hands the web interface (GET /api/ui/N: the style merged for the
// module, the common texts and the language texts) and the values in force
// (GET /api/parameters). docs/camsim-http.md describes the API.
'use strict';

const $ = (id) => document.getElementById(id);
const state = { language: 0, common: {}, texts: null, tab: null, values: {}, names: {} };

async function api(method, path, body) {
  const options = { method, headers: {} };
  if (body !== undefined) {
    options.headers['Content-Type'] = 'application/json';
    options.body = JSON.stringify(body);
  }
  const res = await fetch(path, options);
  let data = {};
  try { data = await res.json(); } catch (e) { data = { error: 'no JSON in the answer' }; }
  return { status: res.status, data };
}

function parseXml(text) {
  const doc = new DOMParser().parseFromString(text || '<empty/>', 'application/xml');
  return doc.getElementsByTagName('parsererror').length ? null : doc;
}

function byId(doc, tag, id) {
  if (!doc) return null;
  for (const e of doc.getElementsByTagName(tag)) if (e.getAttribute('id') === String(id)) return e;
  return null;
}

// A common text ("save", "on", ...) of the language, or the fallback.
function common(id, fallback) { return state.common[id] !== undefined ? state.common[id] : fallback; }

function controlLabel(id) {
  const e = byId(state.texts, 'Control', id);
  if (e) return e.textContent.trim();
  return state.names[id] ? state.names[id] : 'Parameter ' + id;
}

function optionLabel(control, value, all) {
  if (state.texts) {
    for (const e of state.texts.getElementsByTagName('Option'))
      if (e.getAttribute('control') === String(control) && e.getAttribute('value') === String(value))
        return e.textContent.trim();
  }
  if (all.length === 2 && all[0] === '0' && all[1] === '1') return value === '0' ? common('off', '0') : common('on', '1');
  return value;
}

function showResult(text, ok) {
  const r = $('result');
  r.textContent = text;
  r.className = ok ? 'ok' : 'refused';
}

async function setParameter(id, value, row) {
  const t0 = performance.now();
  const { status, data } = await api('POST', '/api/parameters', { text: '(' + id + ',' + value + ')' });
  const ms = performance.now() - t0;
  document.body.dataset.lastRoundTripMs = ms.toFixed(2);
  const outcome = row.querySelector('.outcome');
  if (status === 200) {
    state.values[id] = Number(value);
    row.querySelector('.current').textContent = value;
    outcome.textContent = 'accepted';
    outcome.className = 'outcome ok';
    showResult(controlLabel(id) + ' = ' + value + ': accepted (' + data.message + ')', true);
  } else {
    const reason = data.reason || data.error || ('HTTP ' + status);
    outcome.textContent = 'refused: ' + reason;
    outcome.className = 'outcome refused';
    showResult(controlLabel(id) + ' = ' + value + ': refused: ' + reason, false);
    await loadValues();
    renderPanel();
  }
}

function makeInput(control, id) {
  const type = control.getAttribute('type') || 'number';
  const value = state.values[id];
  let input;
  let range = '';
  if (type === 'select') {
    input = document.createElement('select');
    const all = (control.getAttribute('options') || '').split(',').map((s) => s.trim()).filter((s) => s !== '');
    for (const v of all) {
      const o = document.createElement('option');
      o.value = v;
      o.textContent = optionLabel(id, v, all);
      input.appendChild(o);
    }
    range = all.join(', ');
  } else {
    input = document.createElement('input');
    input.type = type === 'slider' ? 'range' : 'number';
    let min = control.getAttribute('min');
    let max = control.getAttribute('max');
    if (type === 'time') { min = min || '0'; max = max || '24'; }
    if (min !== null) input.min = min;
    if (max !== null) input.max = max;
    input.step = '1';
    if (min !== null || max !== null) range = (min !== null ? min : '') + ' \u2013 ' + (max !== null ? max : '');
  }
  if (value !== undefined) input.value = String(value);
  else input.disabled = true;
  return { input, range };
}

function renderControl(control) {
  const id = control.getAttribute('id');
  const row = document.createElement('div');
  row.className = 'control';
  row.dataset.param = id;
  const label = document.createElement('label');
  label.textContent = controlLabel(id);
  const { input, range } = makeInput(control, id);
  input.id = 'ctl-' + id;
  label.htmlFor = input.id;
  const info = document.createElement('span');
  info.className = 'range';
  const current = document.createElement('span');
  current.className = 'current';
  current.textContent = state.values[id] !== undefined ? String(state.values[id]) : 'not a parameter of this camera';
  info.append(range ? '(' + range + ') now ' : 'now ', current);
  const outcome = document.createElement('span');
  outcome.className = 'outcome';
  input.addEventListener('change', () => setParameter(id, input.value, row));
  row.append(label, input, info, outcome);
  return row;
}

function renderGroup(parent, title, controls) {
  if (!controls.length) return;
  const set = document.createElement('fieldset');
  if (title) {
    const legend = document.createElement('legend');
    legend.textContent = title;
    set.appendChild(legend);
  }
  for (const c of controls) set.appendChild(renderControl(c));
  parent.appendChild(set);
}

function tabLabel(tab) {
  const e = byId(state.texts, 'Text', tab.getAttribute('id'));
  return e ? e.textContent.trim() : (tab.getAttribute('title') || 'Tab ' + tab.getAttribute('id'));
}

function renderPanel() {
  const panel = $('panel');
  panel.textContent = '';
  const tab = state.tab;
  if (!tab) return;
  // Controls directly in the tab form one group; each Group element another.
  const loose = [];
  for (const child of tab.children) {
    if (child.tagName === 'Control') loose.push(child);
    else if (child.tagName === 'Group')
      renderGroup(panel, child.getAttribute('title') || '', Array.from(child.getElementsByTagName('Control')));
  }
  renderGroup(panel, tabLabel(tab), loose);
}

function renderTabs(style) {
  const nav = $('tabs');
  nav.textContent = '';
  const tabs = style ? Array.from(style.getElementsByTagName('Tab')) : [];
  const keep = state.tab ? state.tab.getAttribute('id') : null;
  state.tab = tabs.find((t) => t.getAttribute('id') === keep) || tabs[0] || null;
  for (const tab of tabs) {
    const b = document.createElement('button');
    b.type = 'button';
    b.setAttribute('role', 'tab');
    b.dataset.tab = tab.getAttribute('id');
    b.textContent = tabLabel(tab);
    b.setAttribute('aria-selected', tab === state.tab ? 'true' : 'false');
    b.addEventListener('click', () => {
      state.tab = tab;
      for (const o of nav.children) o.setAttribute('aria-selected', o === b ? 'true' : 'false');
      renderPanel();
    });
    nav.appendChild(b);
  }
  renderPanel();
}

async function loadValues() {
  const { status, data } = await api('GET', '/api/parameters');
  if (status !== 200) throw new Error(data.error || 'parameters: HTTP ' + status);
  state.values = {};
  for (const k of Object.keys(data.values)) state.values[k] = data.values[k];
  state.names = data.names || {};
  $('module').textContent = data.module || '';
}

async function loadLanguage(id) {
  const t0 = performance.now();
  const [ui] = await Promise.all([api('GET', '/api/ui/' + id), loadValues()]);
  if (ui.status !== 200) {
    showResult(ui.data.error || 'texts: HTTP ' + ui.status, false);
    return;
  }
  state.language = id;
  state.texts = parseXml(ui.data.texts);
  state.common = {};
  const commonDoc = parseXml(ui.data.common);
  if (commonDoc) for (const e of commonDoc.getElementsByTagName('Text')) state.common[e.getAttribute('id')] = e.textContent.trim();
  for (const e of document.querySelectorAll('[data-common]')) {
    if (!e.dataset.fallback) e.dataset.fallback = e.textContent;
    e.textContent = common(e.dataset.common, e.dataset.fallback);
  }
  $('raw-style').textContent = ui.data.style;
  $('raw-common').textContent = ui.data.common;
  $('raw-texts').textContent = ui.data.texts;
  const style = parseXml(ui.data.style);
  if (!style) showResult('the style text is not well-formed XML', false);
  renderTabs(style);
  document.documentElement.lang = ui.data.folder === 'chinese' ? 'zh' : 'en';
  document.body.dataset.language = String(id);
  document.body.dataset.renderMs = (performance.now() - t0).toFixed(2);
}

async function refreshStatus() {
  try {
    const { status, data } = await api('GET', '/api/status');
    if (status !== 200) return;
    $('st-time').textContent = data.deviceTime;
    $('st-daynight').textContent = data.dayNight.toUpperCase() + ' (mode ' + data.dayNightMode + ', ' + data.dayNightSource + ')';
    $('st-picture').textContent = data.picture + (data.lamps ? '; lamps on' : '; lamps off');
    $('st-scheme').textContent = data.scheme + ' (' + data.schemeMode + ')';
    $('st-light').textContent = data.light + ' % (' + data.lightText + ')';
    $('st-unsaved').textContent = data.unsaved;
    $('st-unsaved-item').hidden = !data.unsaved;
    $('status').className = data.dayNight === 'night' ? 'night' : 'day';
    $('status').dataset.daynight = data.dayNight;
    $('status').dataset.clockMs = String(data.clockMs);
    if (!$('time').value) $('time').value = data.deviceTime.slice(11, 19);
    if (document.activeElement !== $('light')) {
      $('light').value = data.light;
      $('light-value').textContent = data.light;
    }
  } catch (e) {
    $('st-time').textContent = 'no answer from camsim';
  }
}

async function init() {
  const { status, data } = await api('GET', '/api/languages');
  const select = $('language');
  if (status !== 200 || !data.languages.length) {
    showResult(data.error || 'no languages', false);
    return;
  }
  for (const l of data.languages) {
    const o = document.createElement('option');
    o.value = String(l.id);
    o.textContent = l.folder;
    select.appendChild(o);
  }
  select.addEventListener('change', () => loadLanguage(Number(select.value)));
  $('save').addEventListener('click', async () => {
    const { status: s, data: d } = await api('POST', '/api/flush');
    showResult(d.message || d.error || '', s === 200);
    refreshStatus();
  });
  $('light').addEventListener('input', () => { $('light-value').textContent = $('light').value; });
  $('light').addEventListener('change', async () => {
    const { status: s, data: d } = await api('POST', '/api/light', { level: Number($('light').value) });
    showResult(d.message || d.error || '', s === 200);
    refreshStatus();
  });
  $('set-time').addEventListener('click', async () => {
    const { status: s, data: d } = await api('POST', '/api/time', { time: $('time').value });
    showResult(d.message || d.error || '', s === 200);
    refreshStatus();
  });
  for (const b of document.querySelectorAll('[data-run]')) {
    b.addEventListener('click', async () => {
      const { status: s, data: d } = await api('POST', '/api/run', { seconds: Number(b.dataset.run) });
      showResult(s === 200 ? 'ran ' + b.dataset.run + ' s on the virtual clock' : d.error, s === 200);
      await loadValues();
      renderPanel();
      refreshStatus();
    });
  }
  await loadLanguage(Number(select.value));
  refreshStatus();
  setInterval(refreshStatus, 1000);
  document.body.dataset.readyMs = performance.now().toFixed(2);  // since the navigation began
  document.body.dataset.ready = '1';
}

init();
