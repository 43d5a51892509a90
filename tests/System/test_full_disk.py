"""A full disk costs nothing but patience: what could not be written is written later."""

import contextlib
import ctypes
import os
import pathlib
import subprocess
import time

import case
import desktop

_CLONE_NEWNS, _CLONE_NEWUSER = 0x00020000, 0x10000000


def enter_mount_namespace():
    """Mounts made from here on are this process's own, and vanish with it."""
    user, group = os.getuid(), os.getgid()
    if ctypes.CDLL(None).unshare(_CLONE_NEWNS | (_CLONE_NEWUSER if user else 0)) != 0:
        raise desktop.DesktopError("a small file system cannot be mounted here: the test needs "
                                   "root, or user namespaces")
    if user:
        pathlib.Path("/proc/self/setgroups").write_text("deny")
        pathlib.Path("/proc/self/uid_map").write_text(f"0 {user} 1")
        pathlib.Path("/proc/self/gid_map").write_text(f"0 {group} 1")
    subprocess.run(["mount", "--make-rprivate", "/"], check=True)


class FullDisk(case.SystemTest):
    def setUp(self):
        enter_mount_namespace()
        super().setUp()
        data = self.desktop.environment["XDG_DATA_HOME"]
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=1m,mode=0700", "tmpfs", data],
                       check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", data], check=True)
        self.filler = pathlib.Path(data) / "filler"

    def fill(self):
        with self.filler.open("ab", buffering=0) as file:
            # Where there is no room for much, there may be for less.
            for size in (65536, 4096, 1):
                with contextlib.suppress(OSError):
                    while True:
                        file.write(bytes(size))

    def test_all_is_written_once_there_is_room_again(self):
        windows = [self.desktop.launch_xterm(), self.desktop.launch_mousepad()]
        began = self.start()
        desktop.wait_until(self.store.total, "a save")

        def behind():
            return time.monotonic() - began - self.store.total()

        def no_save_finds_room():
            """Saves at each change of focus, until none of them reaches the disk any more."""
            windows.reverse()
            self.desktop.activate(windows[0])
            self.fill()
            return behind() > case.SAVE_INTERVAL + 2

        desktop.wait_until(no_save_finds_room, "a save that finds no room", seconds=60, every=0.5)
        self.assertEqual(self.store.integrity(), "ok")
        self.filler.unlink()
        desktop.wait_until(lambda: behind() <= case.SAVE_INTERVAL + case.TOLERANCE,
                           "the seconds of the time without room", seconds=case.SAVE_INTERVAL * 3)
        self.count("all", began)
        self.ask_to_end()
        self.assertEqual(self.store.integrity(), "ok")
        self.assertAlmostEqual(self.store.total(), self.due["all"], delta=case.TOLERANCE)
