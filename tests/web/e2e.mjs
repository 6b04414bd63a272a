// camsim serve in a real browser: Debian's chromium, driven by playwright-core.
// Starts camsim serve on a free loopback port with a temporary root, opens the
// page, switches the language, moves a control and checks the camera's value,
// saves and checks the scheme file on disk, and turns the light down to see the
// status strip turn to night within the switch delay on the camera's clock.
// Usage: node e2e.mjs [path/to/camsim] [--screenshot FILE]
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const args = process.argv.slice(2);
let screenshot = null;
const shotAt = args.indexOf('--screenshot');
if (shotAt >= 0) {
  screenshot = path.resolve(args[shotAt + 1]);
  args.splice(shotAt, 2);
}
const camsim = path.resolve(args[0] || path.join(here, '../../build/dev/tools/camsim'));
const chromiumPath = '/usr/bin/chromium';
const switchDelayMs = 5000;  // the day/night switch delay of a fresh root (parameter 34)

if (!fs.existsSync(chromiumPath)) {
  console.log(`test-web: SKIPPED: ${chromiumPath} is not installed and could not be (scripts/setup --web installs Debian's chromium)`);
  process.exit(0);
}
const { chromium } = await import('playwright-core');

const work = fs.mkdtempSync(path.join(os.tmpdir(), 'camsim-web-'));
const root = path.join(work, 'camroot');
let server = null;
let serverOutput = '';
let context = null;

function startCamsim() {
  return new Promise((resolve, reject) => {
    server = spawn(camsim, ['--root', root, '--time', '10:00', '--light', '80', 'serve', '--port', '0'],
      { stdio: ['ignore', 'pipe', 'pipe'] });
    const timer = setTimeout(() => reject(new Error('camsim serve did not say where it listens within 30 s')), 30000);
    const take = (chunk) => {
      serverOutput += chunk.toString();
      const m = serverOutput.match(/listening on (http:\/\/127\.0\.0\.1:\d+\/)/);
      if (m) {
        clearTimeout(timer);
        resolve(m[1]);
      }
    };
    server.stdout.on('data', take);
    server.stderr.on('data', take);
    server.on('exit', (code) => reject(new Error(`camsim serve left with status ${code}`)));
    server.on('error', reject);
  });
}

async function stopCamsim() {
  if (!server || server.exitCode !== null) return;
  const done = new Promise((resolve) => server.once('exit', resolve));
  server.kill('SIGINT');
  const timer = setTimeout(() => server.kill('SIGKILL'), 10000);
  await done;
  clearTimeout(timer);
}

async function api(base, method, p, body) {
  const res = await fetch(base + p.replace(/^\//, ''), {
    method,
    headers: body === undefined ? {} : { 'Content-Type': 'application/json' },
    body: body === undefined ? undefined : JSON.stringify(body),
  });
  return { status: res.status, data: await res.json() };
}

