"""Raw figures of the benchmark as Markdown.

Every figure is the median over the rounds. A ratio is the median of the ratios within each round,
where both figures were taken one shortly after the other.
"""
import csv
import statistics

# Operation, what it is called in the table, what the limit of the machine does for it. The figure
# of a peer, and of the machine, is that of the same operation unless SAME names another one.
ROWS = [
    ("bulk-add", "add all: `CVLDBEngine::AddRecord`", "copy of the bytes and a scattered write each"),
    ("bulk-add-table", "add all: `CVLTable::Add`", "the same"),
    ("get-key", "get by key, random: `CVLDBEngine::GetRecord`", "2 dependent cold lines"),
    ("get-key-table", "get by key, random: `CVLTable::GetRecord`", "the same"),
    ("get-key-pages", "get by key, 16 at a time: `CVLTable::GetRecords`", "the same"),
    ("get-position", "get by position: `CVLDBEngine::GetRecord`", "1 cold line"),
    ("get-position-table", "get by position: `CVLTable::GetRecord`", "the same"),
    ("get-position-pages", "get by position, 16 at a time: `CVLTable::GetRecords`", "the same"),
    ("get-position-edited", "get by position after insertions: engine", "1 cold line"),
    ("get-position-edited-table", "get by position after insertions: table", "the same"),
    ("get-position-edited-pages", "get by position after insertions, 16 at a time", "the same"),
    ("get-position-sorted", "get by position after a sort: engine", "1 cold line"),
    ("get-position-sorted-table", "get by position after a sort: table", "the same"),
    ("get-position-sorted-pages", "get by position after a sort, 16 at a time", "the same"),
    ("update", "update by key, random", "2 dependent cold lines"),
    ("insert-front", "insert at the front", "memmove of 1 KiB"),
    ("insert-middle", "insert in the middle", "memmove of 1 KiB"),
    ("delete-key", "delete by key, random: `CVLDBEngine::DeleteRecord`", "2 dependent cold lines"),
    ("delete-key-table", "delete by key, random: `CVLTable::Remove`", "the same"),
    ("delete-cascade-first", "the first delete with a cascade", ""),
    ("delete-cascade", "delete with a cascade over a foreign key", "4 dependent cold lines"),
    ("link", "link a field of the full table", ""),
    ("find-one-rare", "find in one field, 1 in 2,000", "one read of the bytes"),
    ("find-one-frequent", "find in one field, 40 %", "one read of the bytes"),
    ("find-one-other", "find in one field, beyond ASCII", "one read of the bytes"),
    ("find-all-rare", "find in all fields, 1 in 2,000", "memchr over the bytes"),
    ("find-all-frequent", "find in all fields, 40 %", "memchr over the bytes"),
    ("find-all-other", "find in all fields, beyond ASCII", "memchr over the bytes"),
    ("find-all-rare-sorted", "find in all fields, after a sort", "memchr over the bytes"),
    ("sort-day", "sort by a field of 12,000 values", "std::sort of prefix and handle"),
    ("sort-state", "sort by a field of 4 values", "std::sort of prefix and handle"),
    ("sort-code", "sort by a field of unique values", "std::sort of prefix and handle"),
    ("sort-street", "sort by a field of varied length", "std::sort of prefix and handle"),
    ("sort-name", "sort by field 1, its own rule", "std::sort of prefix and handle"),
    ("save", "save", "write and fsync of the fields' bytes"),
    ("load", "load, to the first answer by key", "read of the fields' bytes"),
    ("begin", "transaction begin", "memcpy of the fields' bytes"),
    ("abort", "transaction abort, to the first answer", "memcpy of the fields' bytes"),
    ("memory", "memory per record", "the fields' bytes"),
    ("memory-engine", "memory per record, `LogReport` included", "the fields' bytes"),
    ("export-text", "export as text", "write of the same files"),
    ("export-html", "export as HTML", "write of the same files"),
    ("export-mdb", "export as an Access database", "write of the same file"),
]
PEERS = [("naive", "object tree"), ("sqlite", "SQLite rowid"), ("sqlite_pk", "SQLite PK"),
         ("lmdb", "LMDB"), ("leveldb", "LevelDB")]
