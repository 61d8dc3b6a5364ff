# SPDX-License-Identifier: BSD-2-Clause
"""Manual pages and completions against --help: manual.py BIN-DIR

install     the component `command` brings all of them, where man and the shells look for them
pages       mandoc has nothing to say, man shows them without a warning, and options, texts and examples are those of --help
completions bash, zsh and fish offer the commands and options of --help at every place, and the values that it lists
terminals   bash and zsh complete a whole command line on a terminal, key by key
manners     every command takes --threads, every one that makes files the same options for them
version     --version --verbose tells what a report needs
"""

import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "support"))
from help import Command  # noqa: E402

NEEDED = ("mandoc", "man", "bash", "zsh", "fish", "cmake", "taskset")
TAB, MARK = "\t", "\x07"


def setUpModule():
    global ROOT, SHARE, FOLDER
    FOLDER = tempfile.mkdtemp()
    subprocess.run(["cmake", "--install", os.path.join(BIN, ".."), "--prefix", FOLDER, "--component", "command"],
                   check=True, capture_output=True)
    SHARE = pathlib.Path(FOLDER, "share")
    ROOT = Command(ZMX, ("zmx",))


def tearDownModule():
    shutil.rmtree(FOLDER)


def run(*args, **more):
    return subprocess.run(args, capture_output=True, text=True, timeout=120, **more)


def offered_at(c):
    """The words that can stand behind a command: commands below it, and options."""
    return {child.words[-1] for child in c.commands}, {name for o in c.options for name in o.names}


class Pages(unittest.TestCase):
    def pages(self):
        return {"-".join(c.words): c for c in ROOT.all()}

    def test_each_command_has_one_and_there_is_no_other(self):
        there = {p.name for p in (SHARE / "man/man1").iterdir()}
        self.assertEqual(there, {name + ".1" for name in self.pages()})
        self.assertGreater(len(there), 15)

    def test_no_reader_of_them_warns(self):
        for name in self.pages():
            path = str(SHARE / "man/man1" / (name + ".1"))
            lint = run("mandoc", "-T", "lint", "-W", "warning", path)
            self.assertEqual((lint.returncode, lint.stdout + lint.stderr), (0, ""), name)
            shown = run("man", "--warnings", "-l", path, env={**os.environ, "MANWIDTH": "80"})
            self.assertEqual((shown.returncode, shown.stderr), (0, ""), name)

    def shown(self, name):
        """The lines of a page as man shows it, found by its name, in lines that are wide enough for any text."""
        env = {**os.environ, "MANWIDTH": "600", "MANPAGER": "cat", "LC_ALL": "C.UTF-8", "MAN_KEEP_FORMATTING": ""}
        page = run("man", "-M", str(SHARE / "man"), name, env=env)
        self.assertEqual(page.returncode, 0, page.stderr)
        return page.stdout.splitlines()

    def section(self, lines, head):
        begin = lines.index(head) + 1
        end = next((i for i in range(begin, len(lines)) if re.match(r"\S", lines[i])), len(lines))
        return [line for line in lines[begin:end] if line.strip()]

    def test_they_say_what_help_says(self):
        for name, c in self.pages().items():
            with self.subTest(name):
                lines = self.shown(name)
                self.assertEqual(self.section(lines, "NAME"), [f"       {name} - {c.text}"])
                self.assertEqual([line.strip() for line in self.section(lines, "SYNOPSIS")], [c.usage])
                self.assertEqual([line.strip() for line in self.section(lines, "EXAMPLES")], c.examples)
                rows = self.section(lines, "OPTIONS")
                first = next(i for i, row in enumerate(rows) if re.match(r"       -", row))
                self.assertEqual(" ".join(rows[first:]).split(),
                                 " ".join(f"{o.left} {o.text}." for o in c.options).split())
                status = " ".join(self.section(lines, "EXIT STATUS"))
                for code in "012":
                    self.assertRegex(status, rf"\b{code}  ")


class Manners(unittest.TestCase):
    def test_every_command_takes_threads(self):
        for c in ROOT.all():
            if not c.commands:
                self.assertIn("--threads", offered_at(c)[1], c.words)

    def test_every_command_that_makes_files_makes_them_alike(self):
        makers = [c for c in ROOT.all() if "OUT" in c.usage]
        self.assertGreater(len(makers), 7)
        for c in makers:
            self.assertTrue(c.usage.endswith("[OPTIONS] IN... [OUT]"), c.usage)
            for names in ("-o --output", "--suffix", "-f --force", "-q --quiet", "-v --verbose", "--strict", "-t --threads"):
                self.assertIn(names.split(), [o.names for o in c.options], c.words)


