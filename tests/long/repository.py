"""A small repository in which a script of the project runs on what is made up."""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]


class RepositoryTest(unittest.TestCase):
    """self.root is the repository, with its first commit when begin() was called."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)

    def write(self, name, text, mode=0o644):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
        file.chmod(mode)

    def begin(self):
        self.git("init", "-q")
        self.commit()

    def git(self, *words):
        names = ["-c", "user.name=test", "-c", "user.email=test@localhost"]
        return subprocess.run(["git", *names, *words], cwd=self.root, check=True, capture_output=True, text=True).stdout

    def commit(self):
        """The short name of a new commit."""
        self.git("add", "-A")
        self.git("commit", "-q", "--allow-empty", "-m", "a state")
        return self.git("rev-parse", "--short", "HEAD").strip()


def main():
    if shutil.which("git") is None:
        print("skipped: no git")
        sys.exit(77)
    unittest.main()
