# SPDX-License-Identifier: GPL-3.0-or-later
"""What a query costs in a list of 10,000 lines: Brevix, rofi and fzf."""
import fcntl
import os
import pty
import re
import select
import struct
import subprocess
import termios
import time

import desktop_driver as desk
import entries
import figures

ENTRIES = 10_000
REPETITIONS = 3
WORDS = 6
# The key codes of the word that is typed into an open window.
WORD = {"r": 27, "e": 26, "c": 54, "i": 31, "p": 33}

COMMANDS = {"rofi": lambda query, file: ["rofi", "-dmenu", "-i", "-dump", "-filter", query, "-input", file],
            "fzf": lambda query, file: ["sh", "-c", f"exec fzf -i --filter \"$1\" <'{file}'", "sh", query]}


class Ranking:
    """Our ranking, in a process that holds the list as Brevix does."""

    def __init__(self, file):
        done = subprocess.run([os.environ["LINE_RANKING"], file, *entries.QUERIES], stdout=subprocess.PIPE, check=True)
        rows = [line.split(" ", 3) for line in done.stdout.decode().splitlines()]
        self.first = figures.Samples.of([float(row[0]) for row in rows])
        self.following = figures.Samples.of([float(row[1]) for row in rows])
        self.matches = {row[3]: int(row[2]) for row in rows}


class Process:
    """A program that is started for each query: with the list, and with an empty one."""

    def __init__(self, name, file, empty):
        command = COMMANDS[name]
        self.matches = {query: len(subprocess.run(command(query, file), stdout=subprocess.PIPE, check=False).stdout
                                   .splitlines()) for query in entries.QUERIES}
        whole, start = [], []
        for query in entries.QUERIES:
            whole += [self.time_of(command(query, file)) for _ in range(REPETITIONS)]
            start += [self.time_of(command(query, empty)) for _ in range(REPETITIONS)]
        self.whole = figures.Samples.of(whole)
        self.start = figures.Samples.of(start)
        # The start is the same for all queries, so its median is taken off each.
        self.without_start = figures.Samples.of([max(0.0, value - self.start.median) for value in whole])

    @staticmethod
    def time_of(command):
        start = time.monotonic()
        subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        return (time.monotonic() - start) * 1000


def typed_into(wm_class):
    """From a key to the repainted list in an open window that has the keyboard."""
    return figures.latency("typed", wm_class, WORDS, *WORD.values())[1]


def typed_into_brevix(brevix):
    brevix.press_hotkey()
    try:
        return typed_into("brevix")
    finally:
        desk.keys("Escape")
        desk.keys("Escape")


def typed_into_rofi(file):
    rofi = desk.Program("rofi", "-dmenu", "-i", "-input", file)
    try:
        desk.wait_for("rofi", lambda: desk.windows("rofi"), 15)
        time.sleep(1)
        return typed_into("rofi")
    finally:
        rofi.stop()


def typed_into_fzf(file):
    """fzf in a terminal: from a key to its new count of matches on that terminal."""
    values = []
    pid, terminal = pty.fork()
    if pid == 0:
        os.environ.update(TERM="xterm", LINES="30", COLUMNS="100")
        os.execlp("sh", "sh", "-c", f"exec fzf -i --no-color <'{file}'")
    try:
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 30, 100, 0, 0))
        wait_for_count(terminal)
        for _ in range(WORDS):
            for letter in WORD:
                values.append(time_of_key(terminal, letter.encode()))
            for _ in WORD:
                time_of_key(terminal, b"\x7f")
    finally:
        os.close(terminal)
        os.waitpid(pid, 0)
    return figures.Samples.of(values)


def wait_for_count(terminal, deadline=10):
    """Reads what is drawn until it has a count of matches and then nothing more for a moment; gives the count's moment."""
    drawn, moment = b"", None
    end = time.monotonic() + deadline
    while time.monotonic() < end:
        ready, _, _ = select.select([terminal], [], [], 0.08)
        if not ready:
            if moment:
                return moment
            continue
        drawn += os.read(terminal, 65536)
        if re.search(rb"\d+/%d" % ENTRIES, drawn):
            moment = time.monotonic()
    raise desk.Failure(f"fzf gave no count: {drawn[-200:]!r}")


def time_of_key(terminal, key):
    start = time.monotonic()
    os.write(terminal, key)
    return (wait_for_count(terminal) - start) * 1000


def table(ranking, rofi, fzf, typed):
    versions = [f"rofi {figures.version('rofi')}", f"fzf {figures.version('fzf')}"]
    lines = [f"| {ENTRIES:,} lines | Brevix | {' | '.join(versions)} |", "|---" * 4 + "|",
             f"| a query without the program's start, list just read | {ranking.first} | {rofi.without_start} | "
             f"{fzf.without_start} |",
             f"| the same, list read before | {ranking.following} | – | – |",
             f"| start of the program with an empty list | runs already | {rofi.start} | {fzf.start} |",
             f"| whole process for one query | – | {rofi.whole} | {fzf.whole} |",
             f"| key to the repainted list, window open | {typed['brevix']} | {typed['rofi']} | {typed['fzf']} |"]
    found = ", ".join(f"{sum(each.matches.values())} by {name}"
                      for name, each in (("Brevix", ranking), ("rofi", rofi), ("fzf", fzf)))
    lines.append(f"\n{len(entries.QUERIES)} queries of 2 to 10 characters; matches of all together: {found}.")
    return "\n".join(lines)
