"""Compares `zrmedia plist` with Python's own property-list reader, an independent judge.

    compare_with_plistlib.py ZRMEDIA EXPECTED.json FOLDER...

Every file below the folders that plistlib reads must give the same values. What plistlib refuses is left alone, since
it does not know the text form. It also reads some damaged files; those that EXPECTED.json calls invalid must be refused.
"""

import base64
import datetime
import json
import math
import os
import plistlib
import subprocess
import sys


def expected(value):
    """The value as zrmedia writes it, read back from JSON."""
    if isinstance(value, bool) or isinstance(value, str):
        return value
    if isinstance(value, dict):
        return {key: expected(entry) for key, entry in value.items()}
    if isinstance(value, list):
        return [expected(element) for element in value]
    if isinstance(value, (bytes, bytearray)):
        return base64.b64encode(value).decode()
    if isinstance(value, plistlib.UID):
        return {"CF$UID": value.data}
    if isinstance(value, datetime.datetime):
        rounded = value + datetime.timedelta(microseconds=500)
        text = rounded.strftime("%Y-%m-%dT%H:%M:%S").rjust(19, "0")
        return text + (f".{rounded.microsecond // 1000:03}" if rounded.microsecond >= 1000 else "") + "Z"
    if isinstance(value, float):
        if math.isnan(value):
            return "NaN"
        if math.isinf(value):
            return "Infinity" if value > 0 else "-Infinity"
    return value


def same(a, b):
    if type(a) is not type(b):
        return False
    if isinstance(a, dict):
        return a.keys() == b.keys() and all(same(a[key], b[key]) for key in a)
    if isinstance(a, list):
        return len(a) == len(b) and all(map(same, a, b))
    return a == b


def judged(path):
    """What plistlib makes of the file, or None."""
    try:
        with open(path, "rb") as file:
            return plistlib.load(file)
    except Exception:
        return None


def main():
    program, expectations, *folders = sys.argv[1:]
    root = os.path.dirname(expectations)
    with open(expectations, encoding="utf-8") as file:
        invalid = {os.path.join(root, name) for name, entry in json.load(file).items()
                   if entry["expected"].lower().startswith("invalid")}
    compared = 0
    failures = 0
    for folder in folders:
        for parent, _, names in os.walk(folder):
            for name in sorted(names):
                path = os.path.join(parent, name)
                value = judged(path)
                if value is None:
                    continue
                compared += 1
                run = subprocess.run([program, "plist", path], capture_output=True)
                try:
                    if path in invalid:
                        matches = run.returncode == 1 and run.stderr.startswith(f"zrmedia: {path}: byte ".encode())
                    else:
                        matches = run.returncode == 0 and same(json.loads(run.stdout), expected(value))
                except ValueError:
                    matches = False
                if not matches:
                    failures += 1
                    print(f"{path}: plistlib reads {str(value)[:300]!r}\n  zrmedia {run.returncode}: "
                          f"{run.stdout[:300]!r} {run.stderr[:300]!r}")
    print(f"{compared} files compared, {failures} differ")
    sys.exit(0 if compared and not failures else 1)


if __name__ == "__main__":
    main()
