"""Writes a program for each block of C++ in the documents, and prints their names as a list for CMake.

usage: extract_examples.py <folder of the frames> <folder for the programs> <page>...

A page is a document (.md) or a public header (.h). The example of a header is the block in its first comment; it has
the name of the header without its end, "gen_exe" for gen_exe_sys.h.
"""

import os
import re
import sys

NAME = re.compile(r"^\s*<!-- example: ([a-z0-9-]+) -->\s*$")


def blocks_of(page):
    """(name or None, number of the first line, text) of each block of C++."""
    found, name, start, lines = [], None, 0, []
    with open(page, encoding="utf-8") as text:
        for number, line in enumerate(text, 1):
            if start:
                if line.strip() == "```":
                    found.append((name, start, "".join(lines)))
                    name, start, lines = None, 0, []
                else:
                    lines.append(line)
            elif line.strip() == "```cpp":
                start = number + 1
            elif NAME.match(line):
                name = NAME.match(line)[1]
            elif line.strip():
                name = None
    return found


def blocks_of_header(header):
    """The same for the first comment of a header: each line of a block begins with the mark of a comment."""
    name = os.path.basename(header)[:-len("_sys.h")]
    found, start, lines = [], 0, []
    with open(header, encoding="utf-8") as text:
        for number, line in enumerate(text, 1):
            if not line.startswith("//"):
                break
            if start and line == "// ```\n":
                found.append((name, start, "".join(lines)))
                start, lines = 0, []
            elif start:
                lines.append(line[len("// "):] if line.startswith("// ") else "\n")
            elif line == "// ```cpp\n":
                start = number + 1
    return found


def write_if_changed(path, text):
    if os.path.exists(path):
        with open(path, encoding="utf-8") as old:
            if old.read() == text:
                return
    with open(path, "w", encoding="utf-8") as new:
        new.write(text)


def main():
    frames, folder, pages = sys.argv[1], sys.argv[2], sys.argv[3:]
    names, problems = [], []
    for page in pages:
        blocks = blocks_of_header(page) if page.endswith(".h") else blocks_of(page)
        if page.endswith(".h") and not blocks:
            problems.append(f"{os.path.basename(page)} has no example")
        for name, number, text in blocks:
            shown = os.path.relpath(page, os.path.join(frames, "..", "..", ".."))
            if name is None:
                problems.append(f"{shown}:{number}: a block of C++ without a name: <!-- example: name -->")
                continue
            if name in names:
                problems.append(f"{shown}:{number}: the name {name} is taken")
                continue
            names.append(name)
            # The compiler names the lines of the page.
            block = f'#line {number} "{shown}"\n{text}'
            frame_path = os.path.join(frames, name + ".cpp")
            if os.path.exists(frame_path):
                with open(frame_path, encoding="utf-8") as file:
                    head, marker, tail = re.split(r"^( *// example\n)", file.read(), flags=re.MULTILINE)
                line = head.count("\n") + 2
                block = f'{head}{block}#line {line} "{name}.cpp"\n{tail}'
            write_if_changed(os.path.join(folder, name + ".cpp"), block)
    frame_names = {name[:-len(".cpp")] for name in os.listdir(frames) if name.endswith(".cpp")}
    problems += [f"no page has the example {name}" for name in sorted(frame_names - set(names))]
    for problem in problems:
        print(problem, file=sys.stderr)
    print(";".join(names))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
