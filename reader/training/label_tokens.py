#!/usr/bin/env python3
"""Labels every token of rendered references from the works' known fields.

    label_tokens.py CORPUS.jsonl CSL.json RENDERED.jsonl [--works train|heldout] > LABELLED.tsv

CORPUS is the development set (its "fields" are the truth); CSL holds the
same works as CSL-JSON, whose further parts (a genre, a report's number, a
series, a translator, the original date, the event) are labelled genre and
note, so that the reader tells them from other styles' own words; RENDERED holds
{"id", "style", "text"} lines, the same works written in other citation
styles. Each output line is "id TAB style TAB family TAB text TAB tokens",
the tokens as "begin:end:label" in the order the reader splits them
(reader/Features.cpp tokenizes the same way; the trainer checks it) with
byte offsets into the UTF-8 text. A rendering whose title cannot be found is
left out: a label sequence without its title would teach the wrong thing.

--works keeps the works the reader trains on, or the fifth of them it never
sees (by a hash of their ids): held-out scores are then on unseen styles and
unseen works alike.
"""
import hashlib
import json
import re
import sys
import unicodedata

LABELS = ["other", "author", "editor", "date", "title", "container", "volume", "issue", "pages",
          "publisher", "place", "edition", "doi", "url", "genre", "note"]

# The reader's tokens: an address or DOI whole, a run of digits, a word (with
# inner apostrophes and hyphens), or one other character.
TOKEN = re.compile(r"https?://\S+|doi:\s?\S+|\b10\.\d{4,}/\S+|\d+|[^\W\d_]+(?:['’\-][^\W\d_]+)*|\S", re.UNICODE)

MONTHS = {m.lower() for m in ["January", "February", "March", "April", "May", "June", "July", "August",
                                "September", "October", "November", "December", "Jan", "Feb", "Mar", "Apr",
                                "Jun", "Jul", "Aug", "Sep", "Sept", "Oct", "Nov", "Dec", "Spring", "Summer",
                                "Fall", "Autumn", "Winter"]}


def tokens_of(text):
    out = []
    at = 0
    while True:
        m = TOKEN.search(text, at)
        if not m:
            return out
        start, end = m.start(), m.end()
        # An address does not take the full stop (or comma) that ends it; that
        # character is a token of its own.
        if m.group().startswith(("http", "doi", "10.")):
            while end - start > 1 and text[end - 1] in ".,;)":
                end -= 1
        out.append([start, end])
        at = end


def norm(s):
    s = unicodedata.normalize("NFKC", s).lower()
    return s.replace("’", "'").replace("‘", "'").replace("–", "-").replace("—", "-")


def words(s):
    """The comparable words of a field value: tokens without punctuation."""
    return [norm(s[a:b]) for a, b in tokens_of(s) if re.match(r"\w", s[a:b])]


