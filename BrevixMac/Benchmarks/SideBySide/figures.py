# SPDX-License-Identifier: GPL-3.0-or-later
"""Samples in milliseconds and how they are written."""
import os
import pathlib
import re
import statistics
import subprocess

LATENCY = os.environ["DESKTOP_LATENCY"]


class Samples:
    """Median, 95th percentile and number of measurements in milliseconds."""

    def __init__(self, median, high, count):
        self.median, self.high, self.count = median, high, count

    @classmethod
    def of(cls, values):
        ordered = sorted(values)
        return cls(statistics.median(ordered), ordered[min(len(ordered) - 1, int(0.95 * len(ordered)))], len(ordered))

    def __str__(self):
        return f"{milliseconds(self.median)} ({milliseconds(self.high)}), n = {self.count}"


def milliseconds(value):
    return f"{value:.2f} ms" if value < 10 else f"{value:.1f} ms" if value < 100 else f"{value:.0f} ms"


def latency(*arguments):
    """What desktop_latency measures: to the first painting, and until it was quiet."""
    done = subprocess.run([LATENCY, *map(str, arguments)], stdout=subprocess.PIPE, check=True, timeout=200)
    found = re.findall(r"median +([\d.]+) ms +95 % +([\d.]+) ms +\((\d+) runs\)", done.stdout.decode())
    return [Samples(float(median), float(high), int(count)) for median, high, count in found]


def proportional_memory(pids):
    """PSS of processes in MiB: memory that several programs share counts in parts."""
    total = 0
    for pid in pids:
        text = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
        total += next(int(line.split()[1]) for line in text.splitlines() if line.startswith("Pss:"))
    return total / 1024


def descendants(pid):
    """A process with everything it has started."""
    parents = {}
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                parents[int(entry.name)] = int((entry / "stat").read_text().rsplit(")", 1)[1].split()[1])
            except (FileNotFoundError, ProcessLookupError):
                continue
    found = [pid]
    for each in found:
        found += [child for child, parent in parents.items() if parent == each]
    return found


def version(package):
    done = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], stdout=subprocess.PIPE, check=True)
    return done.stdout.decode().split(":")[-1].split("-")[0]
