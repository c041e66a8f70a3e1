"""The Python binding over the library's C interface."""

import gc
import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import quillformatapa as qfa

PUBLIC_CLASSES = ["Main2", "Periodical", "NonPeriodical", "Esource", "TableWord", "TableModelComparison",
                  "TableLisrel", "TableCorrelation", "TableAnova", "TableNoncanonical", "TableRegression",
                  "TableHierarchRegression", "TableMultilevelModel"]

# Main2's interface in dispatch order: name, kind, and its parameters as
# (name, by reference, optional).
MAIN2 = [
    ("Execute", "method", [("command", True, False), ("theParam", False, True)]),
    ("ReferenceBuilder", "propertyGet",
     [("whichType", False, False), ("formatterSettings", False, False), ("productName", False, False)]),
    ("getMetaData", "method", [("obj", False, False)]),
    ("IntArray", "method", [("words", True, False), ("elements", False, False)]),
    ("getStartupFormSettings", "method",
     [("theSectionInstructions", True, False), ("theTitleInstructions", True, False),
      ("postGradIndices", True, False), ("defaultAlwaysOn", True, False), ("defaultPostgrad", True, False),
      ("defaultPaperType", True, False)]),
    ("firstItalicizedInReferenceIsTitle", "method", [("str", False, False)]),
    ("ReferenceIsInFormatType", "method",
     [("str", False, False), ("title", True, False), ("decoratedStrType", False, False),
      ("controller", False, False)]),
    ("GetReferenceType", "method",
     [("entry", False, False), ("decoratedStr", True, False), ("subTitle", True, False),
      ("controller", False, False)]),
    ("InitializeBuilder", "method", []),
    ("StartNewChapter", "method", []),
    ("UpdateFrontMatter", "propertyGet", []),
    ("buildInstruction", "method", [("caption", False, False), ("instruction", False, True)]),
    ("buildPageHeader", "method", [("caption", False, False), ("instruction", False, False)]),
    ("Add", "method", [("key", False, False), ("value", False, False)]),
    ("addHeadings", "method", [(name, False, False) for name in
                               ("chapter", "heading1", "heading2", "heading3", "heading4")]),
    ("buildStyle", "method", [(name, False, True) for name in
                              ("centered", "indented", "bold", "italic", "underline", "doubleSpace",
                               "extraLineBefore")]),
    ("TableFormMetaData", "propertyGet", [("ButtonNames", True, False), ("ButtonTooltips", True, False)]),
    ("TableTemplate", "propertyGet", [("buttonClickedIndex", False, False), ("metadata", True, False)]),
]


class Recorder:
    """A host object that writes down every call the library makes on it."""

    def __init__(self, **answers):
        self.calls = []
        self._answers = answers

    def __getattr__(self, name):
        if name.startswith("_"):
            raise AttributeError(name)

        def member(*args, **kwargs):
            self.calls.append((name, args, kwargs))
            return self._answers.get(name)

        return member


class Controller:
    """The template's controller, as the classifier asks it: member names in
    another case than the library's."""

    def isyear(self, text):
        return text.strip("()").isdigit()

    def ISPAGE(self, text):
        return text.replace("-", "").isdigit()


class Dictionary:
    def __init__(self):
        self.Item = {}

    def exists(self, key):
        return key in self.Item

    def add(self, key, value):
        self.Item[key] = value


def lib():
    return qfa.library()


