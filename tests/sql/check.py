#!/usr/bin/env python3
"""Exports databases as SQL, loads them unchanged into SQLite and PostgreSQL by their own shells, and
compares everything there with what was put in. Usage: tests/sql/check.py HOST"""
import glob, json, os, pwd, random, shutil, sqlite3, subprocess, sys, tempfile

PIECES = [b'a', b'B', b'7', b'"', b'\\', b"'", b"''", b'\n', b'\r\n', b'\r', b'~\r\n', b'\n.quit\n', b' ',
          b'\n\\q\n', b'--', b'/*', b';', b'\0', b'\xFF', b'\xC3', 'é'.encode(), '日本'.encode(),
          '😀'.encode(), b'\xED\xA0\xBD', b'\t', b'\x1A', b'\x01', b'$1', b':x', b"E'", b'\xE2\x80\xAE']


def table(name, key, fields, *lines):
    """The lines of a table in a dump."""
    head = [f'table "{name}"'] + ([f'key {key}'] if key else [])
    return '\n'.join([*head, *(f'field {i} "{each}"' for i, each in enumerate(fields)), *lines, ''])


# Tables, and what must become of their keys and links.
LONG_LABEL = 'é' * 40
LINKS = (r"""tavolin-dump 1
owner "ann"
user "ann" read write delete
""" + table('Teams', '0', ['ID', 'Lead', 'After the lead'], 'link 1 "People"', 'record 1 "red" "2" "x"')
    + table('People', '0', ['ID', 'Boss', 'Team'], 'link 1 "People"', 'link 2 "Teams"',
            'record 1 "1" "2" "red"', 'record 2 "2" "" ""')
    + table('Orders', '0 1', ['ID', 'By', 'City', 'Order'], 'link 1 "People"', 'link 2 "Cities"',
            'link 3 "Orders"', 'link 4 "Nowhere" missing', 'record 1 "1" "2" "rome"')
    + table('Halves', '0 1', ['ID', 'By'], 'link 1 "People"', 'record 1 "1"')
    + table('Cities', '0', ['Name'], 'record 1 "Rome"')
    + table('Left', '0', ['ID'], 'link 0 "Right"', 'record 1 "1"')
    + table('Right', '0', ['ID'], 'link 0 "Left"', 'record 1 "1"')
    + table('Twice', '0', ['ID'], 'record 1 "1" "without a name"', 'record 1 "1"', 'key "another"')
    + table('Long', '0', ['ID'], f'record 1 "{"k" * 3000}"')
    + table('Empty', '0', ['ID'], 'record 1')
    + table('sqlite_x', '', ['xmin', 'Name', 'NAME'], r'field 3 "" label "q\"' + r"""'\n\u0000" """,
            f'field 4 "{LONG_LABEL}"', f'field 5 "{LONG_LABEL}!"', 'field 6 "tavolin_position"',
            'record 1 "0" "1" "2" "3" "4" "5" "6"')
    + table('pg_class', '', ['rowid'], 'record 1 "x"') + table('pg_class_pkey', '', [])
    + table('tavolin_users', '', []) + 'end\n')
KEYS = {'Teams': ['ID'], 'People': ['ID'], 'Orders': ['ID', 'By'],
        'Halves': ['ID', 'By'], 'Cities': ['Name'], 'Left': ['ID'], 'Right': ['ID']}
FOREIGN = {('Teams', 'Lead', 'People'), ('People', 'Boss', 'People'), ('People', 'Team', 'Teams'),
           ('Orders', 'By', 'People'), ('Right', 'ID', 'Left')}
COLUMNS = ['field_xmin', 'Name', 'NAME_2', 'q"\'_\uFFFD', 'é' * 31, 'é' * 30 + '_2',
           'field_tavolin_position']
VIOLATIONS = ['''INSERT INTO "Right" VALUES (9, 9, '9')''', '''INSERT INTO "Cities" VALUES (9, 9, 'Rome')''',
              '''UPDATE "Teams" SET "Lead" = '9' ''', '''DELETE FROM "People" WHERE "ID" = '2' ''']


def fail(what):
    sys.exit('tests/sql/check.py: ' + what)


def run(words, **options):
    done = subprocess.run(words, capture_output=True, **options)
    if done.returncode:
        fail(f'{words} ended with {done.returncode}: {done.stderr.decode()[:2000]}')
    return done.stdout


class Sqlite:
    def __init__(self, sql, folder):
        path = os.path.join(folder, 'x.db')
        if os.path.exists(path):
            os.remove(path)
        with open(sql, 'rb') as script:
            if run(['sqlite3', '-bail', '-cmd', 'PRAGMA foreign_keys=ON', path], stdin=script):
                fail('SQLite said something')
        self.db = sqlite3.connect(path)
        self.db.execute('PRAGMA foreign_keys=ON')

    def rows(self, query):
        return [list(row) for row in self.db.execute(query)]

    def refuses(self, statement):
        try:
            with self.db:
                self.db.execute(statement)
        except sqlite3.IntegrityError:
            return True
        return False

    def keys(self, tables):
        found = {}
        for table in tables:
            key = sorted((row[5], row[1]) for row in self.rows(f'PRAGMA table_info("{table}")') if row[5])
            found[table] = [name for _, name in key]
        return found

    def foreign(self, tables):
        return {(table, row[3], row[2]) for table in tables
                for row in self.rows(f'PRAGMA foreign_key_list("{table}")')}


