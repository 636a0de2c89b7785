// Tries exported sites in a browser: what the pages hold, anchors and links included, against what
// the host says of the database, and a reader's walks from frame to frame.
// Arguments: the host, the browser, the folder of the NAME.cdb and site/NAME, the names.
import assert from 'node:assert/strict';
import path from 'node:path';
import { after, before, test } from 'node:test';
import { chromium } from 'playwright-core';
import { readDatabase } from './database.js';

const [host, browserPath, folder, ...names] = process.argv.slice(2);
const kTitle = 'Tavolin Web DataBase';
const kFewRecords = 8;
const kPatience = 300000;  // ms: a large page takes minutes where the machine is busy
const kSites = 'http://sites/';  // no other machine's: every request is answered from the folder
let browser;

before(async () => {
    browser = await chromium.launch({ executablePath: browserPath, args: ['--no-sandbox'] });
});

after(() => browser?.close());

async function answer(route) {
    const name = decodeURIComponent(new URL(route.request().url()).pathname);
    await route
        .fulfill({ path: path.join(folder, 'site', name) })
        .catch(() => route.fulfill({ status: 404 }));
}

// A window that remembers what goes wrong in it.
async function openWindow(faults) {
    const page = await browser.newPage({ viewport: { width: 1280, height: 720 } });
    page.setDefaultTimeout(kPatience);
    await page.route(`${kSites}**`, answer);
    page.on('console', (message) => {
        if (message.type() === 'error') faults.push(`${message.text()} ${message.location().url}`);
    });
    page.on('pageerror', (error) => faults.push(error.message));
    page.on('requestfailed', (request) => faults.push(`${request.url()} failed`));
    page.on('response', (answer) => answer.ok() || faults.push(`${answer.url()} not found`));
    return page;
}

// Waits until `look` gives `expected`.
async function eventually(look, expected) {
    let seen;
    for (const end = Date.now() + kPatience; Date.now() < end; ) {
        // A frame on its way to another page cannot be asked.
        seen = await look().catch((error) => error.message);
        if (JSON.stringify(seen) === JSON.stringify(expected)) return;
        await new Promise((resolve) => setTimeout(resolve, 20));
    }
    assert.deepEqual(seen, expected);
}

function frameOf(page, name) {
    return page.frame({ name }) ?? assert.fail(`no frame ${name}`);
}

// The first record in what the inline frame shows, and its rows as far as they can be seen.
const shownRecord = (page) =>
    frameOf(page, 'inlineRecords').evaluate(() => {
        if (document.readyState !== 'complete') return null;
        const inside = (element) => {
            const { top, bottom } = element.getBoundingClientRect();
            return top >= -1 && bottom <= innerHeight + 1;
        };
        const anchors = [...document.anchors];
        const at = anchors.findIndex(inside);
        const rows = [...(document.querySelectorAll('table')[at]?.rows ?? [])];
        return {
            table: document.querySelector('h1').textContent,
            key: anchors[at]?.name,
            isAtTop: anchors[at]?.getBoundingClientRect().top < 10,
            rows: rows.filter(inside).map((row) => [...row.cells].map((cell) => cell.textContent)),
        };
    });

// The rows of a record on its page.
const rowsOf = (table, record) =>
    table.fields.map(({ label }, i) => [`${label}:`, record.values[i] || 'NULL']);

const linkFields = ({ fields }, { values }) =>
    [...fields.keys()].filter((i) => fields[i].link !== '' && values[i] !== '');

// What a foreign key refers to. A second link between two tables adds no missing records, so there
// may be none.
function referred(tables, { fields }, { values }, field) {
    const name = fields[field].link.toLowerCase();
    const table = tables.find((other) => other.name.toLowerCase() === name);
    return { table, record: table.byKey.get(values[field]) };
}

const seesTable = (page, { name }) =>
    eventually(async () => (await shownRecord(page)).table, `${name} Records`);

const seesRecord = (page, table, record) =>
    eventually(() => shownRecord(page), {
        table: `${table.name} Records`,
        key: record.key,
        isAtTop: true,
        rows: rowsOf(table, record),
    });

async function choose(page, table, record) {
    await frameOf(page, 'contents').selectOption('select', `records.htm#${record.key}`);
    await seesRecord(page, table, record);
}

