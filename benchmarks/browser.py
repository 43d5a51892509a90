#!/usr/bin/python3
"""What a browser pays for telling its sites, and Orvanta for asking: the browser's CPU over a quiet
stretch without the extension and with it, what passes through the host meanwhile, and Orvanta's own
CPU and wake-ups with the browser in front. On a virtual desktop; both of Debian's browsers."""

import argparse
import os
import pathlib
import plistlib
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
for folder in ("desktop", "tests/Browser"):
    sys.path.insert(0, str(ROOT / folder))

import browsers  # noqa: E402
import desktop  # noqa: E402
import orvanta_end  # noqa: E402

TICKS = os.sysconf("SC_CLK_TCK")
SETTLING = 20  # A browser that has just started has a lot to do.


def processes_of(root):
    """A process and all that it started."""
    found = [root]
    for pid in found:
        for children in pathlib.Path(f"/proc/{pid}/task").glob("*/children"):
            found += map(int, children.read_text().split())
    return found


def cpu_seconds(root):
    total = 0
    for pid in processes_of(root):
        fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
        total += int(fields[11]) + int(fields[12])
    return total / TICKS


def host_of(root):
    for pid in processes_of(root):
        if b"orvanta-browser-host" in pathlib.Path(f"/proc/{pid}/cmdline").read_bytes():
            return pid
    return None


def writes_of(pid):
    """How often it wrote: the host writes once for each message, towards either side."""
    lines = pathlib.Path(f"/proc/{pid}/io").read_text().splitlines()
    return int(next(line for line in lines if line.startswith("syscw")).split()[1])


def orvanta_reading(pid):
    """Seconds of CPU and how often it went to sleep."""
    running = int(pathlib.Path(f"/proc/{pid}/schedstat").read_text().split()[0]) / 1e9
    lines = pathlib.Path(f"/proc/{pid}/status").read_text().splitlines()
    sleeps = next(line for line in lines if line.startswith("voluntary_ctxt_switches"))
    return running, int(sleeps.split()[1])


def measure(kind, identifier, seconds, build, orvanta):
    """With `orvanta`, an executable, the browser tells it its sites."""
    with desktop.Desktop() as place:
        sites = orvanta_end.Sites()
        browser = kind(place, sites)
        process = None
        if orvanta:
            browser.load_extension()
            decisions = (pathlib.Path(place.environment["XDG_CONFIG_HOME"])
                         / "com.brindlework.orvanta.automation.plist")
            decisions.write_bytes(plistlib.dumps({"allowed": [identifier]},
                                                 fmt=plistlib.FMT_BINARY))
            application = desktop.Orvanta(place, orvanta)
            application.start()
            process = application.process
        browser.new_window(lambda: browser.open(browser.address("alpha.test")))
        if process:
            desktop.wait_until(lambda: host_of(browser.process.pid), "the host", 60)
        time.sleep(SETTLING)
        host = host_of(browser.process.pid)
        before = cpu_seconds(browser.process.pid)
        written = writes_of(host) if host else 0
        first = orvanta_reading(process.pid) if process else None
        time.sleep(seconds)
        cost = first and [later - earlier for earlier, later
                          in zip(first, orvanta_reading(process.pid))]
        used = cpu_seconds(browser.process.pid) - before
        messages = writes_of(host) - written if host else 0
        sites.close()
    return used, messages, cost


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seconds", type=int, default=60)
    parser.add_argument("--orvanta", type=pathlib.Path,
                        default=ROOT / "build" / "release" / "orvanta")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "dev",
                        help="of the preset dev, which has the tests' programs")
    arguments = parser.parse_args()
    desktop.end_on_signals()
    build = arguments.build.resolve()
    # It is let in only where it stands beside the application.
    os.environ["ORVANTA_BROWSER_HOST"] = str(
        arguments.orvanta.resolve().with_name("orvanta-browser-host"))
    os.environ["ORVANTA_PACKAGES"] = str(build / "browser")
    for kind, identifier in ((browsers.Chromium, "chromium"), (browsers.Firefox, "firefox-esr")):
        seconds = arguments.seconds
        without, _, _ = measure(kind, identifier, seconds, build, None)
        used, messages, (cpu, sleeps) = measure(kind, identifier, seconds, build,
                                                arguments.orvanta.resolve())
        print(f"{identifier}: {seconds} s in front of one page: {without:.2f} s of CPU "
              f"without the extension, {used:.2f} s with it; {messages} messages through the host; "
              f"orvanta: {cpu / seconds * 3600:.2f} s of CPU an hour, "
              f"{sleeps / seconds:.2f} wake-ups a second", flush=True)


main()
