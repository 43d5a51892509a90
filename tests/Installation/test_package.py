"""The Debian package of the build tree under test: what is in it, and what is left when it goes."""

import os
import shutil

import test_installation
from test_installation import NAME, files_in, run

ADMINISTRATION = "var/lib/dpkg"
# Debian's own first uploads answer a wish in its bug tracker.
NOT_OURS = "initial-upload-closes-no-bugs"


class Package(test_installation.InFolder):
    def pack(self, release):
        """What dpkg-buildpackage does once everything is built."""
        source = self.folder / f"source{release}"
        shutil.copytree(test_installation.SOURCES / "debian", source / "debian")
        (source / "debian" / "debhelper-build-stamp").write_text("orvanta\n")
        run("make", "-C", source, "-f", "debian/rules", "binary", f"release={release}",
            f"build={test_installation.BUILD}", DEB_BUILD_OPTIONS="noautodbgsym")
        return next(self.folder.glob(f"orvanta_*~{release}_*.deb"))

    def look_into(self, package):
        """What is installed for everybody is in it, and Debian is satisfied."""
        content, installed = self.folder / "content", self.folder / "installed"
        run("dpkg-deb", "-x", package, content)
        test_installation.install("/usr", installed)
        self.assertEqual(files_in(content) - files_in(installed),
                         {f"usr/share/doc/orvanta/{name}"
                          for name in ("changelog.gz", "copyright")})
        # The paths that files name are the same, too, though it was installed somewhere else.
        for path in files_in(installed):
            if not path.startswith("usr/bin/"):
                self.assertEqual((content / path).read_bytes(), (installed / path).read_bytes(),
                                 path)
        for program in ("orvanta", "orvanta-browser-host"):
            program = content / "usr/bin" / program
            self.assertTrue(os.access(program, os.X_OK))
            said = run("readelf", "--wide", "--segments", "--dynamic", "--dyn-syms", program)
            for protection in ("GNU_RELRO", "BIND_NOW", "PIE", "__stack_chk_fail"):
                self.assertIn(protection, said)
            self.assertNotIn("Network", said, "nothing of it can reach one")

        for library in ("libqt6widgets6", "libsqlite3-0", r"libplist[\d.-]+"):
            self.assertRegex(run("dpkg-deb", "-f", package, "Depends"), rf"\b{library}\b")
        run("lintian", "--fail-on", "error,warning", "--suppress-tags", NOT_OURS, package)

    def test_it_satisfies_debian_and_an_upgrade_and_a_removal_leave_nothing_behind(self):
        root = self.folder / "root"
        for folder in ("info", "updates", "triggers"):
            (root / ADMINISTRATION / folder).mkdir(parents=True)
        for file in ("status", "available"):
            (root / ADMINISTRATION / file).touch()

        def dpkg(*arguments):
            """On a system with nothing else, nor any rights on this one."""
            run("fakeroot", "dpkg", f"--root={root}", f"--log={self.folder}/log", "--force-depends",
                *arguments, PATH=os.environ["PATH"] + ":/usr/sbin:/sbin")

        def there():
            return {path for path in files_in(root) if not path.startswith("var/")}

        package = self.pack(1)
        self.look_into(package)
        dpkg("--install", package)
        first = there()
        self.assertIn("usr/bin/orvanta", first)
        dpkg("--install", self.pack(2))
        self.assertEqual(there(), first)
        dpkg("--remove", "orvanta")
        self.assertEqual(there(), {f"etc/chromium/native-messaging-hosts/{NAME}.json"})
        dpkg("--purge", "orvanta")
        self.assertEqual({path.name for path in root.iterdir()}, {"var"})
