#!/usr/bin/env python3
"""Checks what a program did to a data file, from its system calls alone.

    strace -f -ttt -yy -s 4 -e trace=openat,close,fcntl,pread64,pwrite64,fdatasync,ftruncate,unlink -o TRACE PROGRAM ...
    check_trace.py DATAFILE TRACE...

Knows nothing of the engine: only the layout of Access' lock file and commit table. Each trace is one process with all
its calls in order. A line is printed for every breach, and a summary."""

import re
import struct
import sys

EVERY_USER = (0x10000000, 0x100)
COMMIT_TABLE = (0xE00, 0x1000)
PAGE = 4096
LONGEST_HOLD = 60.0

CALL = re.compile(r"^(?:\d+ +)?(\d+\.\d+) (\w+)\((.*)\) += (-?\d+|\?)")
DESCRIPTOR = re.compile(r"^(\d+)<([^>]*)>")
LOCK = re.compile(r"l_type=(\w+), l_whence=SEEK_SET, l_start=(\d+), l_len=(\d+)")


class Checker:
    def __init__(self, database):
        self.database = database
        self.lock_file = re.sub(r"\.[^.]*$", ".ldb", database).lower()
        self.journal = database + "-diario"
        self.breaches = []
        self.counts = {"turns": 0, "commits": 0, "pages": 0}
        self.reset()

    def reset(self):
        self.held = set()  # ranges in the lock file
        self.fence = None
        self.writable = set()
        self.turn_begin = 0.0
        self.state = "settled"  # settled, marked, marked+synced, written
        self.journal_synced = True
        self.counter = None

    def breach(self, where, text):
        self.breaches.append(f"{where}: {text}")

    def call(self, where, time, name, arguments, result):
        if result == "-1" and name not in ("fcntl",):
            return
        if name == "unlink":
            if self.lock_file in arguments.lower():
                self.breach(where, "the lock file is deleted")
            return
        if name == "openat":
            return
        found = DESCRIPTOR.match(arguments)
        if not found:
            return
        file = found.group(2).split("<")[0]
        rest = arguments[found.end():]
        if file == self.database:
            self.data(where, time, name, rest, result)
        elif file.lower() == self.lock_file:
            self.locks(where, time, name, rest, result)
        elif file == self.journal:
            if name == "pwrite64":
                self.journal_synced = False
            elif name == "fdatasync":
                self.journal_synced = True

    def locks(self, where, time, name, rest, result):
        if name == "fcntl" and "F_OFD_SETLK" in rest and result == "0":
            kind, start, length = LOCK.search(rest).groups()
            place = (int(start), int(length))
            if kind == "F_UNLCK":
                if place not in self.held:
                    self.breach(where, f"gives back {place[0]:x}+{place[1]:x}, which it does not hold")
                self.held.discard(place)
                if place == EVERY_USER:
                    if self.state != "settled":
                        self.breach(where, f"lets others in while the file is {self.state}")
                    if self.fence:
                        self.breach(where, "lets others in before the data file is free")
                    if time - self.turn_begin > LONGEST_HOLD:
                        self.breach(where, f"was alone for {time - self.turn_begin:.2f} s")
            else:
                self.held.add(place)
                if place == EVERY_USER:
                    self.turn_begin = time
                    self.counts["turns"] += 1
        elif name == "fcntl" and "F_SETLK" in rest and "OFD" not in rest:
            self.breach(where, "a lock of the process, which vanishes with any descriptor")
        elif name == "close":
            self.held.clear()

    def data(self, where, time, name, rest, result):
        alone = EVERY_USER in self.held
        if name == "fcntl" and "F_OFD_SETLK" in rest and result == "0":
            kind = LOCK.search(rest).group(1)
            if kind != "F_UNLCK" and not alone:
                self.breach(where, "a lock on the data file while others may be in")
            self.fence = None if kind == "F_UNLCK" else time
        elif name == "close":
            self.fence = None
        elif name == "pwrite64":
            bytes_, count, offset = re.match(r', (".*"(?:\.\.\.)?), (\d+), (\d+)$', rest).groups()
            self.write(where, bytes_, int(count), int(offset), alone)
        elif name == "ftruncate":
            if not alone or self.state == "settled":
                self.breach(where, f"truncated while {self.state}")
        elif name == "fdatasync":
            if self.state == "marked":
                self.state = "marked and synced"
            elif self.state == "writing":
                self.state = "written"

    def write(self, where, bytes_, count, offset, alone):
        if not alone or not self.fence:
            self.breach(where, f"writes at {offset:x} without being alone")
        if COMMIT_TABLE[0] <= offset < COMMIT_TABLE[1]:
            if count != 2 or offset != COMMIT_TABLE[0]:
                self.breach(where, f"writes {count} bytes of the commit table at {offset:x}")
                return
            raw = bytes_.strip('"').encode("latin-1").decode("unicode_escape").encode("latin-1")
            value = struct.unpack("<H", raw[:2])[0]
            if value == 0:
                if self.state != "settled":
                    self.breach(where, f"marked while {self.state}")
                if not self.journal_synced:
                    self.breach(where, "marked before the journal is on the medium")
                self.state = "marked"
            else:
                if self.state not in ("written", "marked and synced"):
                    self.breach(where, f"settled while {self.state}")
                if value < 0x100:
                    self.breach(where, f"counter {value:x}")
                if self.counter is not None and value <= self.counter and self.counter != 0xFFFF:
                    self.breach(where, f"counter {self.counter:x} becomes {value:x}")
                self.counter = value
                self.state = "settled"
                self.counts["commits"] += 1
            return
        if offset < COMMIT_TABLE[1] and offset + count > COMMIT_TABLE[0]:
            self.breach(where, "writes over the commit table")
        self.counts["pages"] += 1
        if self.state == "settled":
            self.breach(where, f"page {offset // PAGE} written while slot 0 is a counter")
        if self.state == "marked":
            self.breach(where, f"page {offset // PAGE} written before slot 0 is 0 on the medium")
        if self.state == "written":
            self.breach(where, f"page {offset // PAGE} written after the last sync of pages")
        self.state = "writing"


def main():
    checker = Checker(sys.argv[1])
    for trace in sys.argv[2:]:
        checker.reset()
        with open(trace, encoding="latin-1") as lines:
            for number, line in enumerate(lines, 1):
                found = CALL.match(line)
                if found:
                    time, name, arguments, result = found.groups()
                    checker.call(f"{trace}:{number}", float(time), name, arguments, result)
    for breach in checker.breaches:
        print(breach)
    print(", ".join(f"{count} {name}" for name, count in checker.counts.items()), f"; {len(checker.breaches)} breaches")
    return 1 if checker.breaches or checker.counts["commits"] == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
