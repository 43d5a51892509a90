"""What Orvanta costs as a process, from /proc: on a virtual desktop, two windows taking turns.

Beside it stand the budgets, and a bare Qt Widgets process with a timer of one second that is
measured in the same way. The two run one after the other, because pages that they share would halve
each other's PSS.
"""

import argparse
import functools
import pathlib
import plistlib
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "desktop"))

import desktop  # noqa: E402 (the path has just been set)
import gnome  # noqa: E402
import kwin  # noqa: E402
import sway  # noqa: E402

# Between two changes of what is in front.
STRETCH = 10.0

# Starting up is not measured: the desktop entries are read, the first pages touched.
SETTLING = 10.0

# By then all that a change in front brings about is over.
QUIET_AFTER = 2.0

# What does the same all the time is measured for so long at most.
STEADY = 120

MIB = 1024 * 1024

# Desktops on which the person has let this executable see what is in front.
COMPOSITORS = {
    "gnome": lambda executable, **more: gnome.GnomeDesktop(executable=executable, **more),
    "kwin": lambda executable, **more: kwin.KWinDesktop(executable=executable, **more),
    "sway": lambda executable, **more: sway.SwayDesktop(**more),
}


class Reading:
    """The counters of a process at a moment."""

    def __init__(self, pid):
        root = pathlib.Path("/proc", str(pid))
        self.moment = time.monotonic()
        self.threads = {}
        for task in (root / "task").iterdir():
            # Nanoseconds on a processor; utime and stime of `stat` only know hundredths of a second.
            running = int((task / "schedstat").read_text().split()[0]) / 1e9
            self.threads[task.name] = (running, self.field(task / "status",
                                                            "voluntary_ctxt_switches"))
        self.handed_over = self.field(root / "io", "wchar")
        self.to_the_disk = self.field(root / "io", "write_bytes")

    @staticmethod
    def field(path, name):
        for line in path.read_text().splitlines():
            if line.startswith(f"{name}:"):
                return int(line.split()[1])
        raise desktop.DesktopError(f"{path} has no {name}")


class Memory:
    """Of a process, in MB. To count it, the kernel goes through all its pages, which leaves the
    process' next steps with cold caches: not to be done while CPU is measured."""

    def __init__(self, pid):
        path = pathlib.Path("/proc", str(pid), "smaps_rollup")
        self.pss, self.private_dirty = (Reading.field(path, name) * 1024 / MIB
                                        for name in ("Pss", "Private_Dirty"))


class Cost:
    """What passed between two readings. Of a thread that ended in between, nothing is known."""

    def __init__(self, first, last):
        self.seconds = last.moment - first.moment
        running = waits = 0
        for name, (thread_running, thread_waits) in last.threads.items():
            earlier = first.threads.get(name, (0, 0))
            running += thread_running - earlier[0]
            waits += thread_waits - earlier[1]
        an_hour = 3600 / self.seconds
        self.cpu = running * an_hour
        self.waits = waits
        self.wakeups = waits / self.seconds
        self.handed_over = (last.handed_over - first.handed_over) / MIB * an_hour
        self.to_the_disk = (last.to_the_disk - first.to_the_disk) / MIB * an_hour


