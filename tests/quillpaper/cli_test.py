#!/usr/bin/env python3
"""quillpaper as people run it, with the files and faults they bring: line
ends of every system, UTF-16 exports, folders for files, full devices, links,
permissions, traces pointed at the wrong file. Each test says what fault it
would catch.

    cli_test.py --quillpaper build/quillpaper
"""
import argparse
import json
import os
import re
import stat
import subprocess
import sys
import tempfile
import unittest
import zipfile

QUILLPAPER = None
ONE = "Lee, A. (2001). One. Journal of Things, 1, 2."
TWO = "Smith, B. (2002). Two. Journal of Things, 3, 4."


def run(*args, stdin=None, cwd=None):
    return subprocess.run([QUILLPAPER, *args], input=stdin, capture_output=True, cwd=cwd)


class InputTest(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.path = os.path.join(self.dir.name, "refs.txt")

    def tearDown(self):
        self.dir.cleanup()

    def write(self, data):
        with open(self.path, "wb") as f:
            f.write(data)

    # Catches a file of old-Mac line ends read as one line.
    def test_every_kind_of_line_end(self):
        for end in (b"\n", b"\r\n", b"\r"):
            self.write((ONE + "\n").encode().replace(b"\n", end) + TWO.encode() + end + b"\r\n" + ONE.encode())
            done = run("refs", self.path)
            self.assertEqual(done.returncode, 0)
            self.assertEqual(done.stdout.decode().splitlines(), [ONE, TWO, ONE], repr(end))

    # Catches UTF-16 exports read as mojibake.
    def test_utf16_is_decoded(self):
        for codec in ("utf-16-le", "utf-16-be"):
            bom = b"\xff\xfe" if codec.endswith("le") else b"\xfe\xff"
            self.write(bom + ("Lee, A. (2001). Café. Journal of Things, 1, 2.\r\n" + TWO).encode(codec))
            done = run("refs", self.path)
            self.assertEqual(done.stdout.decode().splitlines(),
                             ["Lee, A. (2001). Café. Journal of Things, 1, 2.", TWO], codec)
            self.assertIn(b"UTF-16", done.stderr)

    # Catches a folder read as an empty list with success.
    def test_a_folder_is_an_error(self):
        done = run("refs", self.dir.name)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"is a folder", done.stderr)

    # Catches JSON that carries bytes that are not UTF-8.
    def test_json_is_always_utf8(self):
        self.write(b"Lee, A. (2001). Bad \xff byte. Journal of Things, 1, 2.\n" + ONE.encode() + b"\n")
        done = run("refs", self.path, "--format=json")
        lines = [json.loads(line) for line in done.stdout.decode("utf-8").splitlines()]
        self.assertEqual(len(lines), 2)
        self.assertIn("not UTF-8", lines[0]["problems"][0])
        self.assertEqual(lines[1]["problems"], [])

    # Catches a line too long to be a reference lost, or held whole in memory.
    def test_a_line_too_long_is_written_as_typed(self):
        long_line = b"x" * (3 << 20)
        self.write(ONE.encode() + b"\n" + long_line + b"\n" + TWO.encode() + b"\n")
        done = run("refs", self.path)
        self.assertEqual(done.stdout.split(b"\n"), [ONE.encode(), long_line, TWO.encode(), b""])
        self.assertIn(b"line 2 is longer than", done.stderr)
        done = run("refs", self.path, "--sort")
        self.assertEqual(done.returncode, 1)


