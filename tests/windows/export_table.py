#!/usr/bin/env python3
"""Checks a plug-in module's export table as objdump shows it: its name and its functions.

usage: export_table.py --objdump PROGRAM MODULE
"""

import argparse
import re
import subprocess
import sys

# Its name, and the functions by name.
EXPECTED = ("hdoexport.dle", ["LibClassDesc", "LibDescription", "LibNumberClasses", "LibVersion"])


def read(objdump, module):
    text = subprocess.run([objdump, "-p", module], check=True, capture_output=True,
                          text=True).stdout
    name = re.search(r"^Name\s+[0-9a-f]+ (\S+)$", text, re.MULTILINE)
    table = text.partition("[Ordinal/Name Pointer] Table")[2]
    functions = re.findall(r"^\s*\[\s*\d+\]\s+(\S+)$", table, re.MULTILINE)
    return name.group(1) if name else None, sorted(functions)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--objdump", required=True)
    parser.add_argument("module")
    arguments = parser.parse_args()
    found = read(arguments.objdump, arguments.module)
    print(f"found {found}")
    if found != EXPECTED:
        print(f"expected {EXPECTED}")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
