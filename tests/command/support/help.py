# SPDX-License-Identifier: BSD-2-Clause
"""What zmx --help says, taken apart: the table that manual pages, completions and examples are held against."""

import re
import subprocess


class Option:
    def __init__(self, left, text):
        self.left, self.text = left, text
        self.names = re.findall(r"(?:^|, )(-[^\s,]+)", left)
        self.value = left[left.rfind(self.names[-1]) + len(self.names[-1]):].strip()

    def choices(self):
        """The words that the value may be, where help lists them; what has capitals and brackets names a form."""
        listed = re.search(r"one of ([^;)]+)", self.text)
        if listed:
            return set(listed.group(1).split(", "))
        return {c for c in self.value.split("|") if "[" not in c} if "|" in self.value else set()


class Command:
    """A command by its words, as in ("zmx", "jpeg", "encode"), and those below it."""

    def __init__(self, zmx, words):
        self.words = words
        self.help = subprocess.run([zmx, *words[1:], "--help"], capture_output=True, text=True, check=True).stdout
        self.text = self.help.split("\n\n")[0].replace("\n", " ").rstrip(".")
        self.usage = re.search(r"^Usage: (.*)$", self.help, re.M).group(1)
        self.options = [Option(left, text) for left, text in self.rows("Options") if left.startswith("-")]
        self.examples = [line.strip() for line in self.section("Examples")]
        self.commands = [Command(zmx, words + (left,)) for left, _ in self.rows("Commands")]

    def all(self):
        return [self] + [c for child in self.commands for c in child.all()]

    def section(self, head):
        found = re.search(rf"^{head}:\n((?:  .*\n)+)", self.help, re.M)
        return found.group(1).splitlines() if found else []

    def rows(self, head):
        """The two columns of a section, each text in one line."""
        rows = []
        for line in self.section(head):
            if line.startswith(" " * 20):
                rows[-1][1] = (rows[-1][1] + " " + line.strip()).strip()
            else:
                left, _, text = line.strip().partition("  ")
                rows.append([left, text.strip()])
        return rows
