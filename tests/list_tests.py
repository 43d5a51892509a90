"""The names of the tests in this folder's test_*.py, as a list of CMake's."""

import unittest


def names(suite):
    for test in suite:
        yield from names(test) if isinstance(test, unittest.TestSuite) else [test.id()]


loader = unittest.TestLoader()
found = sorted(names(loader.discover(".")))
if loader.errors:
    raise SystemExit("\n".join(loader.errors))
print(*found, sep=";", end="")