class Measurement:
    """A process on a desktop of its own, beside a terminal and a mousepad."""

    def __init__(self, executable, store=None, make_desktop=desktop.Desktop):
        self.place = make_desktop(time_zone=desktop.zone_far_from_midnight())
        self.executable = executable
        self.store = store
        self.neighbours = []

    def __enter__(self):
        self.place.open()
        self.windows = [self.place.launch_terminal(), self.place.launch_mousepad()]
        self.process = desktop.Orvanta(self.place, self.executable)
        if self.store:
            desktop.Store(self.store).copy_to(self.process.store.path)
        # The setup is behind the person: it would open the panel.
        self.prefer({"setupDoneV1": True})
        return self

    def prefer(self, preferences):
        folder = pathlib.Path(self.place.environment["XDG_CONFIG_HOME"])
        (folder / f"{desktop.DOMAIN}.plist").write_bytes(
            plistlib.dumps(preferences, fmt=plistlib.FMT_BINARY))

    def __exit__(self, *_):
        self.place.close()

    def start(self):
        self.process.start()

    def read(self):
        if not self.process.is_running():
            raise desktop.DesktopError(f"{self.executable} ended: {self.process.complaints()}")
        return Reading(self.process.process.pid)

    def take_turns(self, seconds):
        """The cost of that time, what is in front changing every ten seconds; how often it woke a
        second while nothing changed; and the memory at the end."""
        self._turn_for(SETTLING)
        first = self.read()
        quiet = self._turn_for(seconds)
        cost = Cost(first, self.read())
        self.neighbours = qt_neighbours(self.process.process.pid)
        waits = sum(part.waits for part in quiet)
        return (cost, waits / sum(part.seconds for part in quiet),
                Memory(self.process.process.pid))

    def _turn_for(self, seconds):
        """The costs of the parts of that time in which nothing changed."""
        quiet = []
        began = time.monotonic()
        done = 0.0
        while done < seconds:
            self.windows.reverse()
            self.place.activate(self.windows[0])
            desktop.sleep_until(began + done + QUIET_AFTER)
            first = self.read()
            done += STRETCH
            desktop.sleep_until(began + done)
            quiet.append(Cost(first, self.read()))
        return quiet

    def stay_idle(self, seconds):
        """The cost of that time with no window at all."""
        self.place.close_windows()
        desktop.sleep_until(time.monotonic() + SETTLING)
        first = self.read()
        desktop.sleep_until(time.monotonic() + seconds)
        return Cost(first, self.read())


    def rest(self, seconds):
        """What it costs while it counts nothing although a window is in front."""
        desktop.sleep_until(time.monotonic() + SETTLING)
        first = self.read()
        desktop.sleep_until(time.monotonic() + seconds)
        return Cost(first, self.read())


def resting(arguments):
    """Wake-ups while the person has paused, and while the displays are off."""
    with Measurement(arguments.executable, arguments.store) as orvanta:
        orvanta.prefer({"setupDoneV1": True, "paused": True})
        orvanta.start()
        paused = orvanta.rest(arguments.seconds)
    with Measurement(arguments.executable, arguments.store) as orvanta:
        orvanta.start()
        desktop.sleep_until(time.monotonic() + SETTLING)
        orvanta.place.run("xset", "s", "activate")
        away = orvanta.rest(arguments.seconds)
    print(f"{arguments.seconds:.0f} s each, wake-ups a second (budget 0.05) and CPU seconds an hour")
    print(f"  paused        {number(paused.wakeups)}  {number(paused.cpu)}")
    print(f"  displays off  {number(away.wakeups)}  {number(away.cpu)}")


def qt_neighbours(measured):
    """Other processes that have Qt loaded, and so share its pages with the one that is measured."""
    found = []
    for maps in pathlib.Path("/proc").glob("[0-9]*/maps"):
        if maps.parent.name == str(measured):
            continue
        try:
            if "libQt6Core" in maps.read_text():
                found.append(f"{(maps.parent / 'comm').read_text().strip()} ({maps.parent.name})")
        except OSError:
            # It ended meanwhile, or is not ours to read.
            continue
    return found


def number(value):
    return f"{value:.3f}" if value < 0.1 else f"{value:.2f}"


def print_table(rows):
    heads = ("", "orvanta", "budget", "bare process")
    rows = [heads, *rows]
    widths = [max(len(row[column]) for row in rows) for column in range(len(heads))]
    for row in rows:
        print("  " + row[0].ljust(widths[0])
              + "".join("  " + cell.rjust(width) for cell, width in zip(row[1:], widths[1:])))


