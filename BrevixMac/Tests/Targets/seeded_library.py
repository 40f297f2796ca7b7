# SPDX-License-Identifier: GPL-3.0-or-later
"""Prompts for measuring, put into the local library while Brevix does not run."""
import json
import os
import pathlib
import sqlite3

WOMAN = "\U0001f469\u200d\U0001f680"
ACUTE = "e\u0301"


def _numbered(line, size):
    """Numbered copies of a line up to a size in bytes, so that a missing or doubled part shows."""
    text = ""
    number = 0
    while len(text.encode()) < size:
        number += 1
        text += line.format(number)
    return text


KIB_100 = 100 * 1024
# No title is the beginning of another, so that a title typed whole finds its prompt first.
TEXTS = {
    "zuluone": "Write a haiku about autumn, please.",
    "zulutwo": "First line of three.\n\n- second: \u00e4\u00f6\u00fc\n- third",
    "zuluthree": f"\u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd {WOMAN} \u0645\u0631\u062d\u0628\u0627 {ACUTE} \u65e5\u672c",
    "zulufour": _numbered("[{}] a sentence of a long text; ", KIB_100).rstrip(),
    "zulufive": _numbered("[{}] a line of a long text with some words in it\n", KIB_100).rstrip(),
    "zulusix": _numbered("[{}] some words of a text\n", 1000)[:1000],
}


def database_path():
    return pathlib.Path(os.environ["HOME"]) / ".local/share/brevix/cloud"


def add_prompts(texts):
    """Adds prompts, by title, to the library that a first start of Brevix has made."""
    file = next(path for path in database_path().iterdir() if path.suffix in (".db", ".sqlite", ".sqlite3"))
    with sqlite3.connect(file) as database:
        database.row_factory = sqlite3.Row
        sample = dict(database.execute("SELECT * FROM documents WHERE collection LIKE '%/prompts' LIMIT 1").fetchone())
        columns = ", ".join(sample)
        places = ", ".join(f":{name}" for name in sample)
        for number, (title, text) in enumerate(texts.items()):
            record = json.loads(sample["fields"])
            record["title"] = {"stringValue": title}
            record["text"] = {"stringValue": text}
            record["order"] = {"integerValue": str(1000 + number)}
            body = json.dumps(record, ensure_ascii=False, separators=(",", ":"), sort_keys=True).encode()
            database.execute(f"INSERT OR REPLACE INTO documents({columns}) VALUES({places})",
                             {**sample, "id": f"seeded-{number}", "fields": body})
