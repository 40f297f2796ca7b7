# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs in a terminal and writes down every byte it is given: keep_input.py FILE"""
import os
import pathlib
import sys
import tty

file = pathlib.Path(sys.argv[1])
tty.setcbreak(0)
with open(file, "ab", buffering=0) as received:
    file.with_name(file.name + ".ready").touch()
    while data := os.read(0, 65536):
        received.write(data)
