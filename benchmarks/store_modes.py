#!/usr/bin/python3
"""What an hour of saving costs by page size, journal and synchronous mode.

    benchmarks/store_modes.py STORE

STORE is a filled store (orvanta-seed-store makes one); it is copied for each mode. An hour is 720
saves while the focus stays (an activity and its day record change) and 360 at a change of focus
(two activities change, and the day record of the one left).
"""

import os
import resource
import shutil
import sqlite3
import sys
import tempfile
import time

MODES = [
    (512, "WAL", "NORMAL"),
    (1024, "WAL", "NORMAL"),
    (4096, "WAL", "NORMAL"),
    (512, "WAL", "FULL"),
    (4096, "WAL", "FULL"),
    (512, "DELETE", "FULL"),
    (4096, "DELETE", "FULL"),
]


def written():
    with open("/proc/self/io") as lines:
        figures = dict(line.split(":") for line in lines)
    return int(figures["wchar"]), int(figures["write_bytes"])


def hour(database):
    activities = [key for (key,) in database.execute("SELECT Z_PK FROM ZACTIVITY LIMIT 8")]
    days = [key for (key,) in
            database.execute("SELECT Z_PK FROM ZDAYACTIVITY ORDER BY Z_PK DESC LIMIT 8")]

    def touch(activity, day, both=None):
        database.execute("BEGIN IMMEDIATE")
        for key in [activity] + ([both] if both else []):
            database.execute("UPDATE ZACTIVITY SET Z_OPT = Z_OPT + 1, ZSECONDS = ZSECONDS + 5.01, "
                             "ZLASTUSEDAT = ? WHERE Z_PK = ?", (time.time(), key))
        database.execute("UPDATE ZDAYACTIVITY SET Z_OPT = Z_OPT + 1, ZSECONDS = ZSECONDS + 5.01 "
                         "WHERE Z_PK = ?", (day,))
        database.execute("COMMIT")

    for focus in range(360):
        now, then = focus % 8, (focus + 1) % 8
        touch(activities[now], days[now])
        touch(activities[now], days[now])
        touch(activities[now], days[now], activities[then])


def measure(store, page_size, journal, synchronous):
    with tempfile.TemporaryDirectory(dir=os.path.dirname(os.path.abspath(store))) as folder:
        path = os.path.join(folder, "Activities.store")
        shutil.copy(store, path)
        database = sqlite3.connect(path, isolation_level=None)
        database.execute("PRAGMA journal_mode = DELETE")
        database.execute(f"PRAGMA page_size = {page_size}")
        database.execute("VACUUM")
        database.execute(f"PRAGMA journal_mode = {journal}")
        database.execute(f"PRAGMA synchronous = {synchronous}")
        before, began = written(), time.monotonic()
        cpu = resource.getrusage(resource.RUSAGE_SELF)
        hour(database)
        wall = time.monotonic() - began
        after, cpu_after = written(), resource.getrusage(resource.RUSAGE_SELF)
        database.close()
    seconds = (cpu_after.ru_utime + cpu_after.ru_stime) - (cpu.ru_utime + cpu.ru_stime)
    mib = [(b - a) / 2**20 for a, b in zip(before, after)]
    print(f"{page_size:6} {journal:7} {synchronous:7} {mib[0]:10.2f} {mib[1]:12.2f} "
          f"{seconds:8.2f} {wall:8.2f}")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    print("  page journal sync     pwrite MiB  written MiB    CPU s   wall s")
    for mode in MODES:
        measure(sys.argv[1], *mode)


if __name__ == "__main__":
    main()