class Postgres:
    """A server of our own in a folder, that nobody else can reach and that goes with us."""

    def __init__(self):
        found = glob.glob('/usr/lib/postgresql/*/bin/initdb') + [shutil.which('initdb') or '']
        if not found[0]:
            fail('PostgreSQL is missing: the Debian package postgresql')
        self.bin = os.path.dirname(found[0])
        self.folder = tempfile.mkdtemp(prefix='tavolin-sql-')
        self.as_other = []
        if os.geteuid() == 0:  # which it refuses to run as
            other = pwd.getpwnam('nobody')
            os.chown(self.folder, other.pw_uid, other.pw_gid)
            self.as_other = ['setpriv', f'--reuid={other.pw_uid}', f'--regid={other.pw_gid}',
                             '--clear-groups']
        try:
            self.server('initdb', '-A', 'trust', '-U', 'ann', '-E', 'UTF8', '--locale=C', '--no-sync')
            self.server('pg_ctl', '-w', '-l', self.folder + '/log', '-o',
                        f"-F -c listen_addresses='' -k {self.folder}", 'start')
        except BaseException:
            self.stop()
            raise

    def server(self, program, *words):
        run([*self.as_other, f'{self.bin}/{program}', '-D', self.folder + '/data', *words],
            cwd=self.folder, stdin=subprocess.DEVNULL)

    def stop(self):
        subprocess.run([*self.as_other, f'{self.bin}/pg_ctl', '-D', self.folder + '/data', '-m',
                        'immediate', 'stop'], cwd='/', capture_output=True)
        shutil.rmtree(self.folder)

    def psql(self, *words, database='x'):
        return run(['psql', '-X', '-q', '-h', self.folder, '-U', 'ann', '-v', 'ON_ERROR_STOP=1',
                    '-At', *words, database], env={**os.environ, 'PGCLIENTENCODING': 'UTF8'})

    def load(self, sql):
        self.psql('-c', 'DROP DATABASE IF EXISTS x', '-c', 'CREATE DATABASE x', database='postgres')
        if self.psql('-f', sql):
            fail('PostgreSQL said something')
        return self

    def rows(self, query):
        lines = self.psql('-c', f'SELECT row_to_json(t) FROM ({query}) AS t').split(b'\n')
        return [list(json.loads(line).values()) for line in lines if line]

    def refuses(self, statement):
        try:
            self.psql('-c', statement)
        except SystemExit as refusal:
            return 'violates' in str(refusal)
        return False


def quoted(text):
    plain = lambda c: 0x20 <= c < 0x7F and c not in b'"\\'
    return '"' + ''.join(chr(c) if plain(c) else f'\\x{c:02X}' for c in text) + '"'


