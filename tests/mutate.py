#!/usr/bin/env python3
"""Changes single lines of product code at random and tells which changes no test sees.

tests/mutate.py FOLDER... [--count 30] [--seed 1] [--only LINE-OF-THE-LIST]

Works in this checkout and in build/mutate: leave both alone meanwhile. The test that is named as the
changed file comes first, then the others of its folder, then all. Apart from CI: a change takes some
seconds, one that survives half a minute. Read what survives: a row is missing in a test, or the line
is not needed.
"""
import argparse
import pathlib
import random
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/mutate"
BUILD_LIMIT, TEST_LIMIT = 600, 30  # seconds, of a build and of one test program

# Slow programs, and the folders whose lines they can see.
SLOW = {"tst_filefaults.*": ["platform", "settings", "calibration"],
        "tst_panelctl": ["platform", "calibration"],
        "tst_everypage_german": ["app", "wizard", "infobox", "settings"],
        "tst_everypage_pseudo": ["app", "wizard", "infobox", "settings"]}

OPERATORS = [(" == ", " != "), (" != ", " == "), (" < ", " <= "), (" <= ", " < "), (" > ", " >= "),
             (" >= ", " > "), (" && ", " || "), (" || ", " && "), (" + ", " - "), (" - ", " + "),
             (" * ", " / "), ("true", "false"), ("false", "true"), ("std::min", "std::max"),
             ("std::max", "std::min"), ("qMin", "qMax"), ("qMax", "qMin"), ("++", "--")]
STATEMENT = re.compile(r"^\s+(?!return|using|const|case|delete|Q_|static|friend|else)"
                       r"[\w:.>\[\]()*-]+(\(.*\)|\s[-+|&]?= .*);$")
CONDITION = re.compile(r"^(\s*(?:\} else )?(?:if|while) \()(.*)(\) \{)$")
NUMBER = re.compile(r"(?<![\w.])(\d+)(?![\w.])")


def texts(line):
    """The places that are no code: in quotes, and behind two slashes."""
    return [m.span() for m in re.finditer(r'"(?:[^"\\]|\\.)*"|//.*', line)]


def changes_of(line):
    """Every changed form of one line of code."""
    if re.match(r"\s*(#|//|\*|static_assert|Q_ASSERT|namespace|template)", line):
        return
    quiet = texts(line)

    def is_code(at):
        return not any(begin <= at < end for begin, end in quiet)

    for old, new in OPERATORS:
        for m in re.finditer(re.escape(old), line):
            if is_code(m.start()) and not re.match(r"\w", line[m.end():m.end() + 1] if old.isalpha() else ""):
                yield line[:m.start()] + new + line[m.end():]
    for m in NUMBER.finditer(line):
        if is_code(m.start()):
            yield line[:m.start()] + str(int(m[1]) + 1) + line[m.end():]
    if m := CONDITION.match(line):
        if ";" not in m[2]:
            yield m[1] + "!(" + m[2] + ")" + m[3]
    if STATEMENT.match(line) and line.count("(") == line.count(")"):
        yield re.match(r"\s*", line)[0] + ";"


def candidates(folder):
    for path in sorted((ROOT / folder).glob("*.*")):
        if path.suffix in (".cpp", ".h"):
            for number, line in enumerate(path.read_text().split("\n")):
                changed = list(dict.fromkeys(changes_of(line)))
                if changed:
                    yield path, number, line, changed


def run(command, limit):
    try:
        return subprocess.run(command, cwd=BUILD, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=limit, text=True, check=False)
    except subprocess.TimeoutExpired:
        return None


def build(*targets, limit=BUILD_LIMIT):
    done = run(["cmake", "--build", ".", "-j2", "--target", *targets], limit)
    return done is not None and done.returncode == 0


def own_tests(folder):
    lists = ROOT / "tests" / folder / "CMakeLists.txt"
    return re.findall(r"panel_add_test\((\w+)", lists.read_text())


def killers(select):
    """The test programs that fail; the first ones only."""
    done = run(["ctest", "-j2", "--stop-on-failure", *select], 1200)
    return re.findall(r"\d+ - (\w+) \(", done.stdout) if done else ["time"]


def verdict(path, folder):
    """What sees the change; None where it is the compiler."""
    own = own_tests(folder)
    named = "tst_" + path.stem
    if not build("panel", *own):
        return None
    for stage in [[named], [test for test in own if test != named]]:
        if found := killers(["-R", "^(" + "|".join(stage) + ")$"]):
            return found
    # The binary's own test is for the program as it ships.
    blind = [name for name, seen in SLOW.items() if folder not in seen]
    others = "^(" + "|".join([*own, *blind, "tst_binary"]) + ")$"
    return killers(["-E", others]) if build("all") else ["build"]


def prepare():
    if subprocess.run(["git", "diff", "--quiet", "HEAD"], cwd=ROOT, check=False).returncode:
        sys.exit("not all is committed")
    # The panel as a shared library: a change is linked once, not in every test.
    subprocess.run(["cmake", "--preset", "debug", "-B", BUILD, "-DPANEL_LIBRARY=SHARED",
                    f"-DPANEL_TEST_LIMIT={TEST_LIMIT}",
                    "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"],
                   cwd=ROOT, stdout=subprocess.DEVNULL, check=True)
    if not build("all", limit=None):
        sys.exit("HEAD does not build")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folders", nargs="+")
    parser.add_argument("--count", type=int, default=30)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", type=int, action="append", help="number of a change in the list")
    options = parser.parse_args()
    prepare()
    for folder in options.folders:
        chance = random.Random(options.seed)
        lines = list(candidates(folder))
        chance.shuffle(lines)
        killed = survived = 0
        for number, (path, at, line, changed) in enumerate(lines, 1):
            new = chance.choice(changed)
            if killed + survived == options.count:
                break
            if options.only and number not in options.only:
                continue
            before = path.read_text()
            content = before.split("\n")
            content[at] = new
            path.write_text("\n".join(content))
            try:
                found = verdict(path, folder)
            finally:
                path.write_text(before)
            if found is None:
                continue
            killed += bool(found)
            survived += not found
            print(f"{number} {'killed by ' + found[0] if found else 'SURVIVED'} "
                  f"{path.relative_to(ROOT)}:{at + 1}\n    - {line.strip()}\n    + {new.strip()}",
                  flush=True)
        print(f"{folder}: {killed} killed, {survived} survived", flush=True)


if __name__ == "__main__":
    main()
