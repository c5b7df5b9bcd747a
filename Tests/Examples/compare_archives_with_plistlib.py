"""Compares `zrmedia archive` with what Python's own property-list reader makes of an archive, its references followed.

    compare_archives_with_plistlib.py ZRMEDIA FILE...

For archives without circles.
"""

import base64
import datetime
import json
import plistlib
import subprocess
import sys

from compare_with_plistlib import same

EPOCH = datetime.datetime(2001, 1, 1)
ARRAYS = {"NSArray", "NSMutableArray", "NSSet", "NSMutableSet", "NSOrderedSet", "NSMutableOrderedSet"}


def dated(seconds):
    moment = EPOCH + datetime.timedelta(milliseconds=round(seconds * 1000))
    text = moment.strftime("%Y-%m-%dT%H:%M:%S")
    return text + (f".{moment.microsecond // 1000:03}" if moment.microsecond >= 1000 else "") + "Z"


class Archive:
    def __init__(self, path):
        with open(path, "rb") as file:
            self.archive = plistlib.load(file)
        self.objects = self.archive["$objects"]
        assert self.archive["$archiver"] == "NSKeyedArchiver" and self.archive["$version"] == 100000
        assert self.objects[0] == "$null"

    def top(self):
        return {key: self.value(value) for key, value in self.archive["$top"].items()}

    def value(self, value):
        number = self.number(value)
        if number is not None:
            return None if number == 0 else self.object(self.objects[number])
        if isinstance(value, bytes):
            return base64.b64encode(value).decode()
        if isinstance(value, list):
            return [self.value(element) for element in value]
        return value

    @staticmethod
    def number(value):
        if isinstance(value, plistlib.UID):
            return value.data
        if isinstance(value, dict) and list(value) == ["CF$UID"]:
            return value["CF$UID"]
        return None

    def object(self, record):
        if not isinstance(record, dict):
            return self.value(record)
        own_class = self.objects[self.number(record["$class"])]
        name = own_class["$classname"]
        assert own_class["$classes"][0] == name and own_class["$classes"][-1] == "NSObject"
        if name in ARRAYS:
            return self.array(record)
        if name in {"NSDictionary", "NSMutableDictionary"}:
            keys, values = self.value(record["NS.keys"]), self.value(record["NS.objects"])
            if all(isinstance(key, str) for key in keys):
                return dict(zip(keys, values))
            return {"$class": "NSDictionary", "NS.keys": keys, "NS.objects": values}
        if name == "NSNull":
            return None
        if name == "NSDate":
            return dated(record["NS.time"])
        if name in {"NSData", "NSMutableData"}:
            return self.value(record["NS.data"])
        entries = {key: self.value(value) for key, value in record.items() if key != "$class"}
        return {"$class": name, **entries}

    def array(self, record):
        if "NS.objects" in record:
            return self.value(record["NS.objects"])
        count = sum(key.startswith("NS.object.") for key in record)
        return [self.value(record[f"NS.object.{number}"]) for number in range(count)]


def main():
    program, *files = sys.argv[1:]
    failures = 0
    for path in files:
        run = subprocess.run([program, "archive", path], capture_output=True)
        expected = Archive(path).top()
        if run.returncode or not same(json.loads(run.stdout), expected):
            failures += 1
            print(f"{path}: plistlib reads {str(expected)[:500]!r}\n  zrmedia {run.returncode}: "
                  f"{run.stdout[:500]!r} {run.stderr[:300]!r}")
    print(f"{len(files)} files compared, {failures} differ")
    sys.exit(0 if files and not failures else 1)


main()
