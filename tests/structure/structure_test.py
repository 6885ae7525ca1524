"""Tests cmake/check_structure over small trees: a clean one, and the same with one fault planted in it.

usage: structure_test.py <check_structure> <C++ compiler>
"""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

CHECK, COMPILER = sys.argv[1:3]

ROOMS = """
library | low  |         | at the bottom
library | fio  | low     | files
library | gen  | low fio | the main library
room | gen/base | checks
room | gen/os   | the system
room | gen/text | texts
room | gen/bins | bins
floor | gen/bins | gen_bins_state | the state
floor | gen/bins | gen_bins_tree gen_bins_log | built on it
exception | gen/text/gen_text_bins | gen/bins | opens a bin
"""

# A header that no source has, a template of base that two rooms define weakly, a question to the system with two
# sources, the named exception, and floors: all as they should be.
CLEAN = {
    "h/fio_sys.h": "int fio_open();\n",
    "h/gen_text_sys.h": '#include "fio_sys.h"\nint gen_text();\n',
    "h/gen_bins_sys.h": "int gen_bins();\n",
    "low/low_list.h": "int low_list();\n",
    "low/low_list.cpp": '#include "low/low_list.h"\nint low_list() { return 1; }\n',
    "fio/fio_open.cpp": '#include "fio_sys.h"\n#include "low/low_list.h"\nint fio_open() { return low_list(); }\n',
    "fio/fio_private.h": "int fio_private();\n",
    "gen/base/gen_base.h": "inline int gen_twice(int x) { return 2 * x; }\nextern int gen_base_count;\n",
    "gen/base/gen_base.cpp": '#include "gen/base/gen_base.h"\nint gen_base_count = 0;\nint gen_b() { return gen_twice(1); }\n',
    "gen/os/gen_os.h": "int gen_os();\n",
    "gen/os/gen_os_linux.cpp": '#include "gen/os/gen_os.h"\n#include "gen/base/gen_base.h"\n'
                               "int gen_os() { return gen_twice(gen_base_count); }\n",
    "gen/os/gen_os_windows.cpp": '#include "gen/os/gen_os.h"\nint gen_os() { return 2; }\n',
    "gen/text/gen_text.cpp": '#include "gen_text_sys.h"\n#include "gen/os/gen_os.h"\n'
                             "int gen_text() { return fio_open() + gen_os(); }\n",
    "gen/text/gen_text_bins.cpp": '#include "gen_bins_sys.h"\nint gen_text_bins() { return gen_bins(); }\n',
    "gen/bins/gen_bins.cpp": '#include "gen_bins_sys.h"\n#include "gen/bins/gen_bins_tree.h"\n'
                             "int gen_bins() { return gen_bins_tree(); }\n",
    "gen/bins/gen_bins_tree.h": "int gen_bins_tree();\n",
    "gen/bins/gen_bins_tree.cpp": '#include "gen/bins/gen_bins_tree.h"\n#include "gen/bins/gen_bins_state.h"\n'
                                  "int gen_bins_tree() { return gen_bins_state; }\n",
    "gen/bins/gen_bins_log.h": "int gen_bins_log();\n",
    "gen/bins/gen_bins_state.h": "extern int gen_bins_state;\n",
    "gen/bins/gen_bins_state.cpp": '#include "gen/bins/gen_bins_state.h"\nint gen_bins_state = 1;\n',
}

PAGE = """# Page
<!-- begin: written by cmake/check_structure document --update -->
<!-- end -->
The rest.
"""