class ClassFactoryTest(unittest.TestCase):
    def test_every_public_class_by_name(self):
        self.assertEqual(lib().classes, ["QuillFormatAPA." + c for c in PUBLIC_CLASSES])
        for name in PUBLIC_CLASSES:
            with self.subTest(name=name):
                self.assertEqual(lib().create("QuillFormatAPA." + name).type_name, name)
                factory = lib().class_object("quillformatapa." + name.lower())
                self.assertEqual(factory.ClassName, "QuillFormatAPA." + name)
                self.assertEqual(factory.CreateInstance().type_name, name)

    def test_unknown_class(self):
        with self.assertRaises(qfa.AutomationError) as caught:
            lib().create("QuillFormatAPA.Nothing")
        self.assertEqual(caught.exception.number, 429)

    def test_can_unload_once_every_object_is_released(self):
        main = qfa.Main2()
        table = main.TableTemplate(2, qfa.ByRef([""] * 14))
        self.assertEqual(table.type_name, "TableCorrelation")
        del main
        gc.collect()
        lib().close()  # the diagnostics service the library holds goes too
        try:
            self.assertFalse(lib().can_unload_now())
            del table
            self.assertTrue(lib().can_unload_now())
        finally:
            lib().use_diagnostics(lib().diagnostics)


class LateBoundCallTest(unittest.TestCase):
    def setUp(self):
        self.main = qfa.Main2()

    def tearDown(self):
        del self.main  # unittest keeps finished tests alive; their objects should not be

    def test_python_values_in_and_out(self):
        self.assertEqual(self.main.buildInstruction("Title"), "0Title")
        self.assertEqual(self.main.buildPageHeader("", 306), "306")
        self.assertIs(self.main.UpdateFrontMatter, False)
        self.assertIsInstance(self.main.firstItalicizedInReferenceIsTitle("A. Author (2001). Title."), bool)

    def test_named_arguments(self):
        fields = self.main.buildStyle(centered=False, indented=True, BOLD=True).split("\b")
        self.assertEqual(fields, ["False", "True", "True", "False", "False", "True", "False"])
        self.assertEqual(self.main.buildInstruction(instruction=7, caption="Abstract"), "7Abstract")

    def test_by_reference_arguments(self):
        words = qfa.ByRef()
        self.main.IntArray(words, [3, 1, 2])
        self.assertEqual(words.value, [3, 1, 2])
        sections, titles, postgrad, on, postgrad_on = (qfa.ByRef() for _ in range(5))
        paper_type = qfa.ByRef(0)
        self.main.getStartupFormSettings(sections, titles, postgrad, on, postgrad_on, paper_type)
        self.assertIn("Abstract", [s.lstrip("-0123456789") for s in sections.value])
        self.assertEqual(len(titles.value), 4, "title fields for each of the four paper types")
        self.assertIsInstance(paper_type.value, int)

    def test_classifier_calls_back_into_python(self):
        decorated, subtitle = qfa.ByRef(""), qfa.ByRef("")
        kind = self.main.GetReferenceType(
            "Smith, J. (2001). Memory and sleep. Journal of Sleep, 12(3), 45-67.", decorated, subtitle, Controller())
        self.assertEqual(kind, 1)

    def test_errors_come_back_as_numbers(self):
        cases = [
            ("unknown member", lambda: self.main.Render(), 438),
            ("missing argument", lambda: self.main.buildPageHeader("Title"), 449),
            ("not a number", lambda: self.main.buildInstruction("Title", "three"), 13),
            ("overflow", lambda: self.main.buildInstruction("Title", 70000), 6),
            ("unknown named argument", lambda: self.main.buildStyle(shadow=True), 448),
            ("not an object", lambda: self.main.getMetaData("dictionary"), 424),
            ("too many arguments", lambda: self.main.buildStyle(*[True] * 8), 450),
            ("writing a read-only property", lambda: setattr(self.main, "UpdateFrontMatter", True), 450),
            ("a property read with arguments it lacks", lambda: self.main.TableTemplate(1), 449),
        ]
        for what, call, number in cases:
            with self.subTest(what):
                with self.assertRaises(qfa.AutomationError) as caught:
                    call()
                self.assertEqual(caught.exception.number, number)
                self.assertTrue(caught.exception.description)


