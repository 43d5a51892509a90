"""What `cmake --install` and packaging/register put where, and that it works from there."""

import base64
import hashlib
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import desktop

BUILD = pathlib.Path(os.environ["ORVANTA_BUILD"]).resolve()
SOURCES = pathlib.Path(__file__).parents[2]
NAME = "com.brindlework.orvanta"
ENTRY = f"share/applications/{NAME}.desktop"
ICONS = {f"share/icons/hicolor/scalable/apps/{NAME}.svg",
         f"share/icons/hicolor/symbolic/apps/{NAME}-symbolic.svg"}
EXTENSION = {path.name for path in (SOURCES / "browser" / "extension").iterdir()}
BELOW_ANY_PREFIX = {
    "bin/orvanta", "bin/orvanta-browser-host", ENTRY, *ICONS, f"share/metainfo/{NAME}.metainfo.xml",
    "share/man/man1/orvanta.1.gz", "share/man/man1/orvanta-browser-host.1.gz",
    "share/man/pt_BR/man1/orvanta.1.gz",
    "share/orvanta/browser/orvanta.crx", "share/orvanta/browser/orvanta.xpi",
    *(f"share/orvanta/browser/extension/{name}" for name in EXTENSION),
    *(f"share/orvanta/gnome/{form}/{name}" for form in (42, 45)
      for name in ("extension.js", "metadata.json"))}


def run(*command, **environment):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True,
                            env={"PATH": os.environ["PATH"], "LANG": "C.UTF-8", **environment})
    if result.returncode != 0:
        raise AssertionError(f"{command}: {result.stdout}{result.stderr}")
    return result.stdout


def install(prefix, destination=""):
    run(os.environ["ORVANTA_CMAKE"], "--install", BUILD, "--prefix", prefix,
        DESTDIR=str(destination))


