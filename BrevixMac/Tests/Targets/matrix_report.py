# SPDX-License-Identifier: GPL-3.0-or-later
"""Turns the results of the target matrix into a page."""
import subprocess

HEADINGS = {"empty": "empty field", "middle": "caret in the middle", "selection": "selection",
            "script": "emoji, right-to-left", "long": "100 KiB"}

# Why a cell that fails stays as it is, by program and field, case and preference ("" stands for all).
EXPLANATIONS = {
    "Zenity/line|long|": "A one-line entry of GTK 3 holds 65,534 characters; direct insertion sees that its text was cut and "
                         "takes it back, and the paste is cut by the entry as one by hand would be.",
    "Konsole/terminal|long|": "Konsole asks its user whether to paste so much text, and gets no answer here.",
    "Falkon/multi-line||": "Falkon carries out many a Ctrl+V twice: those by which the field is prepared, without Brevix, were "
                           "doubled too.",
    "Falkon/line||": "As above: Falkon carries out many a Ctrl+V twice.",
    "Chromium as installed/password|password|": "Without accessibility a page's fields cannot be told apart, so a password field "
                                                "is pasted into like any other; with it (row above) it is refused.",
}

INTRODUCTION = """# Targets

What insertion did in real programs, written by `./run targets` (programs of Debian 12 under Xvfb and openbox) on {when};
load average {load} on two cores. Each cell is one insertion through the picker by keyboard. A time, from Return to
the text seen in the field, means that all of this held:

- an independent reader (another accessibility client, the web page itself, a program in the terminal) read exactly the
  expected text, with what was before and behind it;
- every type of a clipboard of several types was byte for byte as before;
- the window was active again, and a character typed then landed right behind the inserted text;
- no key was left pressed.

*direct* is an insertion by accessibility, *paste* one by the clipboard; *refused* is the message that password fields are
protected, with field and clipboard untouched. A dash is a case that the field does not have, *not run* a row that was left out
(programs may be named to measure some rows alone, so rows are of different moments). **FAILED** is explained below the tables.
That Ctrl+Z takes a direct insertion back is tested in Mousepad, FeatherPad and GNOME Text Editor (`endtoend_insertion`), editors
that draw their own text and fields that only pretend to be editable in `endtoend_browser` and `TrapsOfProgramsTest`.
"""

PREFERENCES = {"direct": "Preference: direct first (hybrid)", "paste": "Preference: paste"}


def cell(result):
    if result is None:
        return "–"
    if result.get("problem"):
        return f"**FAILED** {result['problem'].strip('; ')}"
    if result["method"] == "refused":
        return "refused"
    return f"{result['method']} {result['ms']:.0f} ms"


def explanation(key, method, case):
    for name in (f"{key}|{case}|{method}", f"{key}|{case}|", f"{key}||"):
        if name in EXPLANATIONS:
            return EXPLANATIONS[name]
    return None


def version(package):
    done = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    return done.stdout.decode().split(":")[-1].split("-")[0]


def rows(results):
    return sorted(((key, row) for key, row in results.items() if key), key=lambda item: item[1]["order"])


def render(results):
    about = results.get("", {})
    page = [INTRODUCTION.format(when=about.get("when", "?"), load=about.get("load", "?"))]
    failures = []
    for method, title in PREFERENCES.items():
        page.append(f"## {title}\n")
        page.append("| program | toolkit | field | " + " | ".join(HEADINGS.values()) + " |")
        page.append("|---" * (3 + len(HEADINGS)) + "|")
        for key, row in rows(results):
            page.append(line(key, row, method, failures))
        page.append("")
    page.append("## Failures\n")
    page += failures or ["None.", ""]
    return "\n".join(page).rstrip() + "\n"


def line(key, row, method, failures):
    cells = row.get(method, {})
    texts = []
    for case in HEADINGS:
        if not cells:
            texts.append("not run")
            continue
        result = cells.get(case) or (cells.get("password") if case == "empty" else None) or cells.get("start")
        texts.append("**FAILED**" if result and result.get("problem") else cell(result))
    for case, result in cells.items():
        if result.get("problem"):
            why = explanation(key, method, case) or "Not explained yet."
            failures.append(f"- {row['name']}, {row['field']}, {HEADINGS.get(case, case)}, {method}: "
                            f"{result['problem'].strip('; ')}. {result.get('said', '')} {why}".replace("  ", " "))
    return f"| {row['name']} {version(row['package'])} | {row['toolkit']} | {row['field']} | " + " | ".join(texts) + " |"
