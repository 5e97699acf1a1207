#!/usr/bin/env python3
"""Tests of the tests: small faults are put into the library's sources, one at a time, and the tests must notice.

A mutant is one change of one line: a flipped condition, an off-by-one, a return value turned round, a statement
removed. The same seed gives the same mutants for the same lines. Each is built in a copy of the project and tested;
one that no test notices has survived, and must be listed in explained.txt with the reason why nobody can notice it.

  mutate.py [--count N] [--seed S] [--only FILE] [--list] [--work FOLDER]
"""
import argparse
import collections
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
LIBRARY = pathlib.Path("src/cvt/cvt2")
WANTED = 0.90  # of the mutants must be noticed

# What stands on a line, by blanked code (texts and comments are blanks there) -> what stands there instead.
OPERATORS = [
    (r"(?<= )==(?= )", "!="), (r"(?<= )!=(?= )", "=="),
    (r"(?<= )<(?= )", "<="), (r"(?<= )<=(?= )", "<"),
    (r"(?<= )>(?= )", ">="), (r"(?<= )>=(?= )", ">"),
    (r"(?<=[\w)\]] )&&(?= [\w(!*])", "||"), (r"(?<= )\|\|(?= )", "&&"),
    (r" [+-] 1\b", ""),
    (r"(?<=\breturn )-1(?=;)", "0"), (r"(?<=\breturn )0(?=;)", "-1"),
    (r"(?<=\breturn )true(?=;)", "false"), (r"(?<=\breturn )false(?=;)", "true"),
]

# A removed declaration is no program; neither is a line that only looks like a statement.
NO_STATEMENT = re.compile(r".*= (delete|default);|(return|break|continue|case|default|goto|const|static|auto|int|char|void|bool|constexpr|struct|"
                          r"size_t)\b|std::\w+(<.*>)? \w|[A-Z]\w* [*\w]|[^\w*(+-]")

Mutant = collections.namedtuple("Mutant", "file line above before after")


def blanked(line):
    """The line with the insides of texts, and comments, as blanks."""
    line = re.sub(r'"(?:[^"\\]|\\.)*"', lambda m: '"' + " " * (len(m.group()) - 2) + '"', line)
    line = re.sub(r"'(?:[^'\\]|\\.)*'", lambda m: "'" + " " * (len(m.group()) - 2) + "'", line)
    return re.sub(r"//.*", lambda m: " " * len(m.group()), line)


def negated(line, code):
    """`if (x)` as `if (!(x))`, where the whole condition stands on the line."""
    start = re.match(r"\s*(?:\} else )?if \(", code)
    if not start:
        return None
    depth = 1
    for i in range(start.end(), len(code)):
        depth += {"(": 1, ")": -1}.get(code[i], 0)
        if code[i] == ";":
            return None  # a declaration stands in front of the condition
        if depth == 0:
            return line[: start.end()] + "!(" + line[start.end():i] + ")" + line[i:]
    return None


def mutants_of(path):
    """Every mutant of a source file."""
    found = []
    previous = above = "{"
    in_macro = False
    for number, line in enumerate(path.read_text().splitlines(), 1):
        code = blanked(line)
        text = code.strip()
        macro = in_macro or text.startswith("#")
        in_macro = macro and line.endswith("\\")
        if text and not macro and not re.match(r"(static_assert|namespace|template|using|extern)\b|STT_", text):
            changed = [line[: m.start()] + after + line[m.end():]
                       for pattern, after in OPERATORS for m in re.finditer(pattern, code)]
            changed.append(negated(line, code))
            if text.endswith(";") and previous[-1] in ";{}:" and not NO_STATEMENT.match(text):
                changed.append(re.match(r"\s*", line).group() + ";")
            found += [Mutant(path.name, number, above, line, after) for after in changed if after is not None]
        if text:
            previous, above = text, line.strip()
    return found


def known(mutant):
    """What a mutant is known by: its file, the line above, and the line before and after, without indentation."""
    return mutant.file, mutant.above, mutant.before.strip(), mutant.after.strip()


def chosen(seed, only):
    """All mutants, in the order in which they are tried: a change of the sources moves none but those of its lines."""
    every = [m for path in sorted((ROOT / LIBRARY).glob("*.cpp")) if only in (None, path.name)
             for m in mutants_of(path)]
    return sorted(every, key=lambda m: hashlib.sha256(repr((seed, *known(m))).encode()).digest())


