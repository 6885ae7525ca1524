"""Runs the shell steps of the README, and builds a tool with the lines for CMake of the guide.

usage: steps_test.py <root of the project> <its build> <folder of the extracted programs> <C++ compiler>

The steps run as they are in an empty folder, with a home of their own. Two of them are replaced, since this build has
done the same already: "cmake --preset" and "cmake --build"; "cmake --install" installs this build.
"""

import os
import re
import shutil
import subprocess
import sys

ROOT, BUILD, PROGRAMS, COMPILER = sys.argv[1:5]
WORK = os.path.join(PROGRAMS, "steps")

PRELUDE = f"""set -eu
cmake() {{
    case "$1" in
    --preset) grep -q "\\"name\\": \\"$2\\"" '{ROOT}/CMakePresets.json' ;;
    --build) test "$2" = build/first ;;
    --install)
        shift 2
        command cmake --install '{BUILD}' "$@" >/dev/null
        ;;
    *) false ;;
    esac
}}
g++() {{ '{COMPILER}' "$@"; }}
"""


def page(name):
    with open(os.path.join(ROOT, name), encoding="utf-8") as text:
        return text.read()


def run(command, folder, environment):
    done = subprocess.run(command, cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False)
    print(done.stdout)
    if done.returncode != 0:
        sys.exit(f"status {done.returncode}: {command[-1]}")
    return done.stdout


def expect(condition, what):
    if not condition:
        sys.exit(f"not so: {what}")


def main():
    shutil.rmtree(WORK, ignore_errors=True)
    home, first, tool = (os.path.join(WORK, name) for name in ("home", "first", "tool"))
    for folder in (home, first, tool):
        os.makedirs(folder)
    environment = {**os.environ, "HOME": home}
    for name in ("KALVERN_INI", "LD_LIBRARY_PATH", "PKG_CONFIG_PATH"):
        environment.pop(name, None)

    steps = re.search(r"^    cmake --preset release -B build/first.*\n(?:    .*\n)+", page("README.md"), re.MULTILINE)
    expect(steps, "README.md has the steps of a first program")
    shutil.copy(os.path.join(PROGRAMS, "counter.cpp"), os.path.join(first, "counter.cpp"))
    script = PRELUDE + "export LD_LIBRARY_PATH=\n" + re.sub(r"^    ", "", steps[0], flags=re.MULTILINE)
    out = run(["bash", "-c", script], first, environment)
    expect(f"installed in {home}/zel/" in out, "the program finds its installation")
    expect(re.search(r"\tCounter::Counting$", out, re.MULTILINE), "the report has a row for the stage")

    lines = re.search(r"^```cmake\n(.*?)^```", page("docs/guide.md"), re.MULTILINE | re.DOTALL)
    expect(lines, "docs/guide.md has lines for CMake")
    with open(os.path.join(tool, "CMakeLists.txt"), "w", encoding="utf-8") as file:
        file.write("cmake_minimum_required(VERSION 3.25)\nproject(tool LANGUAGES CXX)\n" + lines[1])
    shutil.copy(os.path.join(PROGRAMS, "frame-of-a-tool.cpp"), os.path.join(tool, "fitter.cpp"))
    shutil.copy(os.path.join(ROOT, "tests", "docs", "frames", "expect.h"), tool)
    run(["cmake", "-S", ".", "-B", "build", f"-DCMAKE_PREFIX_PATH={home}/zel", f"-DCMAKE_CXX_COMPILER={COMPILER}",
         "-DCMAKE_CXX_STANDARD=17"], tool, environment)
    run(["cmake", "--build", "build"], tool, environment)
    run([os.path.join(tool, "build", "fitter")], tool, environment)


if __name__ == "__main__":
    main()
