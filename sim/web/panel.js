// The web panel's script: draws the terminal's state from /api/state and the
// event stream, and sends what the user does to the JSON API.
'use strict';

const $ = (id) => document.getElementById(id);
// Names of classes, instructions and status words, as the terminal's devices give them (/api/names).
let names = { classes: {}, instructions: {}, statuses: {} };
const places = ['field', 0, 1, 2, 3, 4];
const traffic = [];
let state = {};

function hex2(n) { return n.toString(16).toUpperCase().padStart(2, '0'); }

function commandName(request) {
  const [cls, ins] = request.split(' ');
  return names.instructions[`${cls} ${ins}`] ||
    `${names.classes[cls] || 'class ' + cls}: instruction ${ins || 'none'}`;
}

function statusText(status) {
  if (status === null) return 'no reply';
  const word = hex2(status >> 8) + hex2(status & 0xFF);
  return `${word} ${names.statuses[word] || ''}`.trim();
}

async function post(action, body) {
  const response = await fetch('/api/' + action, {
    method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(body),
  });
  const answer = await response.json();
  if (!response.ok) { alert(answer.error); return; }
  show(answer);
}

function drawScreen() {
  const picture = new Image();
  picture.onload = () => {
    $('screen').getContext('2d').drawImage(picture, 0, 0);
    $('screen').dataset.drawn = String(Number($('screen').dataset.drawn || 0) + 1);
  };
  picture.src = '/api/screen.png?' + Date.now();
  for (let page = 0; page < 5; ++page) $('page' + page).src = `/api/pages/${page}.png?${Date.now()}`;
}

function drawLcd() { $('lcd').src = '/api/lcd.png?' + Date.now(); }

function buildPlaces() {
  for (const place of places) {
    const row = document.createElement('div');
    row.className = 'place';
    const name = place === 'field' ? 'field' : 'slot ' + place;
    row.innerHTML = `<b>${name}</b><span class="holds" id="holds-${name}"></span>` +
      `<select id="profile-${name}"></select><button>Insert</button><button>Remove</button>`;
    const where = place === 'field' ? { place: 'field' } : { place: 'slot', slot: place };
    const [insert, remove] = row.querySelectorAll('button');
    insert.id = `insert-${name}`.replace(' ', '-');
    insert.onclick = () => post('cards/insert', { ...where, profile: $(`profile-${name}`).value });
    remove.onclick = () => post('cards/remove', where);
    $('places').appendChild(row);
  }
  for (let page = 0; page < 5; ++page) {
    $('pages').insertAdjacentHTML('beforeend', `<figure><img id="page${page}" alt="page ${page}"><figcaption>page ${page}</figcaption></figure>`);
  }
}

function buildKeypad() {
  const keys = ['1', '2', '3', '4', '5', '6', '7', '8', '9', 'C', '0', 'E', 'X'];
  const labels = { C: 'Clear', E: 'Enter', X: 'Cancel' };
  for (const key of keys) {
    const button = document.createElement('button');
    button.textContent = labels[key] || key;
    button.id = 'key-' + key;
    button.onclick = () => post('keys', { keys: key });
    $('keypad').appendChild(button);
  }
  document.addEventListener('keydown', (event) => {
    if (event.target.tagName === 'INPUT') return;
    const named = { Enter: 'E', Backspace: 'C', Escape: 'X' }[event.key];
    const key = named || (/^[0-9]$/.test(event.key) ? event.key : null);
    if (key) post('keys', { keys: key });
  });
}

function fillSelect(select, choices) {
  if (select.options.length === choices.length) return;
  select.innerHTML = choices.map((n) => `<option>${n}</option>`).join("");
}

