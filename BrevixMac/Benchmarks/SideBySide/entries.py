# SPDX-License-Identifier: GPL-3.0-or-later
"""The list that every program of the comparison is given: one-line entries, always the same."""
import random

_WORDS = {
    "verb": "Write Rewrite Shorten Translate Explain Summarise Review Compare Draft Outline Check Plan Describe Refactor "
            "Document Classify Extract Improve Answer Estimate".split(),
    "quality": "short friendly formal detailed careful simple technical persuasive neutral precise playful critical modern "
               "complete honest concise vivid structured polite sober".split(),
    "thing": "letter report summary email article speech proposal contract manual test function table interview invoice "
             "recipe poem review outline agenda answer".split(),
    "subject": "customers children managers engineers students neighbours lawyers doctors readers travellers gardeners "
               "teachers musicians investors volunteers beginners experts partners visitors suppliers".split(),
    "end": "in English, in three steps, with examples, without jargon, as a list, for the web, in one paragraph, with sources, "
           "under 200 words, for tomorrow".split(", "),
}


def lines(count):
    """Distinct lines of some 60 characters."""
    draw = random.Random(7)
    return [f"{draw.choice(_WORDS['verb'])} a {draw.choice(_WORDS['quality'])} {draw.choice(_WORDS['thing'])} for "
            f"{draw.choice(_WORDS['subject'])} {draw.choice(_WORDS['end'])} ({number})" for number in range(count)]


# As they are typed: short and long, many matches and few, one without any.
QUERIES = ("re", "rec", "reci", "recip", "recipe", "poem", "garden", "engineers", "table", "sum", "summary", "jargon",
           "200 words", "friendly", "(77", "(1234)", "neighbours", "in one", "travel", "zzqq")