const timings = {};
let failed = false;
try {
  const base = await startCamsim();
  const profile = fs.mkdtempSync(path.join(work, 'profile-'));
  context = await chromium.launchPersistentContext(profile, {
    executablePath: chromiumPath,
    headless: true,
    viewport: { width: 1100, height: 720 },
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync'],
  });
  const page = context.pages()[0] || await context.newPage();
  page.on('pageerror', (e) => { console.error('page error: ' + e.message); failed = true; });

  // The page: tabs and controls of the merged style, in English first.
  const t0 = Date.now();
  await page.goto(base);
  await page.waitForSelector('body[data-ready="1"]', { timeout: 15000 });
  timings.firstLoadMs = Date.now() - t0;
  timings.firstRenderMs = Number(await page.getAttribute('body', 'data-render-ms'));
  const tabs = await page.locator('#tabs button').allTextContents();
  assert.ok(tabs.includes('Image adjust'), 'English tab labels: ' + tabs.join(', '));
  assert.ok(tabs.includes('Infrared lamp'), 'the infrared tab merged in for the fisheye board: ' + tabs.join(', '));
  assert.ok(!tabs.includes('Defog'), 'the defog tab taken out for the fisheye board');
  assert.equal(await page.textContent('label[for="ctl-1"]'), 'Brightness');
  assert.equal(await page.getAttribute('#ctl-1', 'min'), '0');
  assert.equal(await page.getAttribute('#ctl-1', 'max'), '100');
  const values = (await api(base, 'GET', '/api/parameters')).data.values;
  assert.equal(await page.inputValue('#ctl-1'), String(values['1']), 'the control shows the value in force');

  // Whole page loads (page files, languages, texts of one language, values; rendered):
  // the median of five reloads.
  const loads = [];
  for (let i = 0; i < 5; ++i) {
    await page.reload();
    await page.waitForSelector('body[data-ready="1"]');
    loads.push(Number(await page.getAttribute('body', 'data-ready-ms')));
  }
  loads.sort((a, b) => a - b);
  timings.reloadMs = loads[2];

  // Another language: every label from that language's texts.
  const languages = await page.locator('#language option').allTextContents();
  assert.deepEqual(languages, ['english', 'chinese']);
  await page.selectOption('#language', '2');
  await page.waitForSelector('body[data-language="2"]');
  timings.languageRenderMs = Number(await page.getAttribute('body', 'data-render-ms'));
  assert.equal(await page.textContent('#tabs button[data-tab="1"]'), '图像调节');
  assert.equal(await page.textContent('label[for="ctl-1"]'), '亮度');
  assert.equal(await page.textContent('#save'), '保存');
  assert.match(await page.textContent('#raw-texts'), /<SensorLanguage language="chinese">/);
  await page.selectOption('#language', '1');
  await page.waitForSelector('body[data-language="1"]');

  // Move a control: the camera's parameter changes.
  const brightness = values['1'] === 63 ? 64 : 63;
  await page.locator('#ctl-1').fill(String(brightness));
  await page.waitForSelector('[data-param="1"] .outcome.ok');
  timings.browserRoundTripMs = Number(await page.getAttribute('body', 'data-last-round-trip-ms'));
  assert.equal((await api(base, 'GET', '/api/parameters')).data.values['1'], brightness);
  // Parameter round trips from the page, as its controls make them (mean of 20).
  timings.browserRoundTripMeanMs = await page.evaluate(async () => {
    const n = 20;
    const t = performance.now();
    for (let i = 0; i < n; ++i) {
      const r = await fetch('/api/parameters', {
        method: 'POST', headers: { 'Content-Type': 'application/json' },
        body: JSON.stringify({ text: '(4,' + (40 + (i % 10)) + ')' }),
      });
      if (r.status !== 200) throw new Error('POST /api/parameters: HTTP ' + r.status);
      await r.json();
    }
    return (performance.now() - t) / n;
  });

  // A value the library refuses: its reason on the page, the value unchanged.
  await page.click('#tabs button[data-tab="2"]');
  const shutter = (await api(base, 'GET', '/api/parameters')).data.values['6'];
  await page.locator('#ctl-6').fill('19');
  await page.waitForSelector('#result.refused');
  assert.match(await page.textContent('#result'), /refused: .*out of range/);
  assert.equal((await api(base, 'GET', '/api/parameters')).data.values['6'], shutter);
  await page.click('#tabs button[data-tab="1"]');

  // Save: the scheme file on disk holds the new value.
  const schemeFile = path.join(root, 'mnt/mtd/code/config_file/sensor0.cfg');
  assert.ok(!fs.readFileSync(schemeFile, 'utf8').includes(`(1,${brightness})`));
  await page.click('#save');
  await page.waitForSelector('#result.ok');
  assert.match(await page.textContent('#result'), /saved to scheme 0/);
  assert.ok(fs.readFileSync(schemeFile, 'utf8').includes(`(1,${brightness})`), 'sensor0.cfg holds the saved value');

  // Dark: the strip turns to night within the switch delay on the camera's clock.
  await page.waitForSelector('#status[data-daynight="day"]');
  const before = (await api(base, 'GET', '/api/status')).data.clockMs;
  await page.locator('#light').fill('10');
  await page.waitForSelector('#status[data-daynight="night"]', { timeout: 20000 });
  const seen = Number(await page.getAttribute('#status', 'data-clock-ms'));
  const status = (await api(base, 'GET', '/api/status')).data;
  assert.equal(status.light, 10);
  assert.equal(status.lamps, true);
  assert.match(await page.textContent('#st-picture'), /IR-cut filter out/);
  timings.nightAfterMs = seen - before;
  // The strip reads the status once a second: up to a second (and a clock step) late.
  assert.ok(seen - before <= switchDelayMs + 1500, `night seen ${seen - before} ms after the light went down`);

  // Several tabs at once: each loads and reads the status.
  const more = await Promise.all([1, 2, 3].map(async () => {
    const p = await context.newPage();
    await p.goto(base);
    await p.waitForSelector('body[data-ready="1"]', { timeout: 15000 });
    return p;
  }));
  await Promise.all(more.map((p) => p.waitForSelector('#status[data-daynight="night"]')));
  for (const p of more) await p.close();

  // Round trips from a client beside the browser.
  const n = 50;
  const r0 = performance.now();
  for (let i = 0; i < n; ++i) {
    const r = await api(base, 'POST', '/api/parameters', { text: `(2,${40 + (i % 20)})` });
    assert.equal(r.status, 200);
  }
  timings.apiRoundTripMs = (performance.now() - r0) / n;
  const l0 = performance.now();
  for (let i = 0; i < 20; ++i) assert.equal((await api(base, 'GET', '/api/ui/1')).status, 200);
  timings.textsFetchMs = (performance.now() - l0) / 20;

  if (screenshot) {
    await page.selectOption('#language', '1');
    await page.waitForSelector('body[data-language="1"]');
    await page.setViewportSize({ width: 1100, height: 500 });
    await page.screenshot({ path: screenshot });
  }
} catch (e) {
  failed = true;
  console.error('test-web: FAILED: ' + (e && e.stack ? e.stack : e));
  console.error('--- camsim serve output (last 40 lines) ---\n' + serverOutput.split('\n').slice(-40).join('\n'));
} finally {
  if (context) await context.close().catch(() => {});
  await stopCamsim();
  fs.rmSync(work, { recursive: true, force: true });
}

const f = (v) => (typeof v === 'number' ? v.toFixed(1) : '-');
console.log(`test-web: page first load ${f(timings.firstLoadMs)} ms (texts and values fetched and rendered in ${f(timings.firstRenderMs)} ms), ` +
  `page reload ${f(timings.reloadMs)} ms to rendered (median of 5), ` +
  `language switch rendered in ${f(timings.languageRenderMs)} ms, parameter round trip ${f(timings.browserRoundTripMs)} ms in the browser ` +
  `(${f(timings.browserRoundTripMeanMs)} ms mean of 20), ` +
  `${f(timings.apiRoundTripMs)} ms from a client (mean of 50), texts of one language ${f(timings.textsFetchMs)} ms (mean of 20), ` +
  `night ${f(timings.nightAfterMs)} ms of camera time after the light went down`);
if (failed) process.exit(1);
console.log('test-web: passed');
