"""script/packages against the names that releases have, and script/bootstrap where one is missing."""

import os
import pathlib
import re
import subprocess

import test_installation
from test_installation import SOURCES

RELEASES = pathlib.Path(__file__).with_name("releases")


class Names(test_installation.InFolder):
    def bootstrap(self, release, *sections):
        """Where nothing is installed, and these names are known."""
        known = RELEASES / release
        policy = (rf"""tr ' ' '\n' <{known} | grep -xF "$(printf '%s\n' $@)" |"""
                  r" sed 's/$/:\n  Candidate: 1/'")
        for name, script in (("dpkg-query", "exit 1"), ("sudo", 'exec "$@"'),
                             ("apt-cache", f"shift; {policy}"),
                             ("apt-get", f"echo $@ >>{self.folder}/log")):
            (self.folder / name).write_text(f"#!/bin/sh\n{script}\n")
            (self.folder / name).chmod(0o700)
        (self.folder / "log").write_text("")
        result = subprocess.run([SOURCES / "script" / "bootstrap", *sections], text=True,
                                capture_output=True,
                                env={"PATH": f"{self.folder}:{os.environ['PATH']}"})
        installed = re.findall(r"--no-install-recommends (.*)", (self.folder / "log").read_text())
        return result.returncode, result.stderr, [name for line in installed
                                                  for name in line.split()]

    def test_a_section_is_installed_where_all_its_names_are_known(self):
        for release in RELEASES.iterdir():
            code, said, _ = self.bootstrap(release.name, "build", "run", "desktop", "package",
                                           "chroot")
            self.assertEqual((code, said), (0, ""), release.name)
            code, said, installed = self.bootstrap(release.name, "build", "test")
            if release.name.startswith("debian"):
                self.assertEqual(code, 0, said)
            else:
                self.assertEqual((code, installed, said.count("\n")), (1, [], 1))
                self.assertRegex(said, "no package chromium firefox-esr,")

    def test_the_source_package_is_built_with_the_same(self):
        control = (SOURCES / "debian" / "control").read_text()
        needed = re.search(r"Build-Depends:((?:\n .*)*)", control)[1].split(",")
        self.assertEqual({name.strip() for name in needed[1:]},  # The first is debhelper.
                         set(self.bootstrap("debian-12", "build")[2]) - {"g++"})  # It is understood.
