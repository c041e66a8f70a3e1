#!/usr/bin/env python3
"""The citation styles the reader trains on and those it never sees.

    styles.py train|heldout [STYLE_DIR]

Styles are Debian's CSL styles in English (no default locale, or an English
one). The held-out styles are named: common styles of other families than
the trained ones' nearest relatives, so that their scores say how the reader
does on a style it has not met. The trained styles are every 12th of the rest
in name order (deterministic, about 180), the best-known styles always among them.
"""
import os
import re
import sys

STYLE_DIR = "/usr/share/citation-style-language/styles"

HELD_OUT = [
    "harvard-cite-them-right",
    "nature",
    "american-chemical-society",
    "chicago-note-bibliography",
    "elsevier-vancouver",
    "springer-basic-author-date",
    "the-lancet",
    "american-sociological-association",
    "council-of-science-editors",
    "taylor-and-francis-chicago-author-date",
]

ALWAYS = [
    "modern-language-association",
    "chicago-author-date",
    "vancouver",
    "ieee",
    "harvard-anglia-ruskin-university",
    "american-medical-association",
    "apa",
    "apa-6th-edition",
    "american-political-science-association",
    "bmj",
    "cell",
    "science",
    "turabian-fullnote-bibliography",
    "elsevier-harvard",
    "apa-5th-edition",
]


def english(path):
    with open(path, encoding="utf-8") as f:
        head = f.read(4000)
    m = re.search(r'default-locale="([^"]+)"', head)
    return m is None or m.group(1).startswith("en")


def main():
    which = sys.argv[1]
    folder = sys.argv[2] if len(sys.argv) > 2 else STYLE_DIR
    if which == "heldout":
        print("\n".join(HELD_OUT))
        return
    names = sorted(n[:-4] for n in os.listdir(folder) if n.endswith(".csl"))
    held = set(HELD_OUT)
    # Relatives of a held-out style ("nature-no-et-al") are held out with it.
    rest = [n for n in names if not any(n.startswith(h) for h in held) and english(os.path.join(folder, n + ".csl"))]
    chosen = set(ALWAYS) | set(rest[::12])
    print("\n".join(sorted(n for n in chosen if n in rest)))


if __name__ == "__main__":
    main()