def parse():
    build = pathlib.Path(__file__).resolve().parent.parent / "build" / "release"
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seconds", type=int, default=60,
                        help="how long to measure, in whole stretches of ten seconds (default 60; "
                             "600 is steadier); the bare process and what follows no longer than "
                             f"{STEADY}")
    parser.add_argument("--idle", action="store_true",
                        help="measure also with no window in front")
    parser.add_argument("--resting", action="store_true",
                        help="measure only the rest: paused, and with the displays off")
    parser.add_argument("--compositor", choices=sorted(COMPOSITORS),
                        help="on Wayland under this one instead of an X server")
    parser.add_argument("--store", type=pathlib.Path,
                        help="start from a copy of this store")
    parser.add_argument("--executable", type=pathlib.Path, default=build / "orvanta")
    parser.add_argument("--bare", type=pathlib.Path, default=build / "orvanta-bare-process")
    return parser.parse_args()


def main():
    arguments = parse()
    desktop.end_on_signals()
    if arguments.store and not arguments.store.is_file():
        sys.exit(f"process.py: {arguments.store} is not there")
    idle = bare_idle = None
    make_desktop = (functools.partial(COMPOSITORS[arguments.compositor], arguments.executable)
                    if arguments.compositor else desktop.Desktop)
    steady = min(arguments.seconds, STEADY)
    try:
        if arguments.resting:
            resting(arguments)
            return
        with Measurement(arguments.executable, arguments.store, make_desktop) as orvanta:
            orvanta.start()
            cost, quiet_wakeups, memory = orvanta.take_turns(arguments.seconds)
            if arguments.idle:
                idle = orvanta.stay_idle(steady)
        with Measurement(arguments.bare, make_desktop=make_desktop) as process:
            process.start()
            bare, bare_quiet_wakeups, bare_memory = process.take_turns(steady)
            if arguments.idle:
                bare_idle = process.stay_idle(steady)
    except desktop.DesktopError as error:
        sys.exit(f"process.py: {error}")
    except KeyboardInterrupt:
        sys.exit("process.py: interrupted")

    print(f"{cost.seconds:.0f} s, another window in front every {STRETCH:.0f} s, "
          f"{'a new store' if not arguments.store else arguments.store}")
    rows = [
        ("CPU, seconds an hour", number(cost.cpu), "0.8", number(bare.cpu)),
        ("wake-ups a second", number(cost.wakeups), "1.4", number(bare.wakeups)),
        ("wake-ups a second, the same in front", number(quiet_wakeups), "1.4",
         number(bare_quiet_wakeups)),
        ("PSS, MB (a year of history / ten)", number(memory.pss), "24 / 27",
         number(bare_memory.pss)),
        ("private dirty, MB (a year / ten)", number(memory.private_dirty), "5 / 8",
         number(bare_memory.private_dirty)),
        ("handed to write(), MiB an hour (1)", number(cost.handed_over), "1.5",
         number(bare.handed_over)),
        ("sent to a disk, MiB an hour (2)", number(cost.to_the_disk), "-",
         number(bare.to_the_disk)),
    ]
    if idle:
        rows += [
            ("nothing in front: wake-ups a second", number(idle.wakeups), "0.05",
             number(bare_idle.wakeups)),
            ("nothing in front: CPU, seconds an hour", number(idle.cpu), "-",
             number(bare_idle.cpu)),
        ]
    print_table(rows)
    print("(1) wchar of /proc/PID/io: what write, pwrite and writev were given, for sockets, pipes "
          "and\n    event counters too, so a little more than the file system's part.")
    print("(2) write_bytes of /proc/PID/io: whole pages, and nothing where temporary files are in "
          "memory.")
    neighbours = sorted({*orvanta.neighbours, *process.neighbours})
    if neighbours:
        print(f"The PSS is too small: Qt was also loaded by {', '.join(neighbours)}.")


if __name__ == "__main__":
    main()
