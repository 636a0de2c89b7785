// Prints all tables of an Access database: the name, the number of rows that the file tells, the
// columns, the rows. Usage: node dump.mjs FILE
import { readFileSync } from "node:fs";
import MDBReader from "mdb-reader";

const line = (texts) => process.stdout.write(texts.join("\x1F") + "\x1E");
const file = new MDBReader(readFileSync(process.argv[2]));
for (const name of file.getTableNames()) {
    const table = file.getTable(name);
    const columns = table.getColumns();
    line([name, table.rowCount]);
    line(columns.map((column) => `${column.name} ${column.type} ${column.size / 2}`));
    for (const row of table.getData()) line(columns.map((column) => row[column.name]));
}