class HostObjectTest(unittest.TestCase):
    def test_a_python_dictionary_object_receives_the_settings(self):
        settings = Dictionary()
        qfa.Main2().getMetaData(settings)
        self.assertEqual(settings.Item["MarginTop"], "72")
        self.assertIn(1, settings.Item, "integer keys stay integers")

    # The edition is a key like any other: the 7th edition's level 3 heading
    # is flush left in bold italics, the 6th's indented in bold.
    def test_the_edition_is_a_key_of_the_settings(self):
        records = {}
        for edition in (None, 6, 7):
            settings = Dictionary()
            if edition:
                settings.Item["APAEdition"] = edition
            qfa.Main2().getMetaData(settings)
            records[edition] = settings.Item["headings"][3].split("\x08")[:4]
        self.assertEqual(records[None], ["False", "True", "True", "False"])
        self.assertEqual(records[6], records[None])
        self.assertEqual(records[7], ["False", "False", "True", "True"])

    def test_python_errors_reach_the_diagnostics_service(self):
        class Refusing(Dictionary):
            def add(self, key, value):
                raise qfa.AutomationError(457, "full")

            def exists(self, key):
                return False

        service = lib().diagnostics
        before = len(service.errors)
        qfa.Main2().getMetaData(Refusing())
        reported = service.errors[before:]
        self.assertTrue(reported)
        self.assertEqual((reported[0]["number"], reported[0]["description"]), (457, "full"))

    def test_builder_calls_with_named_arguments(self):
        page = Recorder()
        section = Recorder(addPage=page)
        builder = Recorder(AddSection=section, part=True, PaperType=3, UserConfigurationValue="Sleep",
                           outputTemplate=True)
        qfa.Main2().Execute("InitializeBuilder", builder)
        sections = [c for c in builder.calls if c[0] == "AddSection"]
        self.assertTrue(sections)
        self.assertIn("pageHeader", sections[0][2], "the header comes as a named argument")
        self.assertTrue(any(name == "addText" for name, _, _ in page.calls))


class Thing:
    """A host object with a bit of everything the library may ask of one."""

    def __init__(self):
        self.Title = "Sleep"
        self.items = ["a", "b", "c"]
        self.settings = {"Margin": 72}

    def greet(self, name, greeting="Hello"):
        return f"{greeting}, {name}"

    def double(self, n):
        n.value = n.value * 2

    def fail(self, kind):
        if kind == "value":
            raise ValueError("no such thing")
        raise qfa.AutomationError(457, "taken")

    def me(self):
        return self

    def nothing(self):
        return None


class ThreadTest(unittest.TestCase):
    # Catches threads that share the diagnostics service and call back Python
    # host objects at once crashing the library or losing an answer.
    def test_threads_each_with_their_own_main2(self):
        import threading
        failures = []

        def work():
            try:
                for _ in range(20):
                    main = qfa.Main2()
                    settings = Dictionary()
                    main.getMetaData(settings)
                    if main.buildInstruction("Title", 3) != "3Title" or settings.Item.get("MarginTop") != "72":
                        failures.append("a wrong answer")
            except Exception as e:  # pragma: no cover - reported below
                failures.append(repr(e))

        threads = [threading.Thread(target=work) for _ in range(8)]
        for t in threads:
            t.start()
        for t in threads:
            t.join()
        self.assertEqual(failures, [])


class InterruptTest(unittest.TestCase):
    # Catches Ctrl-C or sys.exit inside a host object swallowed by the binding
    # (the library then went on with errors that had nothing to do with it).
    def test_keyboard_interrupt_in_a_callback_reaches_the_caller(self):
        for raised in (KeyboardInterrupt, SystemExit):
            class Interrupting(Dictionary):
                def add(self, key, value):
                    raise raised()

                def exists(self, key):
                    return False

            with self.assertRaises(raised):
                qfa.Main2().getMetaData(Interrupting())
            # The next call runs as usual.
            self.assertEqual(qfa.Main2().buildInstruction("Title", 3), "3Title")


