"""Seeing and clicking the status item in a panel, as a person does."""

SECONDARY = (142, 142, 147)


def ink(place, panel, colour=SECONDARY):
    """Where the panel has this colour: the midst of it, or nothing."""
    left, top, width, height = panel.area
    path = place.folder / "area.ppm"
    place.run("scrot", "--overwrite", "--autoselect", f"{left},{top},{width},{height}", str(path))
    pixels = path.read_bytes()[-3 * width * height:]
    found = [(left + i % width, top + i // width) for i in range(width * height)
             if all(abs(a - b) <= 12 for a, b in zip(pixels[3 * i:3 * i + 3], colour))]
    # A few pixels may be anything.
    return found[len(found) // 2] if len(found) >= 20 else None


def click(place, position, button):
    place.run("xdotool", "mousemove", *map(str, position), "click", str(button))