class JobsTest(unittest.TestCase):
    # A list that takes every path: APA entries, other citation styles (the
    # learned reader), what cannot be read, a line too long, blank lines;
    # long enough that batches go round the threads many times.
    MIXED = [
        ONE,
        "Kernis MH, Cornell DP, Sun CR. There's more to self-esteem. J Pers Soc Psychol. 1993;65:1190-204.",
        "[3] M. H. Kernis et al., \u201cThere\u2019s more to self-esteem,\u201d J. Pers. Soc. Psychol., vol. 65, "
        "pp. 1190\u20131204, 1993.",
        "",
        "nothing to read here",
        TWO,
        "Shotton, M. A. (1989). Computer addiction? A study of computer dependency. Taylor & Francis.",
    ]

    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.path = os.path.join(self.dir.name, "refs.txt")
        lines = []
        for k in range(60):
            lines += [entry.replace("One", "One %d" % k) for entry in self.MIXED]
        lines.insert(200, "x" * (3 << 20))
        with open(self.path, "w") as f:
            f.write("\n".join(lines) + "\n")

    def tearDown(self):
        self.dir.cleanup()

    # Catches entries reordered, lost or doubled by the threads, reports out
    # of step with the entries, and a pipeline shared between threads.
    def test_threads_change_nothing_but_the_time(self):
        for options in ([], ["--format=json"], ["--sort", "--format=html"]):
            if "--sort" in options:
                with open(self.path) as f:
                    kept = [l for l in f.read().split("\n") if len(l) < 1000]
                with open(self.path, "w") as f:
                    f.write("\n".join(kept))
            one = run("refs", self.path, *options)
            self.assertEqual(one.returncode, 0, one.stderr[-300:])
            for jobs in ("2", "3"):
                many = run("refs", self.path, "--jobs=" + jobs, *options)
                self.assertEqual(many.returncode, 0)
                self.assertEqual(many.stdout, one.stdout, (options, jobs))
                self.assertEqual(many.stderr, one.stderr, (options, jobs))
        self.assertIn(b"line 5: kept as typed", one.stderr)

    # Catches a number of threads that is no number taken for one.
    def test_jobs_is_a_positive_number(self):
        for bad in ("0", "-2", "two", "", "65"):
            done = run("refs", self.path, "--jobs=" + bad)
            self.assertEqual(done.returncode, 2, bad)
            self.assertIn(b"--jobs must be", done.stderr)


class OutputTest(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.refs = os.path.join(self.dir.name, "refs.txt")
        with open(self.refs, "w") as f:
            f.write(ONE + "\n" + TWO + "\n")

    def tearDown(self):
        self.dir.cleanup()

    def path(self, name):
        return os.path.join(self.dir.name, name)

    # Catches output lost on a full device with success.
    def test_a_full_standard_output_fails(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([QUILLPAPER, "refs", self.refs], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"cannot write to standard output", done.stderr)

    # Catches a device or a folder replaced by the output.
    def test_only_regular_files_are_replaced(self):
        for target in ("/dev/null", self.dir.name):
            done = run("refs", self.refs, "--output=" + target)
            self.assertEqual(done.returncode, 1, target)
            self.assertIn(b"not a regular file", done.stderr)
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))

    # Catches a link replaced instead of its target, a mode lost, the umask ignored.
    def test_links_modes_and_the_umask(self):
        target, link = self.path("real.txt"), self.path("link.txt")
        with open(target, "w") as f:
            f.write("old\n")
        os.chmod(target, 0o600)
        os.symlink(target, link)
        self.assertEqual(run("refs", self.refs, "--output=" + link).returncode, 0)
        self.assertTrue(os.path.islink(link))
        with open(target) as f:
            self.assertEqual(f.read().splitlines(), [ONE, TWO])
        self.assertEqual(stat.S_IMODE(os.stat(target).st_mode), 0o600)
        hard = self.path("hard.txt")
        os.link(target, hard)
        self.assertEqual(run("refs", self.refs, "--output=" + hard, "--sort").returncode, 0)
        self.assertEqual(os.stat(hard).st_ino, os.stat(target).st_ino, "the hard link stays one file")
        fresh = self.path("fresh.txt")
        old = os.umask(0o027)
        try:
            self.assertEqual(run("refs", self.refs, "--output=" + fresh).returncode, 0)
        finally:
            os.umask(old)
        self.assertEqual(stat.S_IMODE(os.stat(fresh).st_mode), 0o640)

    # Catches a failed write that leaves a half file or a temporary one.
    def test_a_failed_write_leaves_the_old_file(self):
        kept = self.path("kept.txt")
        with open(kept, "w") as f:
            f.write("old\n")
        done = run("refs", self.refs, "--output=" + kept, "--format=nonsense")
        self.assertEqual(done.returncode, 2)
        with open(kept) as f:
            self.assertEqual(f.read(), "old\n")
        self.assertEqual(sorted(os.listdir(self.dir.name)), ["kept.txt", "refs.txt"])


class DiagnosticsTest(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.refs = os.path.join(self.dir.name, "refs.txt")
        with open(self.refs, "w") as f:
            f.write(ONE + "\n")

    def tearDown(self):
        self.dir.cleanup()

    # Catches a trace that overwrites the list it reads, or fails in silence.
    def test_traces_that_cannot_be_written_are_said(self):
        done = run("refs", self.refs, "--trace=" + self.refs)
        self.assertEqual(done.returncode, 2)
        with open(self.refs) as f:
            self.assertEqual(f.read(), ONE + "\n")
        done = run("refs", self.refs, "--trace=" + os.path.join(self.dir.name, "missing", "trace.txt"))
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"cannot write the trace", done.stderr)
        done = run("refs", self.refs, "--trace=/dev/full")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"the trace could not be written", done.stderr)


