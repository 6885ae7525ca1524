"""The script that changes the code: the sites that it finds, its list, and a run over a small library with tests.

    mutation_test.py <mutate> <compiler>
"""

import importlib.machinery
import importlib.util
import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT, COMPILER = Path(sys.argv[1]), sys.argv[2]
loader = importlib.machinery.SourceFileLoader("mutate", str(SCRIPT))
mutate = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutate", loader))
loader.exec_module(mutate)


def changes_of(body):
    """The changes in the body of a function, each as operator, before and after."""
    text = "int f(int a, bool b)\n{\n    " + body + "\n}\n"
    return [(s.operator, s.before, s.after) for s in mutate.sites_in("a.cpp", text)]


SITE_CASES = [
    ("g(a < b);", [("statement", "g(a < b);", "{}"), ("comparison", "<", "<="), ("comparison", "<", ">=")]),
    ("a = b == c;", [("statement", "a = b == c;", "{}"), ("comparison", "==", "!=")]),
    ("return a + 7;", [("return", "a + 7", "{}"), ("arithmetic", "+", "-"), ("constant", "7", "8"),
                       ("constant", "7", "6"), ("constant", "7", "0")]),
    ("return b;", [("return", "b", "{}")]),
    ("return false;", [("truth", "false", "true")]),
    ("if (!b && c)\n        return;", [("negation", "(!b && c)", "(!(!b && c))"), ("negation", "!", ""),
                                        ("logic", "&&", "||")]),
    ("while (b)\n        break;", [("negation", "(b)", "(!(b))"), ("jump", "break;", "{}")]),
    ("std::lock_guard<std::mutex> const lock(m);", [("lock", "std::lock_guard<std::mutex> const lock(m);", "{}")]),
    ("MEM_LOCK_SCOPE const lock(m);", [("lock", "MEM_LOCK_SCOPE const lock(m);", "{}")]),
    ("++a;", [("arithmetic", "++", "--"), ("statement", "++a;", "{}")]),
    ("*a = 0x10u;", [("statement", "*a = 0x10u;", "{}"), ("constant", "0x10u", "17u"), ("constant", "0x10u", "15u"),
                     ("constant", "0x10u", "0u")]),
    # what is left alone: declarations, brackets and signs that are no operators, texts, comments, preprocessor lines
    ("int c(b);", []),
    ("std::vector<int> const &&c = d;", []),
    ("char *c = -d;", []),
    ('char const *c = "a < 1 && true";', []),
    ("// g(1);\n/* a = 1; */", []),
    ("#define A(x) g(1 < x);\n", []),
    ('auto c = R"x(1 < "2)x";', []),
    ("template <class T> struct C;", []),
]


class Sites(unittest.TestCase):
    def test_each_operator(self):
        for body, changes in SITE_CASES:
            self.assertEqual(changes_of(body), changes, body)

    def test_a_place_is_exact(self):
        text = "int f()\n{\n    return g();\n}\nint h()\n{\n    return g();\n}\n"
        sites = mutate.numbered(mutate.sites_in("a.cpp", text))
        self.assertEqual([(s.line, s.column, s.text) for s in sites], [(3, 12, "return g();"), (7, 12, "return g();")])
        self.assertEqual(sites[1].changed(text), text[:-7] + "{};\n}\n")
        self.assertNotEqual(sites[0].id, sites[1].id)
        # Lines that are added elsewhere don't change the name of a site.
        moved = mutate.numbered(mutate.sites_in("a.cpp", "\n\n" + text))
        self.assertEqual([s.id for s in moved], [s.id for s in sites])


