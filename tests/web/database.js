// What the host says of a database.
import { execFileSync } from 'node:child_process';

const kMebibyte = 1 << 20;

// The tables: the name, the fields as {label, link}, the records as {key, values, label}, and those
// by their keys.
export function readDatabase(host, file) {
    const rows = (...words) =>
        execFileSync(host, ['--format', 'json', file, ...words], {
            encoding: 'utf8',
            maxBuffer: 256 * kMebibyte,
        })
            .split('\n')
            .slice(0, -1)
            .map((line) => Object.values(JSON.parse(line)));
    return rows('tables').map(([name, , key]) => {
        const fields = rows('table', name).map(([, label, , , link]) => ({ label, link }));
        const labels = fields.map(({ label }) => label);
        const keyFields = key.split(', ').map((label) => labels.indexOf(label));
        const records = rows('list', name).map((values) => {
            const recordKey = keyFields.map((i) => values[i]).join('');
            const more = values.find((value, i) => value && !keyFields.includes(i));
            return { key: recordKey, values, label: more ? `${recordKey} ${more}` : recordKey };
        });
        if (records.length !== rows('count', name)[0][0]) throw new Error(`${name}: list, count`);
        const byKey = new Map(records.map((record) => [record.key, record]));
        return { name, fields, records, byKey };
    });
}