// What a page shows of each record, with the links in its rows.
const recordsOn = (frame) =>
    frame.evaluate(() => {
        const tables = [...document.querySelectorAll('table')];
        return [...document.anchors].map((anchor, i) => ({
            key: anchor.name,
            number: anchor.textContent,
            rows: [...tables[i].rows].map((row) => [...row.cells].map((cell) => cell.textContent)),
            links: [...tables[i].rows].map((row) => row.cells[1].querySelector('a')?.href ?? null),
        }));
    });

// An address as it is read, lone percent signs left alone.
const plain = (address) =>
    address?.replace(/(?:%[0-9A-F]{2})+/gi, (bytes) => decodeURIComponent(bytes));

async function checkPages(page, site, tables) {
    for (const table of tables) {
        await page.goto(`${site}${table.name}/index.htm`);
        const contents = frameOf(page, 'contents');
        const { records } = table;
        const text = await contents.textContent('body');
        assert.ok(text.includes(`Available ${records.length} Records In ${table.name}`), text);
        const options = await contents.$$eval('option', (all) => all.map((o) => [o.value, o.text]));
        const squeeze = (label) => label.replace(/[ \t\r\n]+/g, ' ').trim();
        const labels = records.map(({ key, label }) => [`records.htm#${key}`, squeeze(label)]);
        assert.deepEqual(options, labels);

        const shown = await recordsOn(frameOf(page, 'inlineRecords'));
        assert.equal(shown.length, records.length);
        records.forEach((record, i) => {
            const { key, number, rows, links } = shown[i];
            assert.deepEqual([key, number], [record.key, String(i + 1)]);
            assert.deepEqual(rows, rowsOf(table, record));
            const expected = table.fields.map(() => null);
            for (const f of linkFields(table, record))
                expected[f] = `${site}${table.fields[f].link}/records.htm#${record.values[f]}`;
            assert.deepEqual(links.map(plain), expected.map(plain));
        });
    }
}

async function walk(page, site, name, tables) {
    await page.goto(`${site}${name}.htm`);
    assert.equal(await page.title(), kTitle);
    assert.equal(await frameOf(page, 'title').textContent('h1'), kTitle);
    const list = () => frameOf(page, 'contents').$$eval('a', (all) => all.map((a) => a.text));
    assert.deepEqual(await list(), tables.map((table) => table.name));
    if (tables.length === 0) return;
    await seesTable(page, tables[0]);

    for (const table of [...tables].reverse()) {
        await frameOf(page, 'contents').click(`a >> text="${table.name}"`);
        await seesTable(page, table);
        assert.deepEqual(await list(), tables.map((other) => other.name));
        const { records } = table;
        const few = records.length <= kFewRecords;
        for (const record of few ? records : [records[0], records.at(-1)]) {
            await choose(page, table, record);
            for (const field of linkFields(table, record)) {
                await follow(page, tables, table, record, field);
                await page.evaluate(() => history.back());
                await seesRecord(page, table, record);
            }
        }
    }
}

// Follows a foreign key of the record that is shown.
async function follow(page, tables, table, record, field) {
    const link = await frameOf(page, 'inlineRecords').evaluateHandle(
        ([key, row]) => {
            const at = [...document.anchors].findIndex((anchor) => anchor.name === key);
            return document.querySelectorAll('table')[at].rows[row].querySelector('a');
        },
        [record.key, field],
    );
    await link.click();
    const target = referred(tables, table, record, field);
    if (target.record) await seesRecord(page, target.table, target.record);
    else await seesTable(page, target.table);
}

// A table's page with a record that was chosen, and the one that its foreign key leads to.
async function takePictures(page, site, tables, pictures) {
    const books = tables.find(({ name }) => name === 'Books');
    await page.setViewportSize({ width: 960, height: 640 });
    await page.mouse.move(480, 8);
    await page.goto(`${site}Books/index.htm`);
    await choose(page, books, books.records[2]);
    await page.screenshot({ path: path.join(pictures, 'site-table.png') });
    await follow(page, tables, books, books.records[2], 2);
    await page.screenshot({ path: path.join(pictures, 'site-foreign-key.png') });
}

for (const name of names) {
    test(name, async (t) => {
        const tables = readDatabase(host, path.join(folder, `${name}.cdb`));
        const site = `${kSites}${name}/`;
        const faults = [];
        const page = await openWindow(faults);
        await t.test('shows the database', () => checkPages(page, site, tables));
        await t.test('is walked through', () => walk(page, site, name, tables));
        if (name === 'library' && process.env.PICTURES)
            await takePictures(page, site, tables, process.env.PICTURES);
        await page.close();
        assert.deepEqual(faults, []);
    });
}
