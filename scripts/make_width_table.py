#!/usr/bin/env python3
"""Writes cli/width_table.h: the characters that take no column of a terminal, or two.

    scripts/make_width_table.py > cli/width_table.h
"""
import sys
import unicodedata

HANGUL_JOINING = [(0x1160, 0x11FF), (0xD7B0, 0xD7C6), (0xD7CB, 0xD7FB)]
PICTOGRAPHS = (0x1F300, 0x1FAFF)  # those to come are wide as well


def width(code):
    char = chr(code)
    category = unicodedata.category(char)
    if 0x1F3FB <= code <= 0x1F3FF:
        return 0  # they colour the character before them
    if category in ('Mn', 'Me') or (category == 'Cf' and code != 0xAD):
        return 0
    if any(first <= code <= last for first, last in HANGUL_JOINING):
        return 0
    if category == 'Cn':
        return 2 if PICTOGRAPHS[0] <= code <= PICTOGRAPHS[1] or 0x20000 <= code < 0x3FFFE else None
    return 2 if unicodedata.east_asian_width(char) in 'WF' else 1


def ranges(wanted):
    """What is not assigned (None) belongs to either neighbour, which makes fewer ranges."""
    found = []
    open_range = False
    for code in range(0x300, 0x110000):
        if 0xD800 <= code <= 0xDFFF:
            open_range = False
            continue
        of = width(code)
        if of == wanted:
            if open_range:
                found[-1][1] = code
            else:
                found.append([code, code])
                open_range = True
        elif of is not None:
            open_range = False
    return found


def table(name, wanted):
    print(f'inline constexpr WidthRange {name}[] = {{')
    line = '   '
    for first, last in ranges(wanted):
        entry = f' {{0x{first:04X}, 0x{last:04X}}},'
        if len(line) + len(entry) > 100:
            print(line)
            line = '   '
        line += entry
    print(line + '\n};')


print(f'''// Made by scripts/make_width_table.py from Unicode {unicodedata.unidata_version}; do not edit.
#pragma once

namespace tavolin::cli {{

struct WidthRange {{
    char32_t first;
    char32_t last;
}};

// clang-format off
// Those that stand on the character before them, or are not seen at all.
''', end='')
table('kZeroWidth', 0)
print('\n// Those of East Asia, and emoji.')
table('kWide', 2)
print('// clang-format on\n\n}  // namespace tavolin::cli')
sys.stdout.flush()
