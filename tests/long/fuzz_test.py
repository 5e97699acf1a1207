#!/usr/bin/env python3
"""Whether fuzz.sh ends, tells and goes on with targets as it says, with targets that are made up.

Exit status 77 without git.
"""
import os
import shutil
import signal
import subprocess
import time

import repository

# A target: writes what libFuzzer writes, and ends when it is asked to. EDGES are those of its first inputs and of all,
# COUNT its executions, CODE its exit code, NAP how long it takes, unless it is asked to end.
TARGET = """#!/usr/bin/env bash
trap 'nap=0' USR1
echo $$ >>"$RUNS"
edges=({edges})
echo "#2 INITED cov: ${{edges[0]}} ft: 9"
echo "#3 NEW cov: ${{edges[1]}} ft: 9"
nap={nap}
while [ "$nap" -gt 0 ]; do sleep 0.1; nap=$((nap - 1)); done
for option in "$@"; do
  case $option in -artifact_prefix=*) prefix=${{option#*=}} ;; esac
done
[ {code} -eq 0 ] || : >"${{prefix}}crash-1"
echo "stat::number_of_executed_units: {count}"
exit {code}
"""


class FuzzTest(repository.RepositoryTest):
    def setUp(self):
        super().setUp()
        self.build = self.root / "build"
        for folder in ("bin", "fuzz", "lib"):
            (self.build / folder).mkdir(parents=True)
        # What takes ten minutes takes two seconds here.
        script = (repository.PROJECT / "fuzz/fuzz.sh").read_text(encoding="utf-8")
        for name, usual, here in (("most_idle_seconds", 600, 2), ("poll_seconds", 1, 0.1)):
            self.assertIn(f"\n{name}={usual}\n", script)
            script = script.replace(f"\n{name}={usual}\n", f"\n{name}={here}\n")
        self.write("fuzz/fuzz.sh", script)
        (self.root / "tests/long").mkdir(parents=True)
        shutil.copy(repository.PROJECT / "tests/long/commit.sh", self.root / "tests/long")
        for name in ("src/one.cpp", "cmake/x", "examples/x.xml", "CMakeLists.txt", "CMakePresets.json", "tests/results.md"):
            self.write(name, "")
        self.write(".gitignore", "build\nfuzz/corpus\n")
        self.begin()

    def target(self, name, edges="5 6", count=10000000, code=0, nap=0):
        self.write(f"build/bin/fuzz_{name}", TARGET.format(edges=edges, count=count, code=code, nap=nap), 0o755)
        with open(self.build / "fuzz/targets.txt", "a", encoding="utf-8") as targets:
            targets.write(f"{name}|64||\n")

    def start(self, *words):
        """The script, which writes into self.runs the process of each target that begins."""
        self.runs = self.build / "runs"
        self.runs.write_text("", encoding="utf-8")
        return subprocess.Popen(["bash", self.root / "fuzz/fuzz.sh", self.build, *words], text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                env=dict(os.environ, RUNS=str(self.runs)))

    def processes(self):
        return [int(line) for line in self.runs.read_text(encoding="utf-8").splitlines()]

    def fuzz(self, *words):
        """Exit code, what was told, and how many targets ran."""
        with self.start(*words) as script:
            told = script.communicate()[0]
        return script.returncode, told, len(self.processes())

    def report(self, told):
        """Puts what was told into the report of the long test."""
        name, figures = told.removeprefix("RESULT ").strip().split(": ", 1)
        self.write("tests/results.md", f"| {name} | {figures} |\n")

    def test_a_target_that_had_all_its_inputs_is_told_with_the_commit(self):
        commit = self.commit()
        self.target("one")
        code, told, _ = self.fuzz()
        self.assertEqual(code, 0)
        self.assertIn("RESULT fuzz.one: 10000000 executions in ", told)
        self.assertIn(" edges 5 -> 6, the last new one at execution 3, ", told)
        self.assertTrue(told.endswith(f"nothing found at {commit}\n"), told)

    def test_a_target_that_finds_nothing_new_is_asked_to_end(self):
        self.target("one", count=1234, nap=300)
        code, told, _ = self.fuzz()
        self.assertEqual(code, 0)
        self.assertRegex(told, r"1234 executions in [2-9] s, .* [2-9] s before the end, .*, nothing found at \w+\n")

    def test_a_whole_run_goes_on_when_nothing_is_new(self):
        self.target("one", nap=40)
        code, told, _ = self.fuzz("--whole")
        self.assertEqual(code, 0)
        self.assertRegex(told, r"10000000 executions in [4-9] s,")

    def test_what_is_found_is_told(self):
        self.target("one", code=77)
        self.target("two")
        code, told, runs = self.fuzz()
        self.assertEqual((code, runs), (1, 2))
        self.assertRegex(told, r"fuzz.one: .*, FOUND, see .*/one\.log\n")
        self.assertTrue((self.build / "fuzz/found/one-crash-1").exists())

    def test_when_the_time_is_up_nothing_is_said_to_be_at_its_end(self):
        script = (self.root / "fuzz/fuzz.sh").read_text(encoding="utf-8")
        self.assertIn("60 * $2", script)
        # A minute is two to three seconds here: the shell counts whole ones, and the first may end at once.
        self.write("fuzz/fuzz.sh", script.replace("60 * $2", "3 * $2"))
        for name in ("one", "two", "three", "four", "five"):
            self.target(name, count=12, nap=300)
        code, told, runs = self.fuzz("--whole", "--minutes", "1")
        self.assertEqual(code, 3)
        self.assertEqual(told.count("not begun\n"), 5 - runs)
        self.assertEqual(told.count("nothing found so far\n"), runs)
        self.assertGreater(runs, 0)

    def test_when_it_is_stopped_its_targets_stop_and_find_nothing(self):
        self.target("one", code=77, nap=300)
        with self.start() as script:
            while not self.processes():
                self.assertIsNone(script.poll(), "it ended without a target")
                time.sleep(0.1)
            script.terminate()
            told = script.communicate()[0]
        self.assertEqual((script.returncode, told), (-signal.SIGTERM, ""))
        self.assertRaises(ProcessLookupError, os.kill, self.processes()[0], 0)
        self.assertEqual(list((self.build / "fuzz/found").iterdir()), [])

    def test_resume_tells_again_what_came_to_its_end(self):
        self.target("one")
        first = self.fuzz()
        again = self.fuzz("--resume")
        self.assertEqual((again[0], again[1], again[2]), (0, first[1], 0))

    def test_resume_runs_what_did_not_come_to_its_end(self):
        self.target("one", count=5)
        self.assertEqual(self.fuzz("--seconds", "1")[0], 0)
        self.target("one")
        self.assertEqual(self.fuzz("--resume", "one")[2], 1)

    def test_resume_in_a_new_clone_takes_the_report_at_its_word(self):
        self.target("one")
        told = self.fuzz()[1]
        self.report(told)
        shutil.rmtree(self.build / "fuzz/work")
        self.commit()
        self.assertEqual(self.fuzz("--resume"), (0, told, 0))

    def test_resume_runs_again_what_has_other_sources(self):
        self.target("one")
        self.report(self.fuzz()[1])
        self.write("src/one.cpp", "changed")
        self.assertEqual(self.fuzz("--resume")[2], 1)
        self.commit()
        self.assertEqual(self.fuzz("--resume")[2], 1)

    def test_resume_runs_again_the_target_whose_own_file_is_another(self):
        for name in ("one", "two"):
            self.target(name)
            self.write(f"fuzz/{name}.cpp", "")
        self.commit()
        self.fuzz()
        self.write("fuzz/two.cpp", "changed")
        self.assertEqual(self.fuzz("--resume", "one")[2], 0)
        self.assertEqual(self.fuzz("--resume", "two")[2], 1)

    def test_resume_runs_the_commands_targets_again_when_the_command_is_another(self):
        for name in ("one", "tool_one"):
            self.target(name)
            self.write(f"fuzz/{name}.cpp", "")
        self.write("src/cvt/tool/main.cpp", "")
        self.commit()
        self.fuzz()
        self.write("src/cvt/tool/main.cpp", "changed")
        self.assertEqual(self.fuzz("--resume", "one")[2], 0)
        self.assertEqual(self.fuzz("--resume", "tool_one")[2], 1)

    def test_resume_runs_again_what_runs_the_format_that_is_another(self):
        unchanged = ("csv_messages", "config_iso", "strings", "tool_framing")
        changed = ("config_xml", "xml_messages", "conversion", "tool_json")
        for name in (*unchanged, *changed):
            self.target(name)
            self.write(f"fuzz/{name}.cpp", "Configuration" if name in ("conversion", "tool_json") else "")
        self.write("src/cvt/plug/xml/parser.cpp", "")
        self.commit()
        self.fuzz()
        self.write("src/cvt/plug/xml/parser.cpp", "changed")
        self.assertEqual(self.fuzz("--resume", *unchanged)[2], 0)
        self.assertEqual(self.fuzz("--resume", *changed)[2], len(changed))

    def test_resume_runs_again_what_no_commit_has(self):
        self.write("src/one.cpp", "changed")
        self.target("one")
        self.assertIn(" with changes\n", self.fuzz()[1])
        self.assertEqual(self.fuzz("--resume")[2], 1)

    def test_what_it_cannot_understand_is_refused(self):
        self.target("one")
        for words, expected in ((("--minutes",), "--minutes: expected a number, found ''"),
                                (("--seconds", "0"), "--seconds: expected a number, found '0'"),
                                (("--slow",), "found '--slow'"), (("three",), "expected one of one, found 'three'")):
            code, told, runs = self.fuzz(*words)
            self.assertEqual((code, runs), (2, 0), told)
            self.assertIn(expected, told)


if __name__ == "__main__":
    repository.main()