class Completions(unittest.TestCase):
    """Each shell is a function from a command line to the words that it offers for the last word of it."""

    def check(self, offers):
        """offers(lines) gives a set of words for each line."""
        places, lines, wanted = ROOT.all(), [], []
        for c in places:
            commands, options = offered_at(c)
            if commands:
                lines.append(" ".join(c.words) + " ")
                wanted.append(commands)
            lines.append(" ".join(c.words) + " --")
            wanted.append({o for o in options if o.startswith("--")})
            for option in c.options:
                if option.choices():
                    lines.append(" ".join(c.words) + f" {option.names[-1]} ")
                    wanted.append(option.choices())
        got = offers(lines)
        self.assertEqual(len(got), len(lines))
        for line, words, right in zip(lines, got, wanted):
            self.assertEqual(words - {"-h"} if line.endswith(" ") else words, right, line)
        self.assertGreater(len(lines), 40)

    def bash(self, lines):
        script = f'. "{SHARE}/bash-completion/completions/zmx"\ncompopt() {{ :; }}\n'
        script += "offer() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); COMPREPLY=(); _zmx; echo \"${COMPREPLY[*]}\"; }\n"
        for line in lines:
            script += "offer " + " ".join(f"'{word}'" for word in line.split(" ")) + "\n"
        out = run("bash", "--norc", "-c", script)
        self.assertEqual((out.returncode, out.stderr), (0, ""))
        # Options and commands are offered together where nothing is typed yet.
        offers = [set(line.split()) for line in out.stdout.splitlines()]
        return [{w for w in o if not w.startswith("-")} if l.endswith(" ") else o for o, l in zip(offers, lines)]

    def test_bash(self):
        self.check(self.bash)
        self.assertEqual(self.bash(["zmx jpeg encode --dct = f"]), [{"float"}])
        self.assertEqual(self.bash(["zmx jpeg encode a.png --quality "]), [set()])

    def test_bash_offers_files_where_they_belong(self):
        with tempfile.TemporaryDirectory() as folder:
            open(os.path.join(folder, "a picture.png"), "w").close()
            os.mkdir(os.path.join(folder, "a folder"))
            script = (f'cd "{folder}"; . "{SHARE}/bash-completion/completions/zmx"; compopt() {{ :; }}\n'
                      'for last in "encode a" "decode --show-scans a"; do COMP_WORDS=(zmx jpeg $last)\n'
                      'COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _zmx; printf "%s," "${COMPREPLY[@]}"; echo; done')
            out = run("bash", "--norc", "-c", script).stdout.splitlines()
            self.assertEqual(set(out[0].split(",")), {"a picture.png", "a folder", ""})
            self.assertEqual(out[1], "a folder,")

    def test_fish(self):
        def offers(lines):
            script = f'source "{SHARE}/fish/vendor_completions.d/zmx.fish"\n'
            script += "".join(f"complete -C '{line}'\necho END\n" for line in lines)
            out = run("fish", "--no-config", "-c", script, cwd=FOLDER)
            self.assertEqual((out.returncode, out.stderr), (0, ""))
            return [{w.split("\t")[0] for w in part.splitlines()} for part in out.stdout.split("END\n")[:-1]]

        self.check(offers)

    def test_zsh(self):
        # What is offered goes through compadd.
        collect = """compadd() { local -a hits; builtin compadd -A hits "$@"; print -rl -- $hits >>$OUT; builtin compadd "$@"; }
unsetopt menu_complete auto_menu list_beep
"""
        terminal = Terminal.zsh(collect)
        try:
            def offers(lines):
                return [set(terminal.answer(line + TAB).split()) for line in lines]

            self.check(offers)
        finally:
            terminal.close()


