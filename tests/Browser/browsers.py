"""Real browsers on a virtual desktop, each with its own home and the extension."""

import json
import os
import pathlib
import shutil

import desktop
import orvanta_end

EXTENSION = pathlib.Path(__file__).resolve().parents[2] / "browser" / "extension"
CHROMIUM_ID = "odbokjgdmdbheojmnkbkjhabohflpkpk"
GECKO_ID = "orvanta@brindlework.com"


class Browser:
    def __init__(self, place, sites, folder):
        self.place = place
        self.sites = sites
        self.process = None
        folder.mkdir(parents=True, exist_ok=True)  # As if it had been used before.

    def prepare(self, action):
        """What Orvanta does: `action` is manifests, install or remove."""
        self.place.run(os.environ["ORVANTA_BROWSER_INSTALLATION"], action,
                       self.place.environment["HOME"], self.place.environment["XDG_CONFIG_HOME"],
                       os.environ["ORVANTA_BROWSER_HOST"], os.environ["ORVANTA_PACKAGES"])

    def open(self, *arguments):
        """Starts the browser, or hands over to the one that runs."""
        process = self.place.spawn([*self.command, *arguments])
        if self.process is None:
            self.process = process
        return process

    def windows(self):
        return set(self.place.windows_of(self.process.pid)) if self.process else set()

    def new_window(self, action):
        """The window that opens by this action, in front."""
        before = self.windows()
        action()
        window = desktop.wait_until(lambda: self.windows() - before, "a window",
                                    orvanta_end.PATIENCE).pop()
        self.place.activate(window)
        return window


class Chromium(Browser):
    def __init__(self, place, sites):
        self.data = place.folder / "config" / "chromium"
        super().__init__(place, sites, self.data)
        self.command = [
            "chromium", "--no-sandbox", "--no-first-run", "--disable-gpu", "--password-store=basic",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            f"--host-resolver-rules=MAP *.test 127.0.0.1:{sites.port}"]

    def load_extension(self):
        self.prepare("manifests")
        self.command.append(f"--load-extension={EXTENSION}")

    def is_installed(self):
        return (self.data / "Default" / "Extensions" / CHROMIUM_ID).exists()

    @staticmethod
    def address(host):
        return f"http://{host}/page.html?secret=1#secret"

    private_window = "--incognito"

    @staticmethod
    def tab(number):
        return f"ctrl+{number}"


# Neither a first run nor the network gets between a test and its pages.
_FIREFOX_PREFERENCES = {
    "xpinstall.signatures.required": False,
    "extensions.autoDisableScopes": 0,
    "extensions.startupScanScopes": 15,
    "network.dns.forceResolve": "127.0.0.1",
    "network.captive-portal-service.enabled": False,
    "network.connectivity-service.enabled": False,
    "termsofuse.bypassNotification": True,
    "browser.aboutwelcome.enabled": False,
    "browser.shell.checkDefaultBrowser": False,
    "browser.tabs.warnOnClose": False,
    "browser.warnOnQuit": False,
    "datareporting.policy.dataSubmissionEnabled": False,
    "dom.security.https_first": False,
}


class Firefox(Browser):
    def __init__(self, place, sites):
        super().__init__(place, sites, place.folder / "home" / ".mozilla")
        self.profile = place.folder / "profile"
        self.profile.mkdir()
        (self.profile / "user.js").write_text("".join(
            f"user_pref({json.dumps(name)}, {json.dumps(value)});\n"
            for name, value in _FIREFOX_PREFERENCES.items()))
        self.command = ["firefox-esr", "--profile", str(self.profile)]

    def load_extension(self):
        self.prepare("manifests")
        extensions = self.profile / "extensions"
        extensions.mkdir()
        shutil.copy(pathlib.Path(os.environ["ORVANTA_PACKAGES"]) / "orvanta.xpi",
                    extensions / f"{GECKO_ID}.xpi")

    def address(self, host):
        return f"http://{host}:{self.sites.port}/page.html?secret=1#secret"

    private_window = "--private-window"

    @staticmethod
    def tab(number):
        return f"alt+{number}"
