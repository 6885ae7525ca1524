"""The variables and keys of docs/configuration.md are those that the code reads.

usage: keys_test.py <root of the project>
"""

import glob
import os
import re
import sys

LIBRARIES = ("gen", "mem", "fio", "thr", "err", "ver", "sys")
READERS = r"(?:mem_cfg_is_on|mem_cfg_get_int_value|mem_cfg_get_value|getenv)"


def documented(root):
    """The names in the first column of the page's tables, those of the last section aside: they are of CMake."""
    with open(os.path.join(root, "docs", "configuration.md"), encoding="utf-8") as page:
        text = page.read().split("\n## When the suite is built")[0]
    names = set()
    for row in re.findall(r"^\| (`[^|]*) \|", text, re.MULTILINE):
        names.update(re.findall(r"`([A-Za-z0-9_]+)`", row))
    return names


def main():
    root = sys.argv[1]
    literals, read = set(), {}
    for library in LIBRARIES:
        for path in glob.glob(os.path.join(root, library, "**", "*.cpp"), recursive=True):
            with open(path, encoding="utf-8") as file:
                text = file.read()
            literals.update(re.findall(r'"([A-Za-z0-9_]+)"', text))
            constants = dict(re.findall(r'\b([A-Z_]+)(?:\[\])? = "([A-Za-z0-9_]+)"', text))
            for argument in re.findall(READERS + r'\(\s*("[A-Za-z0-9_]+"|[A-Z_]+)\s*[,)]', text):
                name = argument.strip('"') if argument.startswith('"') else constants.get(argument, argument)
                read.setdefault(name, os.path.relpath(path, root))
    page = documented(root)
    problems = [f"docs/configuration.md names {name}, which no source has" for name in sorted(page - literals)]
    problems += [f"{read[name]} reads {name}, which docs/configuration.md does not name"
                 for name in sorted(set(read) - page)]
    if len(page) < 20 or len(read) < 15:
        problems.append(f"only {len(page)} names in the page and {len(read)} in the sources: are they found at all?")
    print("\n".join(problems) or f"{len(page)} names in the page, {len(read)} read by name in the sources")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
