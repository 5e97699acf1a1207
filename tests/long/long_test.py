#!/usr/bin/env python3
"""Whether the long test reports what its stages did, with stages that are made up. Exit status 77 without git."""
import re
import shutil
import subprocess

import repository

# Stands where the project's `run` stands: says with what it was called, does what the file of the stage's name says.
RUN = """#!/usr/bin/env bash
echo "$*" >>calls
. "./$2.stage"
"""


class LongTest(repository.RepositoryTest):
    def setUp(self):
        super().setUp()
        shutil.copytree(repository.PROJECT / "tests/long", self.root / "tests/long")
        self.write("run", RUN, 0o755)
        self.write(".gitignore", "build\ncalls\n__pycache__\n*.stage\n")
        self.begin()

    def stage(self, name, script):
        self.write(f"{name}.stage", script)

    def long(self, *words):
        return subprocess.run([self.root / "tests/long/long.sh", *words], check=False, capture_output=True, text=True)

    def report(self):
        return (self.root / "tests/results.md").read_text(encoding="utf-8")

    def row(self, stage):
        """Outcome and commit of a stage."""
        rows = re.findall(rf"^\| \[?{stage}\b[^|]*\| ([^|]*?) \| (?:([^|]*?) )?\|", self.report(), re.MULTILINE)
        self.assertEqual(len(rows), 1, self.report())
        return rows[0]

    def figures(self, stage):
        """The figures of a stage by their names, without its machine's."""
        section = self.report().split(f"\n## {stage}\n", 1)[1].split("\n## ", 1)[0]
        found = dict(re.findall(r"^\| ((?:[^|\\]|\\.)+) \| (.*) \|$", section, re.MULTILINE))
        self.assertIn("GiB", found.pop("machine"))
        return found

    def test_a_stage_is_told_with_its_figures_and_its_commit(self):
        commit = self.commit()
        self.stage("release", "echo 'RESULT tests: 5 run'; echo 'not a figure'; echo 'RESULT dearest: 2 ms'")
        self.assertEqual(self.long("release").returncode, 0)
        self.assertEqual(self.row("release"), ("passed", commit))
        self.assertEqual(self.figures("release"), {"tests": "5 run", "dearest": "2 ms"})
        self.assertEqual(self.row("lint"), ("not run", ""))

    def test_changes_that_are_not_committed_are_told(self):
        commit = self.commit()
        self.write("run", RUN + "true\n", 0o755)
        self.stage("release", "true")
        self.long("release")
        self.assertEqual(self.row("release"), ("passed", f"{commit} with changes"))

    def test_a_new_clone_keeps_what_the_report_has_of_other_stages(self):
        self.stage("release", "echo 'RESULT one|two: 1 | 2'")
        self.long("release")
        first = self.commit()
        before = self.row("release")
        shutil.rmtree(self.root / "build")
        self.stage("lint", "echo 'RESULT findings: 0'")
        self.assertEqual(self.long("lint").returncode, 0)
        self.assertEqual(self.row("lint"), ("passed", first))
        self.assertEqual(self.row("release"), before)
        self.assertEqual(self.figures("release"), {r"one\|two": r"1 \| 2"})

    def test_a_stage_that_runs_again_is_told_once_and_anew(self):
        self.stage("release", "echo 'RESULT tests: 5 run'; echo 'RESULT gone: 1'")
        self.long("release")
        self.stage("release", "echo 'RESULT tests: 6 run'")
        self.long("release")
        self.assertEqual(self.figures("release"), {"tests": "6 run"})
        self.assertEqual(self.report().count("\n## release\n"), 1)

    def test_the_report_does_not_grow_when_nothing_is_new(self):
        self.stage("release", "echo 'RESULT tests: 5 run'")
        self.stage("lint", "true")
        self.long("release", "lint")
        once = self.report()
        command = [self.root / "tests/long/results.sh", self.root / "tests/results.md", self.root, "release", "lint"]
        again = subprocess.run(command, check=True, capture_output=True, text=True).stdout
        self.assertEqual(again, "".join(line for line in once.splitlines(True) if "not run" not in line))

    def test_a_stage_that_fails_is_told_and_the_next_one_runs(self):
        self.stage("release", "echo 'RESULT tests: 5 run, 1 failed'; exit 1")
        self.stage("lint", "true")
        done = self.long("release", "lint")
        self.assertEqual(done.returncode, 1)
        self.assertIn("not passed: release;", done.stderr)
        self.assertEqual(self.row("release")[0], "FAILED")
        self.assertEqual(self.row("lint")[0], "passed")

    def test_a_stage_that_has_more_to_do_is_unfinished(self):
        self.stage("fuzz", "echo 'RESULT fuzz.one: 7 executions'; exit 3")
        self.assertEqual(self.long("fuzz").returncode, 1)
        self.assertEqual(self.row("fuzz")[0], "unfinished")

    def test_minutes_are_those_of_fuzzing_wherever_they_stand(self):
        for name in ("lint", "fuzz"):
            self.stage(name, "true")
        for words in (("--minutes", "5", "lint", "fuzz"), ("lint", "fuzz", "--minutes", "5")):
            self.write("calls", "")
            self.long(*words)
            calls = (self.root / "calls").read_text(encoding="utf-8").splitlines()
            self.assertEqual(calls, ["stage lint", "stage fuzz --minutes 5"])

    def test_what_it_cannot_understand_is_refused_before_anything_runs(self):
        for words, expected in ((("lint", "--minutes"), "--minutes: expected a number, found ''"),
                                (("--minutes", "0"), "--minutes: expected a number, found '0'"),
                                (("lint", "tidy"), "found 'tidy'"), (("release debug",), "found 'release debug'")):
            done = self.long(*words)
            self.assertEqual(done.returncode, 2)
            self.assertIn(expected, done.stderr)
        self.assertFalse((self.root / "calls").exists())


if __name__ == "__main__":
    repository.main()