def sh(command, cwd, timeout=None):
    """Exit status of a command; a command that takes too long has failed."""
    try:
        return subprocess.run(command, cwd=cwd, timeout=timeout, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode
    except subprocess.TimeoutExpired:
        return 124


class Copy:
    """A copy of the project, built without optimisation and without sanitizers."""

    # What takes long, or tests something else than the library.
    LEFT_OUT = r"postgres|database|life|install|^docs|fuzz|velutil|vel_dbs|^tool|kit_|std_|json_|csv_|iso8583_|example_|hostile|function_plug_ctl"

    def __init__(self, work):
        self.source = work / "source"
        self.build = work / "build"
        if work.exists():
            shutil.rmtree(work)
        self.source.mkdir(parents=True)
        files = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True).stdout
        for name in filter(None, files.decode().split("\0")):
            (self.source / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, self.source / name)
        launcher = shutil.which("ccache")
        options = [f"-DCMAKE_{language}_COMPILER_LAUNCHER={launcher}" for language in ("C", "CXX") if launcher]
        subprocess.run(["cmake", "-G", "Ninja", "-S", self.source, "-B", self.build, "-DCMAKE_BUILD_TYPE=Debug",
                        *options], check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["ninja", "-C", self.build], check=True, stdout=subprocess.DEVNULL)

    def builds(self):
        return sh(["ninja", "-C", self.build, "cvt2"], self.build) == 0

    def passes(self, *select):
        command = ["ctest", "-j", str(os.cpu_count()), "--stop-on-failure", "-LE", "long", "-E", self.LEFT_OUT]
        return sh(command + list(select), self.build, timeout=300) == 0

    def notices(self, mutant):
        """Whether a test fails; None when the mutant is no program."""
        file = self.source / LIBRARY / mutant.file
        lines = file.read_text().splitlines(keepends=True)
        original = lines[mutant.line - 1]
        lines[mutant.line - 1] = mutant.after + "\n"
        file.write_text("".join(lines))
        try:
            if not self.builds():
                return None
            stem = mutant.file.removesuffix(".cpp")
            return not self.passes("-R", "^" + stem) or not self.passes()
        finally:
            lines[mutant.line - 1] = original
            file.write_text("".join(lines))


def explanations():
    """What the survivors that are explained are known by."""
    explained = set()
    for block in (HERE / "explained.txt").read_text().split("\n\n"):
        lines = [line for line in block.splitlines() if line and not line.startswith("#")]
        if not lines:
            continue
        if len(lines) < 5 or [line[:2] for line in lines[1:4]] != ["  ", "- ", "+ "]:
            sys.exit(f"explained.txt: expected FILE, '  ABOVE', '- BEFORE', '+ AFTER', a reason; found {lines}")
        explained.add((lines[0], *(line[2:].strip() for line in lines[1:4])))
    return explained


def shown(mutant):
    return f"{mutant.file}:{mutant.line}\n    {mutant.above}\n  - {mutant.before.strip()}\n  + {mutant.after.strip()}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=220, help="mutants to try [%(default)s]")
    parser.add_argument("--seed", type=int, default=1, help="chooses among all mutants [%(default)s]")
    parser.add_argument("--only", metavar="FILE", help="a source file of the library, such as stt.cpp")
    parser.add_argument("--list", action="store_true", help="print all mutants and end")
    parser.add_argument("--work", type=pathlib.Path, default=ROOT / "build" / "mutation", help="folder of the copy")
    options = parser.parse_args()

    every = chosen(options.seed, options.only)
    if options.list:
        print("\n".join(shown(m) for m in every))
        return 0
    copy = Copy(options.work)
    if not copy.builds() or not copy.passes():
        sys.exit("the tests fail without any mutant")
    with_reason = explanations()
    noticed, survived, explained = 0, [], 0
    for mutant in every:
        if noticed + len(survived) + explained == options.count:
            break
        verdict = copy.notices(mutant)
        if verdict is None:
            continue
        if verdict:
            noticed += 1
        elif known(mutant) in with_reason:
            explained += 1
        else:
            survived.append(mutant)
            print("survived: " + shown(mutant), flush=True)
    tried = noticed + len(survived) + explained
    share = noticed / max(tried, 1)
    print(f"RESULT mutation: {tried} mutants (seed {options.seed}), {noticed} noticed ({100 * share:.1f} %), "
          f"{explained} explained, {len(survived)} survived unexplained")
    return 0 if tried and share >= WANTED and not survived else 1


if __name__ == "__main__":
    sys.exit(main())
