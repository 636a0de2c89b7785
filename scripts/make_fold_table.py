#!/usr/bin/env python3
"""Writes tavolin/base/fold_table.h: the simple lower case of the Basic Multilingual Plane.

Usage: scripts/make_fold_table.py > tavolin/base/fold_table.h

The plane is cut into blocks of 64 characters, what one UTF-8 continuation byte tells apart. A block
holds, for each character, the number to add (modulo 2^16) for its lower case; equal blocks are kept
once. The values go into stored hashes: after a run under a newer Unicode version, files written
before may hold hashes that no longer match.
"""

import sys
import unicodedata

BLOCK = 64
# str.lower() gives the full lower case, which differs from the simple one in this place alone.
FULL_ONLY = {0x0130: 0x0069}


def simple_lower(code):
    if 0xD800 <= code <= 0xDFFF:
        return code
    if code in FULL_ONLY:
        return FULL_ONLY[code]
    lowered = chr(code).lower()
    if len(lowered) != 1 or ord(lowered) > 0xFFFF:
        sys.exit(f"U+{code:04X} has no simple lower case in the plane")
    return ord(lowered)


def print_array(kind, name, values, width):
    print(f"inline constexpr {kind} {name}[{len(values)}] = {{")
    line = "   "
    for value in values:
        item = f" {value:#0{width}x},"
        if len(line) + len(item) > 100:
            print(line)
            line = "   "
        line += item
    print(f"{line}\n}};\n")


def main():
    deltas = [(simple_lower(code) - code) & 0xFFFF for code in range(0x10000)]
    blocks, index = [], []
    for start in range(0, len(deltas), BLOCK):
        block = deltas[start : start + BLOCK]
        if block not in blocks:
            blocks.append(block)
        index.append(blocks.index(block))
    if len(blocks) > 256:
        sys.exit("too many different blocks for an index of bytes")
    print("// Made by scripts/make_fold_table.py; do not edit.")
    print(f"// Simple lower case by Unicode {unicodedata.unidata_version}.")
    print("#pragma once\n\n#include <cstdint>\n\nnamespace tavolin {\n\n// clang-format off")
    print_array("std::uint8_t", "kFoldBlock", index, 4)
    print_array("std::uint16_t", "kFoldDelta", [d for block in blocks for d in block], 6)
    print("// clang-format on\n\n}  // namespace tavolin")


if __name__ == "__main__":
    main()
