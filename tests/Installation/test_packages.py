"""script/packages against the names that releases have, and script/bootstrap without one."""

import os
import pathlib
import re
import subprocess

import test_installation
from test_installation import SOURCES

RELEASES = pathlib.Path(__file__).with_name("releases")


class Names(test_installation.InFolder):
    def bootstrap(self, release, *sections):
        """What it says and installs where nothing is installed, and these names are known."""
        names = (rf"""tr ' ' '\n' <{RELEASES / release} | grep -xF "$(printf '%s\n' $@)" |"""
                 r" sed 's/$/:\n  Candidate: 1/'")
        for name, script in (("dpkg-query", "exit 1"), ("sudo", 'exec "$@"'),
                             ("apt-cache", f"shift; {names}"),
                             ("apt-get", f"echo $@ >>{self.folder}/log")):
            (self.folder / name).write_text(f"#!/bin/sh\n{script}\n")
            (self.folder / name).chmod(0o700)
        (self.folder / "log").write_text("")
        said = subprocess.run([SOURCES / "script" / "bootstrap", *sections], text=True,
                              stderr=subprocess.PIPE,
                              env={"PATH": f"{self.folder}:{os.environ['PATH']}"}).stderr
        installed = re.findall(r"--no-install-recommends (.*)", (self.folder / "log").read_text())
        return said, set(" ".join(installed).split())

    def test_a_section_is_installed_where_all_its_names_are_known(self):
        for release in RELEASES.iterdir():
            test = ["test"] * release.name.startswith("debian")
            self.assertEqual(self.bootstrap(release.name, "build", "run", "desktop", "package",
                                            "chroot", *test)[0], "", release.name)
        said, installed = self.bootstrap("ubuntu-24.04", "build", "test")
        self.assertRegex(said, r"^[^\n]*no package chromium firefox-esr,[^\n]*\n$")
        self.assertEqual(installed, set())

    def test_the_source_package_is_built_with_the_same(self):
        control = (SOURCES / "debian" / "control").read_text()
        needed = re.search(r"Build-Depends:((?:\n .*)*)", control)[1].split(",")
        self.assertEqual({name.strip() for name in needed[1:]},  # The first is debhelper.
                         self.bootstrap("debian-12", "build")[1] - {"g++"})  # It is understood.
