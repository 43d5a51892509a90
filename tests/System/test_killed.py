"""Killed at any moment, Orvanta loses at most what it had not saved, and goes on from there.

ORVANTA_TEST_SEED repeats the moments of an earlier run.
"""

import os
import random
import time

import case
import desktop

KILLS = 8

# For the distance between what is done here and what the test sees of it.
MARGIN = 0.5


class Killed(case.SystemTest):
    def test_at_most_five_seconds_are_lost_at_each_kill(self):
        seed = int(os.environ.get("ORVANTA_TEST_SEED") or time.time_ns() % 1_000_000)
        print(f"ORVANTA_TEST_SEED={seed}", flush=True)
        moments = random.Random(seed)
        windows = [self.desktop.launch_xterm(), self.desktop.launch_mousepad()]
        before = {}
        for kill in range(KILLS):
            # Every fourth time nothing changes in front: only the clock makes it save.
            undisturbed = kill % 4 == 3
            length = moments.uniform(6, 9) if undisturbed else moments.uniform(1, 5)
            spawned = time.monotonic()
            due = saved = began = self.start()
            while (due := due + moments.uniform(0.4, 2.5)) < began + length and not undisturbed:
                desktop.sleep_until(due)
                switched = self.desktop.activate(windows[0])
                windows.reverse()
                # A switch just before the end may find it still writing.
                if began + length - switched > MARGIN:
                    saved = switched
            desktop.sleep_until(began + length)
            self.assertTrue(self.orvanta.is_running())
            ended = time.monotonic()
            self.orvanta.process.kill()
            self.orvanta.wait()

            # SQLite must recover the copy from the write-ahead log alone.
            copy = case.Store(self.desktop.folder / f"killed-{kill}" / "store")
            self.store.copy_to(copy.path)
            self.assertEqual((copy.integrity(), self.store.integrity()), ("ok", "ok"))
            after = self.store.history_seconds()
            self.assertEqual(copy.history_seconds(), after)
            for key, seconds in before.items():
                self.assertGreaterEqual(after[key], seconds, f"{key} fell")
            for key, seconds in self.store.session_seconds().items():
                self.assertAlmostEqual(after.get(key, 0), seconds, delta=0.001, msg=key)

            gained = sum(after.values()) - sum(before.values())
            lost = ended - began - gained
            print(f"kill {kill} after {ended - began:.1f} s: {lost:.2f} s lost", flush=True)
            self.assertLessEqual(gained, ended - spawned + 0.05, "more than has passed")
            self.assertLessEqual(lost, min(case.SAVE_INTERVAL, ended - saved) + MARGIN)
            before = after