class Terminal:
    """A shell on a terminal. What it writes to $OUT is the answer; a key makes a mark there
    and empties the line, so that no time is waited."""

    def __init__(self, args, env):
        self.folder = env["OUT_FOLDER"]
        self.out = os.path.join(self.folder, "out")
        open(self.out, "w").close()
        self.process, self.end = pty.fork()
        if self.process == 0:
            os.execvpe(args[0], args, {**os.environ, **env, "OUT": self.out, "TERM": "vt100", "PS1": "> "})
        self.read = 0
        self.answer("")

    @classmethod
    def zsh(cls, more):
        folder = tempfile.mkdtemp()
        with open(os.path.join(folder, ".zshrc"), "w") as rc:
            rc.write(f"fpath=('{SHARE}/zsh/site-functions' $fpath); autoload -Uz compinit; compinit -u -D\n{more}"
                     "mark() { print MARK >>$OUT; BUFFER= }\nzle -N mark\nbindkey '^G' mark\nLISTMAX=10000\nstty rows 300 cols 200\n")
        return cls(["zsh", "-d", "-i"], {"ZDOTDIR": folder, "OUT_FOLDER": folder})

    @classmethod
    def bash(cls, more):
        folder = tempfile.mkdtemp()
        rc = os.path.join(folder, "rc")
        with open(rc, "w") as file:
            file.write(f'. "{SHARE}/bash-completion/completions/zmx"\n{more}'
                       "bind -x '\"\\C-g\": echo MARK >>$OUT; READLINE_LINE='\nbind 'set bell-style none'\n")
        return cls(["bash", "--noprofile", "--rcfile", rc, "-i"], {"OUT_FOLDER": folder})

    def answer(self, keys):
        """Types keys on an empty line, and gives what $OUT got by them."""
        os.write(self.end, (keys + MARK).encode())
        until = time.monotonic() + 60
        while time.monotonic() < until:
            if select.select([self.end], [], [], 0.02)[0]:
                os.read(self.end, 65536)
            with open(self.out) as file:
                file.seek(self.read)
                text = file.read()
            if text.endswith("MARK\n"):
                self.read += len(text)
                return text[:-5]
        raise TimeoutError(f"no answer to {keys!r}")

    def close(self):
        os.close(self.end)
        os.waitpid(self.process, 0)
        shutil.rmtree(self.folder)


class Terminals(unittest.TestCase):
    def test_a_command_line_is_completed_key_by_key(self):
        for shell in (Terminal.bash, Terminal.zsh):
            terminal = shell('zmx() { echo "RAN $*" >>$OUT; }\n')
            try:
                said = terminal.answer("zmx jp\tenc\t--opti\t\r")
                self.assertEqual(said.split(), ["RAN", "jpeg", "encode", "--optimize"], shell)
            finally:
                terminal.close()


class Version(unittest.TestCase):
    def test_the_short_one_is_a_line(self):
        self.assertRegex(run(ZMX, "--version").stdout, r"^libzmxjpx\.so\.6\.1 6\.1 build [0-9.]+\n$")
        self.assertEqual(run(ZMX, "--version").stdout, run(ZMX, "-V").stdout)

    def test_the_long_one_tells_what_a_report_needs(self):
        out = run("taskset", "-c", str(min(os.sched_getaffinity(0))), ZMX, "--version", "--verbose").stdout
        self.assertTrue(out.startswith(run(ZMX, "--version").stdout))
        rows = dict(line.split(None, 1) for line in out.splitlines()[1:])
        self.assertRegex(rows["compiler"], r"^(gcc|clang) \d")
        self.assertRegex(rows["processors"], r"^1 allowed of \d+$")
        self.assertEqual(rows["threads"], "1 at the most")
        self.assertRegex(rows["pictures"], r"\.png.*libpng 1\.\d.*libtiff 4\.\d")
        self.assertRegex(rows["level"], r"^(baseline|x86-64-v\d)$")
        self.assertTrue(os.path.exists(out.split("loaded from ")[1].splitlines()[0]))
        for c in ROOT.commands:
            self.assertEqual(rows[c.words[-1]], c.text)

    def test_verbose_alone_is_a_wrong_command_line(self):
        self.assertEqual(run(ZMX, "--verbose").returncode, 2)


if __name__ == "__main__":
    BIN = os.path.realpath(sys.argv[1])
    ZMX = os.path.join(BIN, "zmx")
    missing = [program for program in NEEDED if not shutil.which(program)]
    if missing:
        print("no " + ", no ".join(missing))
        sys.exit(77)
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