class PaperFileTest(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()

    def tearDown(self):
        self.dir.cleanup()

    def paper(self, name, *args, env=None):
        path = os.path.join(self.dir.name, name)
        done = subprocess.run([QUILLPAPER, "new", path, "--title=Sleep", "--author=Ann Lee", *args],
                              capture_output=True, env=env, cwd=self.dir.name)
        self.assertEqual(done.returncode, 0, done.stderr)
        return path

    # Catches zip entry times written in the machine's time zone.
    def test_the_same_bytes_in_every_time_zone(self):
        files = [self.paper(f"{n}.docx", env={**os.environ, "TZ": tz})
                 for n, tz in enumerate(["UTC", "Asia/Tokyo", "America/New_York"])]
        contents = [open(f, "rb").read() for f in files]
        self.assertEqual(contents[0], contents[1])
        self.assertEqual(contents[0], contents[2])
        with zipfile.ZipFile(files[1]) as z:
            self.assertEqual({i.date_time for i in z.infolist()}, {(1980, 1, 1, 0, 0, 0)})

    # Catches settings in an order Word's schema does not allow (it may drop them or offer a repair).
    def test_settings_follow_the_schema_order(self):
        with zipfile.ZipFile(self.paper("thesis.docx", "--paper-type=2")) as z:  # its contents ask for updateFields
            settings = z.read("word/settings.xml").decode()
        order = ["w:zoom", "w:defaultTabStop", "w:characterSpacingControl", "w:updateFields", "w:compat"]
        found = [settings.index("<" + name) for name in order]
        self.assertEqual(found, sorted(found))

    # Catches a 6th-edition running head that ignores --short-title or runs
    # past APA's 50 characters without a word, or a head stored per header.
    def test_the_running_head_is_the_short_title(self):
        long_title = "The Effects of Sleep Deprivation on Working Memory in Older Adults Living Alone"
        done = subprocess.run([QUILLPAPER, "new", "long.docx", "--edition=6", "--title=" + long_title],
                              capture_output=True, text=True, cwd=self.dir.name)
        self.assertIn("longer than APA's 50 characters: give a --short-title", done.stderr)
        done = subprocess.run([QUILLPAPER, "new", "short.docx", "--edition=6", "--title=" + long_title,
                               "--short-title=Sleep and memory"], capture_output=True, text=True, cwd=self.dir.name)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertNotIn("50 characters", done.stderr)
        with zipfile.ZipFile(os.path.join(self.dir.name, "short.docx")) as z:
            headers = [z.read(n).decode() for n in z.namelist() if n.startswith("word/header")]
            custom = z.read("docProps/custom.xml").decode()
        self.assertIn(">SLEEP AND MEMORY<", custom)
        self.assertTrue(headers)
        for header in headers:
            self.assertIn("DOCPROPERTY RunningHead", header)
            self.assertIn(">SLEEP AND MEMORY<", header)

    # Catches placeholders that stay in Word once typed into, or take one line only:
    # they are rich-text controls that go away when edited.
    def test_placeholders_go_away_when_typed_into(self):
        with zipfile.ZipFile(self.paper("p.docx", "--edition=6")) as z:
            xml = z.read("word/document.xml").decode()
        controls = re.findall(r"<w:sdtPr>.*?</w:sdtPr>", xml)
        self.assertGreater(len(controls), 5)
        for props in controls:
            self.assertIn("<w:temporary/><w:showingPlcHdr/>", props)
            self.assertNotIn("<w:text/>", props)

    # Catches the library's "/trace" switch taken for the output file's name.
    def test_the_trace_switch_names_no_file(self):
        done = subprocess.run([QUILLPAPER, "new", "out.docx", "/trace"], capture_output=True, cwd=self.dir.name)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(zipfile.is_zipfile(os.path.join(self.dir.name, "out.docx")))


def main():
    global QUILLPAPER
    ap = argparse.ArgumentParser()
    ap.add_argument("--quillpaper", required=True)
    args, rest = ap.parse_known_args()
    QUILLPAPER = os.path.abspath(args.quillpaper)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