class List(unittest.TestCase):
    def test_the_last_line_on_a_site_is_valid(self):
        with tempfile.TemporaryDirectory() as directory:
            path = Path(directory) / "list"
            place = {"file": "a.cpp", "line": 1, "column": 2, "operator": "logic", "before": "&&", "after": "||", "text": ""}
            for identity, result in [("a", "survived"), ("b", "killed"), ("c", "survived"), ("d", "does not compile"),
                                     ("e", "survived"), ("a", "killed")]:
                mutate.append(path, {**place, "id": identity, "result": result})
            subprocess.run([SCRIPT, "--list-file", path, "--unseen", "e", "the sum is the same"], check=True)
            refused = subprocess.run([SCRIPT, "--list-file", path, "--unseen", "b", "noticed"], capture_output=True)
            self.assertEqual(refused.returncode, 1)
            lines = subprocess.run([SCRIPT, "--list-file", path, "--list"], check=True, capture_output=True,
                                   text=True).stdout.splitlines()
            self.assertEqual([line.split(" ")[0] for line in lines[::2]], ["c", "e", "4"])
            self.assertIn("cannot be seen (the sum is the same)", lines[2])
            self.assertEqual(lines[4], "4 changes: 2 noticed, 1 survive (33.3% of those that can be seen), "
                                       "1 cannot be seen; 1 more don't compile")


LIBRARY = """int room_add(int a, int b)
{
    return a + b;
}
int room_times(int a, int b)
{
    int sum = 0;
    while (b != 0) {
        sum = sum + a;
        --b;
    }
    return sum;
}
int room_unused(int a) { return a + 5; }
static_assert(true);
"""
TEST = """int room_add(int, int);
int room_times(int, int);
int main() { return room_add(2, 3) == 5 && room_times(2, 3) == 6 ? 0 : 1; }
"""
BUILD = """rule CXX
  command = {compiler} -fPIC -c $in -o $out
rule LIB
  command = : && {compiler} -shared $in -o $out
rule EXE
  command = : && {compiler} $objects -o $out -Wl,-rpath,'$$ORIGIN' -L. -lroom
build gen/room.o: CXX {root}/gen/room/room.cpp
build tests/room/room_test.cpp.o: CXX {root}/tests/room/room_test.cpp
build libroom.so: LIB gen/room.o
build room_test: EXE tests/room/room_test.cpp.o | libroom.so
  objects = tests/room/room_test.cpp.o
default room_test
"""


class Run(unittest.TestCase):
    def test_a_small_library(self):
        with tempfile.TemporaryDirectory() as directory:
            root = Path(directory).resolve() / "copy"
            build = root / "build" / "release"
            for path, text in [(root / "gen/room/room.cpp", LIBRARY), (root / "tests/room/room_test.cpp", TEST),
                               (build / "build.ninja", BUILD.format(compiler=COMPILER, root=root)),
                               (build / "CTestTestfile.cmake", f'add_test(room "{build}/room_test")\n')]:
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            subprocess.run(["ninja"], cwd=build, check=True, capture_output=True)
            listed = Path(directory) / "list"
            command = [SCRIPT, "--work", root, "--list-file", listed, "--operators", "arithmetic", "truth",
                       "--timeout", "1"]
            refused = subprocess.run(command, capture_output=True, text=True)
            self.assertIn("no copy that may be changed", refused.stderr)
            (root / ".mutation").touch()
            library = (build / "libroom.so").read_bytes()
            # What a run that was ended in the middle has left is put back first.
            (root / ".mutation_saved/gen/room").mkdir(parents=True)
            os.rename(root / "gen/room/room.cpp", root / ".mutation_saved/gen/room/room.cpp")
            (root / "gen/room/room.cpp").write_text("broken")
            subprocess.run([*command, "--limit", "2"], check=True, capture_output=True)
            self.assertEqual(len(listed.read_text().splitlines()), 2)
            subprocess.run(command, check=True, capture_output=True)
            entries = mutate.read_list(listed).values()
            self.assertEqual({(e["line"], e["before"], e["result"], e["test"]) for e in entries},
                             {(3, "+", "killed", "room"), (9, "+", "killed", "room"),
                              (10, "--", "killed", "room (timed out)"), (14, "+", "survived", ""),
                              (15, "true", "does not compile", "")})
            self.assertEqual((root / "gen/room/room.cpp").read_text(), LIBRARY)
            self.assertEqual((build / "libroom.so").read_bytes(), library)
            self.assertFalse((root / ".mutation_saved").exists())
            before = listed.read_text()
            subprocess.run(command, check=True, capture_output=True)
            self.assertEqual(listed.read_text(), before, "no site is tried twice")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