class Tree(unittest.TestCase):
    objects_of_texts = {}  # a source and all headers -> the object, which several tests need

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = self.folder.name
        self.sources = dict(CLEAN)
        self.rooms = ROOMS

    def write(self):
        for name, text in {**self.sources, "cmake/rooms.txt": self.rooms, "docs/architecture.md": PAGE}.items():
            path = os.path.join(self.root, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)

    def run_check(self, *arguments):
        done = subprocess.run([sys.executable, "-B", CHECK, *arguments], capture_output=True, text=True, check=False)
        return done.returncode, done.stdout + done.stderr

    def includes(self):
        self.write()
        return self.run_check("includes", self.root)

    def objects(self):
        """Compiles the sources, those of Windows aside, and checks the objects."""
        self.write()
        build = os.path.join(self.root, "build")
        os.makedirs(build, exist_ok=True)
        commands = []
        for number, name in enumerate(sorted(self.sources)):
            if not name.endswith(".cpp") or name.endswith("_windows.cpp"):
                continue
            source, output = os.path.join(self.root, name), f"{number}.o"
            # Without optimisation, so that inline functions are emitted.
            command = [COMPILER, "-O0", f"-I{self.root}", f"-I{self.root}/h", "-o", output, "-c", source]
            key = self.sources[name], *(text for header, text in self.sources.items() if header.endswith(".h"))
            if key not in Tree.objects_of_texts:
                subprocess.run(command, cwd=build, check=True)
                with open(os.path.join(build, output), "rb") as file:
                    Tree.objects_of_texts[key] = file.read()
            with open(os.path.join(build, output), "wb") as file:
                file.write(Tree.objects_of_texts[key])
            commands.append({"directory": build, "file": source, "command": " ".join(command)})
        with open(os.path.join(build, "compile_commands.json"), "w", encoding="utf-8") as file:
            json.dump(commands, file)
        return self.run_check("objects", build, self.root)

    def expect_clean(self, result):
        status, text = result
        self.assertEqual(status, 0, text)
        self.assertNotIn("->", text)

    def expect_fault(self, result, *lines):
        """All lines are in the text, and no other fault."""
        status, text = result
        self.assertEqual(status, 1, text)
        for line in lines:
            self.assertIn(line + "\n", text)
        faults = [line for line in text.splitlines() if line.startswith(("circle", "wrong"))]
        self.assertEqual(len(faults), sum(line.startswith(("circle", "wrong")) for line in lines), text)