class Labeller:
    def __init__(self, text):
        self.text = text
        self.tokens = tokens_of(text)
        self.labels = ["other"] * len(self.tokens)
        self.keys = [norm(text[a:b]) for a, b in self.tokens]
        # A list's numbering ("[3]", "3.", "(3)") is no part of the work.
        self.start = 0
        m = re.match(r"\s*(\[\d+\]|\(\d+\)|\d+\.)\s", text)
        if m:
            while self.start < len(self.tokens) and self.tokens[self.start][1] <= m.end(1):
                self.start += 1
        # Positions of word tokens (punctuation is skipped when matching).
        self.word_at = [i for i, (a, b) in enumerate(self.tokens) if re.match(r"\w", text[a:b]) and i >= self.start]

    def free(self, i):
        return self.labels[i] == "other"

    def find_span(self, value_words, label, prefer_last=False):
        """Labels the first free run of word tokens equal to `value_words`,
        with the punctuation between them."""
        n = len(value_words)
        if n == 0:
            return False
        starts = range(len(self.word_at) - n + 1)
        if prefer_last:
            starts = reversed(list(starts))
        for k in starts:
            idx = self.word_at[k:k + n]
            if all(self.free(i) for i in idx) and [self.keys[i] for i in idx] == value_words:
                for i in range(idx[0], idx[-1] + 1):
                    if self.free(i):
                        self.labels[i] = label
                return True
        return False

    def label_token(self, value, label, after=0):
        """Labels the first free token equal to `value` from `after` on."""
        key = norm(value)
        for k in self.word_at:
            if k >= after and self.free(k) and self.keys[k] == key:
                self.labels[k] = label
                return k
        return None

    def names(self, people, label):
        """Each person's family name and given names (or initials) where they
        stand, and the joiners between them."""
        marked = []
        for p in people:
            family = words(p.get("family", ""))
            if not family:
                continue
            if not self.find_span(family, label):
                continue
            marked.append(label)
            given = words(p.get("given", ""))
            initials = {g[0] for g in given if g}
            # Given names or initials next to the family name, either side.
            for i, l in enumerate(self.labels):
                if l != label:
                    continue
                for j in (i - 1, i - 2, i - 3, i + 1, i + 2, i + 3):
                    if 0 <= j < len(self.tokens) and self.free(j):
                        key = self.keys[j]
                        compact = key.replace(".", "")
                        if key in given or (compact and compact.isalpha() and len(compact) <= 3
                                            and set(compact) <= initials):
                            self.labels[j] = label
        self.fill_between(label, {"and", "&", ",", ".", "et", "al", ";"})

    def fill_between(self, label, joiners):
        idx = [i for i, l in enumerate(self.labels) if l == label]
        if not idx:
            return
        for i in range(idx[0], idx[-1] + 1):
            if self.free(i) and self.keys[i] in joiners:
                self.labels[i] = label
        # "et al." right after the list.
        i = idx[-1] + 1
        while i < len(self.tokens) and self.free(i) and self.keys[i] in {",", "et", "al", "."}:
            if self.keys[i] == "." and (i == 0 or self.keys[i - 1] != "al"):
                break
            self.labels[i] = label
            i += 1

    def fill_gaps(self, label, widest):
        """The few words inside one part ("Report No. 126") take its label."""
        idx = [i for i, l in enumerate(self.labels) if l == label]
        for a, b in zip(idx, idx[1:]):
            if 1 < b - a <= widest + 1 and all(self.free(i) for i in range(a + 1, b)):
                for i in range(a + 1, b):
                    self.labels[i] = label

    def spans_between(self, label):
        """Punctuation inside a field's span takes the field's label."""
        for i in range(1, len(self.labels) - 1):
            if self.labels[i] == "other" and not re.match(r"\w", self.text[self.tokens[i][0]:self.tokens[i][1]]):
                if self.labels[i - 1] == self.labels[i + 1] == label:
                    self.labels[i] = label


def year_of(date):
    parts = (date or {}).get("date-parts") or [[]]
    return str(parts[0][0]) if parts[0] else ""


def label_extras(lab, work):
    """The parts of a work beyond the scored fields: what it is (its genre or
    medium, a report's number) and what is said of it (series, translator,
    original date, event, language, access date)."""
    for key in ("genre", "medium", "version", "number"):
        if work.get(key):
            lab.find_span(words(str(work[key])), "genre")
    for key in ("collection-title", "collection-number", "event", "event-title", "event-place", "language",
                "number-of-volumes", "status"):
        if work.get(key):
            lab.find_span(words(str(work[key])), "note")
    lab.names([p for p in work.get("translator", []) if "family" in p], "note")
    for key in ("original-date", "accessed"):
        year = year_of(work.get(key))
        if year:
            lab.label_token(year, "note")
    for name in ("genre", "note"):
        lab.fill_gaps(name, 2)