class ExtremeValuesTest(unittest.TestCase):
    # Catches values the binding could not pass: a number beyond any double,
    # an array too long for the library's 16-bit count.
    def test_a_number_too_large_is_an_overflow_error(self):
        with self.assertRaises(qfa.AutomationError) as caught:
            qfa.Main2().buildInstruction("Title", 10**400)
        self.assertEqual(caught.exception.number, 6)

    def test_an_array_too_long_comes_back_empty_with_the_error_reported(self):
        words = qfa.ByRef()
        before = len(lib().diagnostics.errors)
        qfa.Main2().IntArray(words, list(range(32769)))
        self.assertEqual(words.value, [])
        self.assertEqual(lib().diagnostics.errors[before]["number"], 6)


class HostObjectRoundTripTest(unittest.TestCase):
    """Python objects called through the library, the way the library calls them."""

    def setUp(self):
        self.thing = Thing()
        # A reference to the library's host object for `thing`, driven through qfa_invoke.
        self.host = qfa.Dispatch(lib(), lib()._wrap(self.thing))

    def tearDown(self):
        self.__dict__.pop("host", None)

    def call(self, member, *args, kind=qfa.METHOD | qfa.PROPERTY_GET, **kwargs):
        return lib()._invoke(self.host._ptr, member, kind, args, kwargs)

    def test_members_answer_in_any_case(self):
        cases = [
            (("GREET", "Ada"), {}, "Hello, Ada"),
            (("greet",), {"NAME": "Ada", "Greeting": "Hi"}, "Hi, Ada"),
            (("title",), {}, "Sleep"),
            (("ITEMS", 2), {}, "c"),
            (("Settings", "Margin"), {}, 72),
            (("nothing",), {}, None),
        ]
        for (member, *args), kwargs, expected in cases:
            with self.subTest(member=member, args=args, kwargs=kwargs):
                self.assertEqual(self.call(member, *args, **kwargs), expected)
        self.assertIs(self.call("Me"), self.thing, "the object itself comes back, not a copy")

    def test_property_writes(self):
        self.call("title", "Dreams", kind=qfa.PROPERTY_PUT)
        self.call("Items", 0, "z", kind=qfa.PROPERTY_PUT)
        self.call("settings", "Margin", 90, kind=qfa.PROPERTY_PUT)
        self.assertEqual((self.thing.Title, self.thing.items[0], self.thing.settings["Margin"]), ("Dreams", "z", 90))

    def test_by_reference_arguments_are_written_back(self):
        n = qfa.ByRef(21)
        self.call("double", n)
        self.assertEqual(n.value, 42)

    def test_python_failures_become_error_numbers(self):
        cases = [
            ("unknown member", lambda: self.call("vanish"), 438),
            ("Python exception", lambda: self.call("fail", "value"), 5),
            ("the host's own error", lambda: self.call("fail", "automation"), 457),
            ("too many arguments", lambda: self.call("greet", "a", "b", "c"), 450),
            ("unknown named argument", lambda: self.call("greet", "a", tone="warm"), 448),
            ("index out of range", lambda: self.call("items", 7), 5),
        ]
        for what, call, number in cases:
            with self.subTest(what):
                with self.assertRaises(qfa.AutomationError) as caught:
                    call()
                self.assertEqual(caught.exception.number, number)
        with self.assertRaises(qfa.AutomationError) as caught:
            self.call("fail", "value")
        self.assertEqual(caught.exception.description, "ValueError: no such thing")
        self.assertEqual(caught.exception.source, "Thing")

    def test_the_wrapper_goes_when_the_library_lets_go(self):
        self.assertIn(id(self.thing), lib()._host_by_object)
        del self.host
        gc.collect()
        self.assertNotIn(id(self.thing), lib()._host_by_object)