class Includes(Tree):
    def test_clean_tree(self):
        self.expect_clean(self.includes())

    def test_circle_of_two(self):
        self.sources["gen/base/gen_a.h"] = '#include "gen/base/gen_b.h"\n'
        self.sources["gen/base/gen_b.h"] = "// A comment.\n#  include \"gen/base/gen_a.h\"\n"
        self.expect_fault(self.includes(), "circle: gen/base/gen_a -> gen/base/gen_b -> gen/base/gen_a",
                          '    gen/base/gen_a -> gen/base/gen_b: gen/base/gen_a.h:1: #include "gen/base/gen_b.h"',
                          '    gen/base/gen_b -> gen/base/gen_a: gen/base/gen_b.h:2: #  include "gen/base/gen_a.h"')

    def test_circle_in_a_copy_of_the_project(self):
        project = os.path.dirname(os.path.dirname(CHECK))
        for folder in ("cmake", "h", "gen", "mem", "fio"):
            shutil.copytree(os.path.join(project, folder), os.path.join(self.root, folder))
        low, high = "gen/base/gen_planted_low.h", "gen/profile/gen_planted_high.h"
        for name, used in ((low, high), (high, low)):
            with open(os.path.join(self.root, name), "w", encoding="utf-8") as file:
                file.write(f'#include "{used}"\n')
        status, text = self.run_check("includes", self.root)
        self.assertEqual(status, 1, text)
        self.assertIn(f"wrong arrow: {low}:1 -> {high} (gen/base may use: no other room)\n", text)
        self.assertIn(f"circle: {low[:-2]} -> {high[:-2]} -> {low[:-2]}\n", text)

    def test_circle_by_the_source_of_a_header(self):
        self.sources["gen/base/gen_a.h"] = ""
        self.sources["gen/base/gen_b.h"] = ""
        self.sources["gen/base/gen_a.cpp"] = '#include "gen/base/gen_a.h"\n#include "gen/base/gen_b.h"\n'
        self.sources["gen/base/gen_b.cpp"] = '#include "gen/base/gen_a.h"\n#include "gen/base/gen_b.h"\n'
        self.expect_fault(self.includes(), "circle: gen/base/gen_a -> gen/base/gen_b -> gen/base/gen_a")

    def test_circle_of_one_platform(self):
        self.sources["gen/os/gen_os_host.h"] = ""
        self.sources["gen/os/gen_os_host_windows.cpp"] = '#include "gen/os/gen_os.h"\n'
        self.sources["gen/os/gen_os_windows.cpp"] += '#include "gen/os/gen_os_host.h"\n'
        self.expect_fault(self.includes(), "circle: gen/os/gen_os -> gen/os/gen_os_host -> gen/os/gen_os")

    def test_shortest_circle_and_its_group(self):
        for name, used in (("a", "b"), ("b", "c"), ("c", "d"), ("d", "a")):
            self.sources[f"gen/base/gen_{name}.h"] = f'#include "gen/base/gen_{used}.h"\n'
        self.sources["gen/base/gen_c.h"] += '#include "gen/base/gen_b.h"\n'
        self.expect_fault(self.includes(), "circle: gen/base/gen_b -> gen/base/gen_c -> gen/base/gen_b",
                          "    4 files reach one another: gen/base/gen_a gen/base/gen_b gen/base/gen_c gen/base/gen_d")

    def test_higher_room(self):
        self.sources["gen/os/gen_os_linux.cpp"] += '#include "gen_text_sys.h"\n'
        self.expect_fault(self.includes(),
                          "wrong arrow: gen/os/gen_os_linux.cpp:4 -> h/gen_text_sys.h (gen/os may use: gen/base)")

    def test_header_that_cmake_chooses(self):
        for platform in ("linux", "windows"):
            self.sources[f"gen/os/gen_os_thread_{platform}.h"] = "int gen_thread();\n"
        self.sources["gen/os/gen_os_thread.h"] = '#include "gen/os/gen_os_thread_platform.h"\n'
        self.expect_clean(self.includes())
        self.sources["gen/base/gen_base.cpp"] += '#include "gen/os/gen_os_thread_platform.h"\n'
        self.expect_fault(self.includes(),
                          "wrong arrow: gen/base/gen_base.cpp:4 -> gen/os/gen_os_thread_linux.h"
                          " (gen/base may use: no other room)",
                          "wrong arrow: gen/base/gen_base.cpp:4 -> gen/os/gen_os_thread_windows.h"
                          " (gen/base may use: no other room)")

    def test_exception_holds_for_one_file(self):
        self.sources["gen/text/gen_text.cpp"] += '#include "gen_bins_sys.h"\n'
        self.expect_fault(self.includes(), "wrong arrow: gen/text/gen_text.cpp:4 -> h/gen_bins_sys.h"
                                           " (gen/text may use: gen/base gen/os)")

    def test_exception_that_nothing_needs(self):
        self.sources["gen/text/gen_text_bins.cpp"] = ""
        status, text = self.includes()
        self.assertEqual(status, 1, text)
        self.assertIn("cmake/rooms.txt: no #include line needs the exception gen/text/gen_text_bins -> gen/bins\n", text)

    def test_higher_library(self):
        self.sources["fio/fio_open.cpp"] += '#include "gen_text_sys.h"\n'
        self.expect_fault(self.includes(),
                          "wrong arrow: fio/fio_open.cpp:4 -> h/gen_text_sys.h (fio may use: low)")

    def test_public_header_of_a_higher_library(self):
        self.sources["h/fio_sys.h"] += '#include "gen_bins_sys.h"\n'
        self.expect_fault(self.includes(), "wrong arrow: h/fio_sys.h:2 -> h/gen_bins_sys.h (fio may use: low)")

    def test_private_header_of_another_library(self):
        self.sources["gen/text/gen_text.cpp"] += '#include "fio/fio_private.h"\n'
        self.expect_fault(self.includes(), "wrong arrow: gen/text/gen_text.cpp:4 -> fio/fio_private.h"
                                           " (fio/fio_private.h is private to fio)")

    def test_higher_floor(self):
        self.sources["gen/bins/gen_bins_state.cpp"] += '#include "gen/bins/gen_bins_log.h"\n'
        self.expect_fault(self.includes(), "wrong arrow: gen/bins/gen_bins_state.cpp:3 -> gen/bins/gen_bins_log.h"
                                           " (floor 1 of gen/bins uses floor 2, counted from below)")

    def test_same_floor(self):
        self.sources["gen/bins/gen_bins_tree.cpp"] += '#include "gen/bins/gen_bins_log.h"\n'
        self.expect_clean(self.includes())

    def test_file_outside_of_the_rooms(self):
        self.sources["gen/lost/gen_lost.cpp"] = ""
        status, text = self.includes()
        self.assertEqual(status, 1, text)
        self.assertIn("gen/lost/gen_lost.cpp: is in no room of gen\n", text)

    def test_row_of_an_unknown_kind(self):
        self.rooms += "rooom | gen/more | a slip\n"
        status, text = self.includes()
        self.assertEqual(status, 1, text)
        self.assertIn("a row that can't be read: rooom | gen/more | a slip", text)