def files_in(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def values_of(entry):
    return dict(line.split("=", 1) for line in entry.read_text().splitlines() if "=" in line)


class InFolder(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="orvanta-installation-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()

    def assert_valid_entry(self, entry):
        said = subprocess.run(["desktop-file-validate", entry], capture_output=True, text=True)
        # The validator of Debian 12 does not know this key of version 1.5 yet.
        complaints = [line for line in (said.stdout + said.stderr).splitlines()
                      if 'key "SingleMainWindow"' not in line]
        self.assertEqual(complaints, [])


class Files(InFolder):
    def test_for_everybody(self):
        install("/usr", self.folder)
        gecko_folder = "usr/share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}"
        extension = json.loads((BUILD / "browser/extension/manifest.json").read_text())
        gecko_id = extension["browser_specific_settings"]["gecko"]["id"]
        package = f"{gecko_folder}/{gecko_id}.xpi"
        manifests = {f"etc/chromium/native-messaging-hosts/{NAME}.json",
                     f"usr/lib/mozilla/native-messaging-hosts/{NAME}.json"}
        self.assertEqual(files_in(self.folder), {
            *(f"usr/{path}" for path in BELOW_ANY_PREFIX), package, *manifests,
            *(f"usr/share/chromium/extensions/orvanta/{name}" for name in EXTENSION)})
        digits = hashlib.sha256(base64.b64decode(extension["key"])).hexdigest()[:32]
        chromium_id = "".join(chr(ord("a") + int(digit, 16)) for digit in digits)
        common = {"name": NAME, "description": "Orvanta", "type": "stdio",
                  "path": "/usr/bin/orvanta-browser-host"}
        own = {"etc": {"allowed_origins": [f"chrome-extension://{chromium_id}/"]},
               "usr": {"allowed_extensions": [gecko_id]}}
        for path in manifests:
            self.assertEqual(json.loads((self.folder / path).read_text()),
                             common | own[path.split("/")[0]])
        self.assertEqual((self.folder / package).read_bytes(),
                         (BUILD / "browser/orvanta.xpi").read_bytes())

        entry = self.folder / "usr" / ENTRY
        self.assert_valid_entry(entry)
        self.assertEqual(values_of(entry)["Exec"], "/usr/bin/orvanta")
        run("appstreamcli", "validate", "--no-net",
            self.folder / f"usr/share/metainfo/{NAME}.metainfo.xml")
        for icon in ICONS:
            run("rsvg-convert", "-o", self.folder / "drawn.png", self.folder / "usr" / icon)

    def test_elsewhere_nothing_leaves_the_prefix(self):
        install("/opt/orvanta", self.folder)
        self.assertEqual(files_in(self.folder / "opt/orvanta"), BELOW_ANY_PREFIX)
        self.assertEqual([path.name for path in self.folder.iterdir()], ["opt"])


class Registration(InFolder):
    def register(self, *arguments):
        return run(SOURCES / "packaging/register", *arguments, HOME=str(self.folder / "home"),
                   XDG_DATA_HOME=self.data)

    def test_it_is_made_once_and_undone_by_who_made_it(self):
        share = self.folder / "home/.local/share"
        entry = share.parent / ENTRY
        other = self.folder / "another one's" / "orvanta"
        for self.data in ("relative", str(share)):
            self.assertIn(str(share), self.register(BUILD / "orvanta"))
            self.assertEqual({f"share/{path}" for path in files_in(share)}, {ENTRY, *ICONS})
            self.assert_valid_entry(entry)
            self.assertEqual(values_of(entry)["Exec"], str(BUILD / "orvanta"))
            for again in ((BUILD / "orvanta",), ("--undo", other)):
                self.assertEqual(self.register(*again), "")
            self.register(other)
            self.assertEqual(values_of(entry)["Exec"], f'"{other}"')
            self.assertIn(str(share), self.register("--undo", other))
            self.assertEqual(list(share.iterdir()), [])
            self.assertEqual(self.register("--undo", other), "")


class Installed(InFolder):
    def setUp(self):
        super().setUp()
        desktop.end_on_signals()
        self.prefix = self.folder / "a person's $place \"own\""
        self.prefix.mkdir()
        install(self.prefix)
        self.desktop = desktop.Desktop()
        self.addCleanup(self.desktop.close)
        self.desktop.open()

    def test_it_starts_from_its_entry_and_finds_its_host(self):
        entry = self.prefix / ENTRY
        self.assert_valid_entry(entry)

        # To a browser that the person agreed to, it says some seconds after its start where the
        # host is now.
        configuration = pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"])
        (configuration / "chromium").mkdir()
        (configuration / f"{NAME}.automation.plist").write_text(
            '<plist version="1.0"><dict><key>agreed</key><array><string>chromium</string></array>'
            "</dict></plist>")
        # Where no store can be made, it says so in a window. The entry must name that as its own.
        store = desktop.Orvanta(self.desktop, self.prefix / "bin/orvanta").store
        store.path.mkdir(parents=True)
        self.desktop.spawn(["gio", "launch", str(entry)])
        window = desktop.wait_until(self.desktop.windows, "a window")[0]
        self.assertIn(f'"{values_of(entry)["StartupWMClass"]}"',
                      self.desktop.run("xprop", "-id", str(window), "WM_CLASS"))
        store.path.rmdir()
        self.desktop.activate(window)
        self.desktop.press("Return")
        desktop.wait_until(lambda: not self.desktop.windows(), "the program's end")

        self.desktop.spawn(["gio", "launch", str(entry)])
        manifest = configuration / f"chromium/NativeMessagingHosts/{NAME}.json"
        desktop.wait_until(manifest.exists, "a manifest")
        host = pathlib.Path(json.loads(manifest.read_text())["path"])
        self.assertEqual(host, self.prefix / "bin/orvanta-browser-host")
        self.assertTrue(os.access(host, os.X_OK))
        self.assertEqual(store.rows("PRAGMA integrity_check"), [("ok",)])
