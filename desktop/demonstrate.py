"""Half a minute of work in two windows on a virtual desktop, and what Orvanta then has of it.

demonstrate.py EXECUTABLE SCREENSHOT
"""

import pathlib
import sys

import desktop
import panels

STRETCH = 5.0
IN_XTERM = ("date", "ls /usr/share/applications", "echo working")
IN_MOUSEPAD = ("Some notes on the day.", "Then a second line,", "and the rest of it.")


def clock(seconds):
    whole = int(seconds)
    return f"{whole // 60}:{whole % 60:02}"


def print_table(title, heads, rows):
    table = [heads, *([str(cell) for cell in row] for row in rows)]
    widths = [max(len(row[column]) for row in table) for column in range(len(heads))]
    print(f"\n{title}")
    for row in table:
        # The two columns of time are figures.
        cells = [cell.rjust(width) if column >= len(heads) - 2 else cell.ljust(width)
                 for column, (cell, width) in enumerate(zip(row, widths))]
        print("  " + "  ".join(cells))


def work(place, orvanta, screenshot):
    panel = panels.XfcePanel(place)
    panel.start()
    xterm = place.launch_xterm()
    mousepad = place.launch_mousepad()
    place.move(mousepad, 620, 560, 640, 220)
    turns = [turn for pair in zip(((xterm, text) for text in IN_XTERM),
                                  ((mousepad, text) for text in IN_MOUSEPAD)) for turn in pair]
    place.activate(xterm)
    began = orvanta.start()
    for number, (window, text) in enumerate(turns):
        place.activate(window)
        place.type_line(text)
        if number == len(turns) - 2:
            place.screenshot(screenshot)
        desktop.sleep_until(began + (number + 1) * STRETCH)
    asked, code = orvanta.ask_to_end()
    panel.close()
    if code != 0:
        raise desktop.DesktopError(f"Orvanta ended with {code}: {orvanta.complaints()}")
    return asked - began


def main():
    executable, screenshot = sys.argv[1], pathlib.Path(sys.argv[2]).absolute()
    desktop.end_on_signals()
    try:
        with desktop.Desktop() as place:
            orvanta = desktop.Orvanta(place, executable)
            elapsed = work(place, orvanta, screenshot)
            activities = orvanta.store.rows(
                "SELECT ZNAME, ZKEY, ZCATEGORYVALUE, ZSECONDS FROM ZACTIVITY ORDER BY ZSECONDS DESC")
            days = orvanta.store.rows(
                "SELECT ZDAY, ZKEY, ZSECONDS FROM ZDAYACTIVITY ORDER BY ZDAY, ZSECONDS DESC")
    except desktop.DesktopError as error:
        sys.exit(f"script/run: {error}")
    except KeyboardInterrupt:
        sys.exit("script/run: interrupted")
    print_table("Activities of the session (ZACTIVITY)",
                ["name", "key", "category", "time", "seconds"],
                [(name, key, category, clock(seconds), f"{seconds:.2f}")
                 for name, key, category, seconds in activities])
    print_table("The day (ZDAYACTIVITY)", ["day", "key", "time", "seconds"],
                [(day, key, clock(seconds), f"{seconds:.2f}") for day, key, seconds in days])
    print(f"\nOrvanta was watching for {elapsed:.2f} s. Screenshot: {screenshot}")


if __name__ == "__main__":
    main()
