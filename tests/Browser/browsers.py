"""Real browsers on a virtual desktop, each with its own home and the extension."""

import json
import os
import pathlib
import shutil

import desktop
import orvanta_end

EXTENSION = pathlib.Path(os.environ["ORVANTA_PACKAGES"]) / "extension"
CHROMIUM_ID = "odbokjgdmdbheojmnkbkjhabohflpkpk"
GECKO_ID = "orvanta@brindlework.com"


class Browser:
    def __init__(self, place, sites, folder):
        self.place = place
        self.sites = sites
        self.process = None
        self._folder = folder
        folder.mkdir(parents=True)  # As if it had been used before.

    def _let_in(self, manifests, **allowed):
        """What Orvanta writes for a browser once the person has agreed."""
        (self._folder / manifests).mkdir()
        (self._folder / manifests / f"{desktop.DOMAIN}.json").write_text(json.dumps({
            "name": desktop.DOMAIN, "description": "Orvanta", "type": "stdio",
            "path": os.environ["ORVANTA_BROWSER_HOST"], **allowed}))

    def address(self, host):
        return f"http://{host}:{self.sites.port}/page.html?secret=1#secret"

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
    private_window = "--incognito"
    tab = "ctrl+{}"

    def __init__(self, place, sites):
        super().__init__(place, sites, place.folder / "config" / "chromium")
        self.command = [
            "chromium", "--no-sandbox", "--no-first-run", "--disable-gpu", "--password-store=basic",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            "--host-resolver-rules=MAP *.test 127.0.0.1"]

    def load_extension(self):
        self._let_in("NativeMessagingHosts", allowed_origins=[f"chrome-extension://{CHROMIUM_ID}/"])
        self.command.append(f"--load-extension={EXTENSION}")


# Neither a first run nor the network gets between a test and its pages.
_FIREFOX_PREFERENCES = {
    "xpinstall.signatures.required": False,
    "extensions.autoDisableScopes": 0,
    "extensions.startupScanScopes": 15,
    "network.dns.forceResolve": "127.0.0.1",
    "termsofuse.bypassNotification": True,
    "browser.aboutwelcome.enabled": False,
    "datareporting.policy.dataSubmissionEnabled": False,
    "dom.security.https_first": False,
}


class Firefox(Browser):
    private_window = "--private-window"
    tab = "alt+{}"

    def __init__(self, place, sites):
        super().__init__(place, sites, place.folder / "home" / ".mozilla")
        self.profile = place.folder / "profile"
        self.profile.mkdir()
        (self.profile / "user.js").write_text("".join(
            f"user_pref({json.dumps(name)}, {json.dumps(value)});\n"
            for name, value in _FIREFOX_PREFERENCES.items()))
        self.command = ["firefox-esr", "--profile", str(self.profile)]

    def load_extension(self):
        self._let_in("native-messaging-hosts", allowed_extensions=[GECKO_ID])
        (self.profile / "extensions").mkdir()
        shutil.copy(pathlib.Path(os.environ["ORVANTA_PACKAGES"]) / "orvanta.xpi",
                    self.profile / "extensions" / f"{GECKO_ID}.xpi")