class TypeLibraryTest(unittest.TestCase):
    def test_main2_members_in_dispatch_order(self):
        main2 = next(c for c in lib().type_library["classes"] if c["name"] == "Main2")
        described = [(m["name"], m["kind"], [(p["name"], p["byRef"], p["optional"]) for p in m["params"]])
                     for m in main2["members"]]
        self.assertEqual(described, MAIN2)
        self.assertEqual([m["dispId"] for m in main2["members"]], list(range(18)))

    def test_every_class_is_described(self):
        classes = {c["name"]: [m["name"] for m in c["members"]] for c in lib().type_library["classes"]}
        self.assertEqual(list(classes), PUBLIC_CLASSES)
        for table in PUBLIC_CLASSES[4:]:
            self.assertEqual(classes[table][:3], ["initTableSpecificMetadata", "AddRow", "AddTableNotes"])
        for entry in PUBLIC_CLASSES[1:4]:
            self.assertIn("parseEntry", classes[entry])

    def test_the_file_beside_the_library_is_the_same(self):
        library = Path(os.environ["QUILLFORMATAPA_LIBRARY"]).resolve()
        on_disk = json.loads((library.parent / "QuillFormatAPA.typelib.json").read_text(encoding="utf-8"))
        self.assertEqual(on_disk, lib().type_library)


class RegistrationTest(unittest.TestCase):
    def test_register_find_unregister(self):
        with tempfile.TemporaryDirectory() as home:
            env = dict(os.environ, XDG_DATA_HOME=home)
            script = ("import quillformatapa as q; l = q.library(); l.register_server(); l.register_server(); "
                      "print(l.registration_path)")
            record = Path(subprocess.run([sys.executable, "-c", script], env=env, check=True,
                                         capture_output=True, text=True).stdout.strip())
            self.assertEqual(record, Path(home) / "QuillFormatAPA" / "registration.json")
            content = json.loads(record.read_text(encoding="utf-8"))
            self.assertEqual(Path(content["library"]), Path(os.environ["QUILLFORMATAPA_LIBRARY"]).resolve())
            self.assertTrue(Path(content["typeLibrary"]).is_file())
            self.assertEqual(content["classes"], lib().classes)

            # A host without a library path finds the library through the record.
            found = dict(env)
            del found["QUILLFORMATAPA_LIBRARY"]
            script = "import quillformatapa as q; print(q.Main2().buildInstruction('Found', 1))"
            out = subprocess.run([sys.executable, "-c", script], env=found, check=True, capture_output=True,
                                 text=True).stdout.strip()
            self.assertEqual(out, "1Found")

            script = ("import quillformatapa as q; l = q.library(); "
                      "print(l.unregister_server(), l.unregister_server())")
            out = subprocess.run([sys.executable, "-c", script], env=env, check=True, capture_output=True,
                                 text=True).stdout.split()
            self.assertEqual(out, ["True", "False"])
            self.assertFalse(record.exists())


class LoadingTest(unittest.TestCase):
    def run_python(self, script, **env):
        environment = {k: v for k, v in os.environ.items() if k != "QUILLFORMATAPA_LIBRARY"}
        environment.update(env)
        return subprocess.run([sys.executable, "-c", script], env=environment, capture_output=True, text=True)

    def test_a_library_that_cannot_be_found_is_a_clear_error(self):
        with tempfile.TemporaryDirectory() as home:
            run = self.run_python("import quillformatapa as q; q.Main2()", XDG_DATA_HOME=home, LD_LIBRARY_PATH="")
        self.assertNotEqual(run.returncode, 0)
        self.assertIn("QUILLFORMATAPA_LIBRARY", run.stderr)

    def test_a_record_naming_a_missing_library_is_passed_over(self):
        with tempfile.TemporaryDirectory() as home:
            record = Path(home) / "QuillFormatAPA" / "registration.json"
            record.parent.mkdir()
            record.write_text(json.dumps({"library": str(Path(home) / "gone.so")}), encoding="utf-8")
            run = self.run_python("import quillformatapa._capi as c; c.find_library()", XDG_DATA_HOME=home,
                                  LD_LIBRARY_PATH="")
        self.assertNotEqual(run.returncode, 0)
        self.assertIn("is not registered", run.stderr)
        self.assertNotIn("gone.so", run.stderr)

if __name__ == "__main__":
    unittest.main()