SAME = {"bulk-add-table": "bulk-add", "memory-engine": "memory", "delete-key-table": "delete-key"}
for one in ("get-key", "get-position", "get-position-edited", "get-position-sorted"):
    SAME |= {f"{one}-table": one, f"{one}-pages": one}

BIG = 1000000
SMALL = 100000
# What the library has to reach at BIG records: text, size, operation, program, its operation,
# least ratio of the other's figure to Tavolin's. No program: the most that the figure may be.
TARGETS = [
    ("add all through `CVLTable::Add`: 3 × SQLite rowid", BIG, "bulk-add-table", ["sqlite"],
     "bulk-add", 3),
    ("add all through `CVLDBEngine::AddRecord`: 3 × SQLite rowid", BIG, "bulk-add", ["sqlite"],
     "bulk-add", 3),
    ("get by key: 4 × SQLite's faster table", BIG, "get-key", ["sqlite", "sqlite_pk"], "get-key", 4),
    ("get by key: within 2 × of two dependent cold lines", BIG, "get-key", ["machine"], "get-key",
     0.5),
    ("get by position: 20 × SQLite by rowid", BIG, "get-position", ["sqlite"], "get-position", 20),
    ("get by position, 16 at a time: 20 × SQLite by rowid", BIG, "get-position-pages", ["sqlite"],
     "get-position", 20),
    ("get by position after edits: no worse than 10 × the flat vector", BIG, "get-position-edited",
     ["naive"], "get-position-edited", 0.1),
    ("insert at the front: under 1 µs at 100k", SMALL, "insert-front", [], "", 1000),
    ("insert in the middle: under 1 µs at 100k", SMALL, "insert-middle", [], "", 1000),
    ("delete by key: 4 × SQLite's faster table", BIG, "delete-key", ["sqlite", "sqlite_pk"],
     "delete-key", 4),
    ("delete by key through `CVLTable::Remove`: 4 × SQLite's faster table", BIG,
     "delete-key-table", ["sqlite", "sqlite_pk"], "delete-key", 4),
    ("delete with a cascade: no more than 4 deletions by key", BIG, "delete-cascade", ["tavolin"],
     "delete-key", 0.25),
    ("find in one field: 15 × SQLite LIKE", BIG, "find-one-rare", ["sqlite"], "find-one-rare", 15),
    ("find in all fields: 40 × SQLite LIKE", BIG, "find-all-rare", ["sqlite"], "find-all-rare", 40),
    ("sort, many values: 10 × SQLite ORDER BY", BIG, "sort-day", ["sqlite"], "sort-day", 10),
    ("sort, few values: 10 × SQLite ORDER BY", BIG, "sort-state", ["sqlite"], "sort-state", 10),
    ("save: level with SQLite", BIG, "save", ["sqlite"], "save", 1),
    ("save: within 2 × of a raw write and fsync of the same bytes", BIG, "save", ["tavolin"],
     "save-plain", 0.5),
    ("load to the first answer: level with SQLite", BIG, "load", ["sqlite"], "load", 1),
    ("transaction begin: 2 × SQLite's serialise", BIG, "begin", ["sqlite"], "begin", 2),
    ("transaction abort: level with SQLite's restore", BIG, "abort", ["sqlite"], "abort", 1),
    ("memory per record: below SQLite rowid", BIG, "memory", ["sqlite"], "memory", 1),
]

BEGIN = "<!-- scripts/bench --page writes what follows -->"
END = "<!-- as far as here -->"


