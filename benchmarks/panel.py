#!/usr/bin/python3
"""How long Orvanta takes from its start to the status area, and what its place there costs the
desktop's panel (xfce4-panel) in wake-ups.

    benchmarks/panel.py [--seconds N] [--runs N] [STORE ...]

Each STORE (orvanta-seed-store makes one) is started from in turn, and a new one first.
"""

import argparse
import pathlib
import re
import statistics
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "desktop"))

import desktop  # noqa: E402 (the path has just been set)
import panels  # noqa: E402

# Until the panel's helpers of its own start, and of a new item's, have gone.
SETTLING = 30.0


class Registrations:
    """When items came to the panel, by the clock of the bus."""

    def __init__(self, place):
        self._log = place.folder / "registrations"
        self._process = place.spawn(
            ["sh", "-c", "exec dbus-monitor --session \"type='signal',"
             f"member='StatusNotifierItemRegistered'\" >{self._log}"])
        desktop.wait_until(lambda: self._log.exists() and "NameAcquired" in self._log.read_text(),
                           "the monitor")
        self._seen = 0

    def next(self):
        def moments():
            return re.findall(r"time=([0-9.]+) .*member=StatusNotifierItemRegistered",
                              self._log.read_text())

        desktop.wait_until(lambda: len(moments()) > self._seen, "the status item", every=0.05)
        self._seen += 1
        return float(moments()[self._seen - 1])


def starts(executable, store, runs):
    """Milliseconds from the start of the process to its item's registration, the first not counted."""
    with desktop.Desktop() as place:
        panel = panels.XfcePanel(place)
        panel.start()
        registrations = Registrations(place)
        orvanta = desktop.Orvanta(place, executable)
        if store:
            desktop.Store(store).copy_to(orvanta.store.path)
        found = []
        for _ in range(runs + 1):
            began = time.time()
            orvanta.start()
            found.append((registrations.next() - began) * 1000)
            time.sleep(1)
            orvanta.ask_to_end()
        panel.close()
        return found[1:]


def wakeups(place, pid, seconds):
    def count():
        total = 0
        for status in pathlib.Path(f"/proc/{pid}/task").glob("*/status"):
            total += int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", status.read_text(),
                                   re.MULTILINE)[1])
        return total

    before = count()
    windows = place.windows()
    began = time.monotonic()
    while time.monotonic() - began < seconds:
        windows.reverse()
        place.activate(windows[0])
        desktop.sleep_until(min(time.monotonic() + 10, began + seconds))
    return (count() - before) / seconds


def panel_pid():
    for comm in pathlib.Path("/proc").glob("[0-9]*/comm"):
        if comm.read_text().strip() == "xfce4-panel":
            return int(comm.parent.name)
    raise desktop.DesktopError("xfce4-panel is not running")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--runs", type=int, default=9)
    parser.add_argument("stores", nargs="*", type=pathlib.Path)
    arguments = parser.parse_args()
    executable = ROOT / "build" / "release" / "orvanta"
    desktop.end_on_signals()

    print(f"start to status item, ms, of {arguments.runs} warm starts (budget 100)")
    for store in [None, *arguments.stores]:
        found = starts(executable, store, arguments.runs)
        print(f"  median {statistics.median(found):4.0f}  least {min(found):4.0f}  "
              f"most {max(found):4.0f}  {store or 'a new store'}")

    print(f"xfce4-panel's wake-ups a second, over {arguments.seconds:.0f} s each")
    with desktop.Desktop() as place:
        panel = panels.XfcePanel(place)
        panel.start()
        place.launch_xterm()
        place.launch_mousepad()
        time.sleep(SETTLING)
        print(f"  without Orvanta {wakeups(place, panel_pid(), arguments.seconds):.2f}")
        orvanta = desktop.Orvanta(place, executable)
        orvanta.start()
        time.sleep(SETTLING)
        print(f"  with Orvanta    {wakeups(place, panel_pid(), arguments.seconds):.2f}")
        panel.close()


if __name__ == "__main__":
    main()