function show(next) {
  state = next;
  for (const place of places) {
    const name = place === 'field' ? 'field' : 'slot ' + place;
    const holds = place === 'field' ? state.field : (state.slots || [])[place];
    $(`holds-${name}`).textContent = holds === undefined ? 'no reader' : (holds || 'empty');
    const kind = place === 'field' ? 'field' : 'slot';
    const fitting = (state.card_profiles || []).filter((p) => (state.profile_places[p] || []).includes(kind));
    fillSelect($(`profile-${name}`), fitting);
  }
  fillSelect($('identity-card'), state.identity_cards || []);
  $('identity-state').textContent = state.identity ? 'on the module: ' + state.identity : 'no card on the module';
  $('codes').textContent = state.codes_waiting ? `${state.codes_waiting} waiting` : '';
  $('mechanism').textContent = state.mechanism || 'no mechanism';
  $('typing').checked = state.typing;
  $('page-shown').textContent = state.page !== undefined ? `(page ${state.page} shown)` : '';
  showPrompt(state.prompt || null);
  if (state.stripe && !$('track1').value) [1, 2, 3].forEach((n) => { $('track' + n).value = state.stripe[n - 1]; });
}

function showPrompt(prompt) {
  const box = $('prompt');
  box.className = prompt ? 'asking' : '';
  box.textContent = prompt
    ? `Key the ${prompt.what}: ${'*'.repeat(prompt.typed)}  (${Math.ceil(prompt.left_ms / 1000)} s left)`
    : 'no entry asked for';
}

function pulseBuzzer() {
  $('buzzer').classList.add('on');
  setTimeout(() => $('buzzer').classList.remove('on'), 300);
  if (!$('sound').checked) return;
  const audio = new AudioContext();
  const tone = audio.createOscillator();
  tone.frequency.value = 2400;
  tone.connect(audio.destination);
  tone.start();
  tone.stop(audio.currentTime + 0.15);
}

function addTraffic(entry) {
  traffic.push(entry);
  const row = document.createElement('tr');
  if (entry.status !== 0) row.className = 'failed';
  const cells = [traffic.length, entry.time, entry.command || commandName(entry.request), entry.request,
    statusText(entry.status), entry.reply];
  cells.forEach((text, index) => {
    const cell = row.insertCell();
    cell.textContent = text;
    if (index === 3 || index === 5) cell.className = 'hex';
  });
  $('traffic').appendChild(row);
  applyFilter(row);
}

function applyFilter(row) {
  const wanted = $('filter').value.toLowerCase();
  row.hidden = wanted !== '' && !row.textContent.toLowerCase().includes(wanted);
}

function download() {
  const lines = traffic.map((entry) => JSON.stringify({
    ...entry, command: entry.command || commandName(entry.request), status_text: statusText(entry.status),
  })).join('\n');
  const link = document.createElement('a');
  link.href = URL.createObjectURL(new Blob([lines + '\n'], { type: 'application/x-ndjson' }));
  link.download = 'qz32-traffic.jsonl';
  link.click();
}

function listen() {
  const events = new EventSource('/api/events');
  events.onopen = () => { $('link').textContent = 'live'; };
  events.onerror = () => { $('link').textContent = 'reconnecting…'; };
  events.addEventListener('screen', drawScreen);
  events.addEventListener('lcd', drawLcd);
  events.addEventListener('beep', pulseBuzzer);
  events.addEventListener('prompt', (e) => showPrompt(JSON.parse(e.data)));
  events.addEventListener('traffic', (e) => {
    addTraffic({ ...JSON.parse(e.data), time: new Date().toISOString().slice(11, 23) });
    refresh();
  });
  events.addEventListener('state', refresh);
}

let refreshing = null;
function refresh() {
  if (refreshing) return;
  refreshing = setTimeout(async () => {
    refreshing = null;
    show(await (await fetch('/api/state')).json());
  }, 100);
}

buildPlaces();
buildKeypad();
$('identity-present').onclick = () => post('identity', { card: $('identity-card').value });
$('identity-remove').onclick = () => post('identity', { card: null });
$('swipe').onclick = () => post('stripe', { tracks: [1, 2, 3].map((n) => $('track' + n).value) });
$('scan').onclick = () => post('scan', { code: $('code').value });
$('typing').onchange = () => post('person', { typing: $('typing').checked });
$('filter').oninput = () => [...$('traffic').rows].forEach(applyFilter);
$('download').onclick = download;
$('clear-traffic').onclick = () => { traffic.length = 0; $('traffic').innerHTML = ''; };
fetch('/api/names').then((r) => r.json()).then((known) => { names = known; listen(); });
refresh();
drawScreen();
drawLcd();