class Figures:
    def __init__(self, path):
        self.values = {}
        self.units = {}
        with open(path, encoding="utf-8") as lines:
            rows = list(lines)
        self.head = [row[2:].strip() for row in rows if row.startswith("# ")]
        for row in csv.DictReader((row for row in rows if not row.startswith("#")),
                                  delimiter="\t"):
            key = (int(row["size"]), row["program"], row["operation"])
            self.values.setdefault(key, {})[int(row["round"])] = float(row["value"])
            self.units[row["operation"]] = row["unit"]

    def sizes(self):
        return sorted({key[0] for key in self.values})

    def rounds(self, size):
        return max(len(values) for key, values in self.values.items() if key[0] == size)

    def median(self, size, program, operation):
        values = self.values.get((size, program, operation))
        return statistics.median(values.values()) if values else None

    def spread(self, size, program, operation):
        values = self.values[(size, program, operation)].values()
        return (max(values) - min(values)) / statistics.median(values)

    def ratio(self, size, over, under):
        """Of two pairs of a program and an operation."""
        a = self.values.get((size, *over))
        b = self.values.get((size, *under))
        if not a or not b or min(b.values()) <= 0:
            return None
        both = [a[turn] / b[turn] for turn in a if turn in b]
        return statistics.median(both) if both else None


def number(value):
    if value is None:
        return "–"
    if value >= 1e5:
        return f"{value:.2g}"
    return f"{value:.0f}" if value >= 100 else f"{value:.3g}"


def times(value):
    return "–" if value is None else number(value) + "×"


def row_of(figures, size, operation, label, limit):
    own = figures.median(size, "tavolin", operation)
    if own is None:
        return None
    same = SAME.get(operation, operation)
    if operation.startswith("export"):
        bound = ("tavolin", operation + "-plain")
        over = figures.ratio(size, bound, ("tavolin", operation))
    else:
        bound = ("machine", same)
        over = figures.ratio(size, ("tavolin", operation), bound)
    most = figures.median(size, *bound)
    peers = [times(figures.ratio(size, (peer, same), ("tavolin", operation))) for peer, _ in PEERS]
    shown = f"{number(most)} ({limit})" if most is not None else "–"
    return [label, figures.units[operation], number(own), shown, times(over), *peers]


def line(cells):
    return "| " + " | ".join(cells) + " |"


def size_table(figures, size):
    head = ["operation", "unit", "Tavolin", "limit of the machine", "Tavolin / limit",
            *(name for _, name in PEERS)]
    rows = [row for row in (row_of(figures, size, *entry) for entry in ROWS) if row]
    return [f"### {size:,} records, {figures.rounds(size)} rounds", "", line(head),
            line(["---"] * len(head)), *(line(row) for row in rows), ""]


def reached(figures, size, operation, programs, theirs, least):
    """The figure that a target is about and whether it is reached, or nothing."""
    if not programs:
        value = figures.median(size, "tavolin", operation)
        return None if value is None else (f"{number(value)} ns", value < least)
    ratios = [figures.ratio(size, (program, theirs), ("tavolin", operation))
              for program in programs]
    if None in ratios:
        return None
    value = min(ratios)
    shown = f"{times(value)}" if least >= 1 else f"{times(1 / value)} of it"
    return shown, value >= least


def target_table(figures):
    rows = []
    for text, size, *what in TARGETS:
        result = reached(figures, size, *what)
        if result:
            rows.append(line([text, result[0], "yes" if result[1] else "**no**"]))
    if not rows:
        return []
    return [f"### What is to be reached at {BIG:,} records", "", line(["target", "figure", "reached"]),
            line(["---"] * 3), *rows, ""]


def tables(raw):
    figures = Figures(raw)
    text = [*figures.head, ""]
    text += target_table(figures)
    for size in reversed(figures.sizes()):
        text += size_table(figures, size)
    return "\n".join(text)


def replace(page, table):
    """Puts the tables between the marks of a page."""
    text = page.read_text(encoding="utf-8")
    before, rest = text.split(BEGIN)
    after = rest.split(END)[1]
    page.write_text(f"{before}{BEGIN}\n\n{table}\n{END}{after}", encoding="utf-8")