class Nasty:
    """A database with anything in it, as a dump and as what must be found in SQL."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.tables = {}
        self.attachments, self.users, self.notes = [], [[b'ann', b'', b'', 1, 1, 1, 0]], []
        lines = ['tavolin-dump 1', 'owner "ann"', 'user "ann" read write delete']
        for i in range(3):
            name, full, note = self.text() + b'%d' % i, self.text(), self.text()
            lines += [f'user {quoted(name)} write', f'full-name {quoted(full)}',
                      f'note {i} "1/{i}" {quoted(note)}']
            self.users.append([name, full, b'', 0, 1, 0, 0])
            self.notes.append([i + 2, i, b'1/%d' % i, note])
        for i in range(4):
            self.add_table(lines, self.text() + b'%d' % i)
        self.dump = '\n'.join(lines) + '\nend\n'

    def text(self):
        return b''.join(self.random.choice(PIECES) for _ in range(self.random.randrange(6)))

    def add_table(self, lines, name):
        lines += [f'table {quoted(name)}', f'key {self.random.randrange(10)}']
        lines += [f'field {i} {quoted(self.text())}' for i in range(self.random.randrange(11))]
        records = self.tables[name] = []
        for position in range(1, self.random.choice([1, 9, 600])):
            fields = [self.text() for _ in range(10)]
            lines += ['record -3 ' + ' '.join(map(quoted, fields)), f'key "{position}"']
            records.append([-3, b'%d' % position, fields])
            if self.random.randrange(9) == 0:
                path, key = self.text(), self.text()
                lines.append(f'attachment movie 5 {quoted(path)} {quoted(key)}')
                self.attachments.append([name, position, b'movie', 5, path, key])


def exact_texts(sql):
    exact = {}
    for table, number, column, text in sql.rows('SELECT * FROM "tavolin_exact_texts"'):
        exact[table, number, column] = bytes.fromhex(text)
    return exact


def as_given(exact, table, columns, rows):
    """Rows of a number and values, with the texts as they were given."""
    for number, *values in rows:
        for column, value in zip(columns, values):
            if isinstance(value, str):
                given = exact.pop((table, number, column), None)
                value = value.encode() if given is None else given
            yield value


def check_nasty(sql, source, name):
    exact = exact_texts(sql)

    def table(of, columns, order='number'):
        listed = ', '.join('"' + column.replace('"', '""') + '"' for column in [order, *columns])
        quoted_table = of.replace('"', '""')
        rows = sql.rows(f'SELECT {listed} FROM "{quoted_table}" ORDER BY "{order}"')
        flat = list(as_given(exact, of, columns, rows))
        return [flat[i:i + len(columns)] for i in range(0, len(flat), len(columns))]

    def same(what, expected, found):
        if expected != found:
            differing = [(e, f) for e, f in zip(expected, found) if e != f][:2]
            fail(f'{name}: {what} differ: {len(expected)} and {len(found)}, {differing}')

    tables = dict(table('tavolin_tables', ['name', 'table_name']))
    same('tables', list(source.tables), list(tables))
    fields = {}
    for sql_table, field, column in table('tavolin_fields', ['table_name', 'field', 'column_name']):
        fields.setdefault(sql_table, {})[field] = column.decode()
    for given, records in source.tables.items():
        columns = fields.get(tables[given], {})
        head = ['tavolin_number'] + (['tavolin_key'] if records else [])
        found = [[*row[:2], [row[2 + list(columns).index(i)] if i in columns else b'' for i in range(10)]]
                 for row in table(tables[given].decode(), [*head, *columns.values()], 'tavolin_position')]
        same('records', records, found)
    same('users', source.users, table('tavolin_users', [
        'name', 'full_name', 'description', 'can_read', 'can_write', 'can_delete', 'disabled']))
    same('notes', source.notes, table('tavolin_notes', ['user_number', 'note_number', 'date', 'text']))
    same('attachments', [[tables[name], *rest] for name, *rest in source.attachments],
         table('tavolin_attachments', ['table_name', 'record_position', 'kind', 'attachment_number',
                                       'path', 'key']))
    if any(table != 'tavolin_fields' for table, *_ in exact):
        fail(f'{name}: {len(exact)} exact texts that nothing has')


def check_links(sql, name):
    tables = [row[0] for row in sql.rows('SELECT table_name FROM tavolin_tables ORDER BY number')]
    keys = {table: KEYS.get(table, ['tavolin_position']) for table in tables}
    if isinstance(sql, Sqlite):  # the other one shows by its refusals that it has them
        if sql.keys(tables) != keys:
            fail(f'{name}: the keys are {sql.keys(tables)}')
        foreign = sql.foreign(tables)
        if foreign != FOREIGN:
            fail(f'{name}: foreign keys differ: {foreign ^ FOREIGN}')
    if tables[-4:] != ['table_sqlite_x', 'table_pg_class', 'table_pg_class_pkey', 'table_tavolin_users']:
        fail(f'{name}: tables are {tables}')
    columns = [row[0] for row in sql.rows('SELECT column_name FROM tavolin_fields WHERE table_name = '
                                          "'table_sqlite_x' ORDER BY field")]
    if columns != COLUMNS:
        fail(f'{name}: columns are {columns}')
    if sql.rows('SELECT "ID", "Lead", "After the lead" FROM "Teams"') != [['red', '2', 'x']]:
        fail(f'{name}: a column that was added later')
    with open('é0.log', encoding='cp1252') as log:  # beside the database, whose name is in it
        if [line for line, in sql.rows('SELECT line FROM tavolin_log ORDER BY number')] != [
                line.rstrip('\n') for line in log]:
            fail(f'{name}: the log')
    for statement in VIOLATIONS:
        if not sql.refuses(statement):
            fail(f'{name} does not refuse {statement}')


def main():
    if len(sys.argv) != 2:
        fail('usage: tests/sql/check.py HOST')
    host = os.path.realpath(sys.argv[1])
    for program in ['sqlite3', 'psql']:
        if not shutil.which(program):
            fail(f'{program} is missing: the Debian packages sqlite3 and postgresql')
    postgres = Postgres()
    folder = tempfile.mkdtemp()
    try:
        os.chdir(folder)
        os.environ.update(TAVOLIN_FOLDER=folder, TAVOLIN_USER='ann', TAVOLIN_PASSWORD='secret')
        nasty = [Nasty(seed) for seed in range(2)]
        for i, dump in enumerate([LINKS] + [each.dump for each in nasty]):
            run([host, f'é{i}', 'restore', '-'], input=dump.encode())
            run([host, f'é{i}', 'export', 'sql'])
            sql = os.path.join(folder, f'é{i}.sql')
            for name, loaded in [('SQLite', Sqlite(sql, folder)), ('PostgreSQL', postgres.load(sql))]:
                if i == 0:
                    check_links(loaded, name)
                else:
                    check_nasty(loaded, nasty[i - 1], f'{name}, seed {i - 1}')
    finally:
        os.chdir('/')
        shutil.rmtree(folder)
        postgres.stop()


main()