class Objects(Tree):
    def test_clean_tree(self):
        self.expect_clean(self.objects())

    def test_circle_of_two(self):
        self.sources["gen/base/gen_a.cpp"] = "int gen_b1(); int gen_a1() { return gen_b1(); }\n"
        self.sources["gen/base/gen_b.cpp"] = "int gen_a1(); int gen_b1() { return gen_a1(); }\n"
        self.expect_fault(self.objects(),
                          "circle: gen/base/gen_a.cpp -> gen/base/gen_b.cpp -> gen/base/gen_a.cpp",
                          "    gen/base/gen_a.cpp -> gen/base/gen_b.cpp: gen_b1()",
                          "    gen/base/gen_b.cpp -> gen/base/gen_a.cpp: gen_a1()")

    def test_circle_by_a_variable(self):
        self.sources["gen/base/gen_a.cpp"] = "extern int gen_b1; int gen_a1() { return gen_b1; }\n"
        self.sources["gen/base/gen_b.cpp"] = "int gen_a1(); int gen_b1 = gen_a1();\n"
        self.expect_fault(self.objects(),
                          "circle: gen/base/gen_a.cpp -> gen/base/gen_b.cpp -> gen/base/gen_a.cpp")

    def test_weak_definitions_make_no_circle(self):
        self.sources["gen/base/gen_w.h"] = ("inline int gen_w1() { return 1; }\n"
                                            "template <typename T> T gen_w2(T x) { return x; }\n")
        self.sources["gen/base/gen_a.cpp"] = ('#include "gen/base/gen_w.h"\nint gen_b1();\n'
                                              "int gen_a1() { return gen_w1() + gen_w2(gen_b1()); }\n")
        self.sources["gen/base/gen_b.cpp"] = ('#include "gen/base/gen_w.h"\n'
                                              "int gen_b1() { return gen_w1() + gen_w2(1); }\n")
        self.expect_clean(self.objects())

    def test_higher_room(self):
        self.sources["gen/os/gen_os_linux.cpp"] += "int gen_text(); int gen_os2() { return gen_text(); }\n"
        self.expect_fault(self.objects(),
                          "wrong arrow: gen/os/gen_os_linux.cpp -> gen/text/gen_text.cpp: gen_text()"
                          " (gen/os may use: gen/base)",
                          "circle: gen/os/gen_os_linux.cpp -> gen/text/gen_text.cpp -> gen/os/gen_os_linux.cpp")

    def test_higher_library(self):
        self.sources["low/low_list.cpp"] += "int gen_b(); int low_up() { return gen_b(); }\n"
        self.expect_fault(self.objects(), "wrong arrow: low/low_list.cpp -> gen/base/gen_base.cpp: gen_b()"
                                          " (low may use: no other library)")

    def test_operators_new_are_no_arrow(self):
        self.sources["gen/bins/gen_bins_new.cpp"] = (
            "static char l_block[8];\nvoid *operator new(unsigned long) { return l_block; }\n"
            "void operator delete(void *) noexcept {}\nvoid operator delete(void *, unsigned long) noexcept {}\n")
        self.sources["low/low_list.cpp"] += "void low_new() { delete new int; }\n"
        self.expect_clean(self.objects())

    def test_objects_that_are_not_built(self):
        self.objects()
        for name in os.listdir(os.path.join(self.root, "build")):
            if name.endswith(".o"):
                os.remove(os.path.join(self.root, "build", name))
        status, text = self.run_check("objects", os.path.join(self.root, "build"), self.root)
        self.assertEqual(status, 1, text)
        self.assertIn("not built: gen/base/gen_base.cpp\n", text)


class Document(Tree):
    def page(self):
        with open(os.path.join(self.root, "docs/architecture.md"), encoding="utf-8") as file:
            return file.read()

    def test_stale_page_is_found_and_updated(self):
        self.write()
        self.assertEqual(self.run_check("document", self.root)[0], 1)
        self.assertEqual(self.page(), PAGE)
        self.assertEqual(self.run_check("document", "--update", self.root)[0], 0)
        self.assertEqual(self.run_check("document", self.root)[0], 0)
        text = self.page()
        self.assertTrue(text.startswith("# Page\n") and text.endswith("\nThe rest.\n"), text)
        for row in ("| `gen/text/` | texts | os, base; `gen_text_bins` alone also bins: opens a bin |",
                    "| `fio/` | files | low |", "|    bins <.. gen_text_bins alone",
                    "| `gen_bins_tree`, `gen_bins_log` | built on it |"):
            self.assertIn(row, text)
        self.rooms = ROOMS.replace("| texts", "| all texts")
        with open(os.path.join(self.root, "cmake/rooms.txt"), "w", encoding="utf-8") as file:
            file.write(self.rooms)
        self.assertEqual(self.run_check("document", self.root)[0], 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