def label(entry, fields, work=None):
    lab = Labeller(entry)
    for key, value in (("doi", fields.get("doi")), ("url", fields.get("url"))):
        if not value:
            continue
        for i, k in enumerate(lab.keys):
            if value.lower() in k and lab.free(i):
                lab.labels[i] = key
    if not lab.find_span(words(fields.get("title", "")), "title"):
        return None
    title_at = lab.labels.index("title")
    lab.find_span(words(fields.get("container_title", "")), "container")
    lab.find_span(words(fields.get("publisher", "")), "publisher", prefer_last=True)
    lab.find_span(words(fields.get("publisher_place", "")), "place")
    lab.names(fields.get("authors", []), "author")
    lab.names(fields.get("editors", []), "editor")
    pages = fields.get("pages", "")
    if pages:
        first = re.match(r"[A-Za-z]*\d+", pages)
        if first:
            k = lab.label_token(first.group(), "pages", after=title_at)
            if k is not None:
                # "1190–204", "1190-1204": the dash and the last page.
                j = k + 1
                while j < len(lab.tokens) and lab.free(j) and (lab.keys[j] in {"-", "–"} or lab.keys[j].isdigit()):
                    lab.labels[j] = "pages"
                    if lab.keys[j].isdigit():
                        break
                    j += 1
    for key, name in (("volume", "volume"), ("issue", "issue")):
        if fields.get(key):
            for w in words(fields[key]):
                lab.label_token(w, name, after=title_at)
    year = fields.get("year", "")
    if year:
        m = re.match(r"\d{4}", year)
        if m:
            k = lab.label_token(m.group(), "date")
            if k is not None:
                for j in range(max(0, k - 4), min(len(lab.tokens), k + 5)):
                    if lab.free(j) and (lab.keys[j] in MONTHS or (lab.keys[j].isdigit() and len(lab.keys[j]) <= 2
                                                                  and abs(j - k) <= 3)):
                        lab.labels[j] = "date"
    edition = fields.get("edition", "")
    if edition:
        for i, key in enumerate(lab.keys):
            if lab.free(i) and re.match(r"\d+(st|nd|rd|th)?$", key) and key.startswith(edition.strip()[:1]):
                nxt = lab.keys[i + 1] if i + 1 < len(lab.keys) else ""
                nxt2 = lab.keys[i + 2] if i + 2 < len(lab.keys) else ""
                if nxt in {"ed", "edn", "edition"} or (nxt in {"st", "nd", "rd", "th"} and nxt2 in {"ed", "edn"}):
                    lab.labels[i] = "edition"
                    for j in (i + 1, i + 2):
                        if lab.keys[j] in {"ed", "edn", "edition", "st", "nd", "rd", "th"}:
                            lab.labels[j] = "edition"
    if work:
        label_extras(lab, work)
    for name in LABELS[1:]:
        lab.spans_between(name)
    return [[a, b, l] for (a, b), l in zip(lab.tokens, lab.labels)]


def heldout_work(work_id):
    return hashlib.sha256(work_id.encode("utf-8")).digest()[0] % 5 == 0


def main():
    works = sys.argv[sys.argv.index("--works") + 1] if "--works" in sys.argv else None
    csl = {w["id"]: w for w in json.load(open(sys.argv[2], encoding="utf-8"))}
    corpus = {}
    for line in open(sys.argv[1], encoding="utf-8"):
        if line.strip():
            d = json.loads(line)
            if works is None or heldout_work(d["id"]) == (works == "heldout"):
                corpus[d["id"]] = d
    kept = dropped = 0
    for line in open(sys.argv[3], encoding="utf-8"):
        r = json.loads(line)
        work = corpus.get(r["id"])
        if not work:
            continue
        tokens = label(r["text"], work["fields"], csl.get(r["id"]))
        if tokens is None:
            dropped += 1
            continue
        kept += 1
        text = r["text"]
        # Byte offsets, as the reader counts them.
        at = [len(text[:i].encode("utf-8")) for i in range(len(text) + 1)]
        triples = " ".join(f"{at[a]}:{at[b]}:{lab}" for a, b, lab in tokens)
        print("\t".join([r["id"], r["style"], str(work["expected_family"]), text, triples]))
    print(f"{kept} renderings labelled, {dropped} left out (title not found)", file=sys.stderr)


if __name__ == "__main__":
    main()
