# SPDX-License-Identifier: BSD-2-Clause
"""The functions of the public headers, read from their prototypes and comments."""
from __future__ import annotations

import re
from dataclasses import dataclass
from pathlib import Path


@dataclass
class Parameter:
    """One parameter of C: `const Zmx8u* const pSrc[3]` has type Zmx8u, const, pointer depth 1 and planes 3."""

    type: str
    name: str
    const: bool
    depth: int
    planes: int

    @property
    def python(self) -> str:
        """The name without the p of a pointer."""
        match = re.fullmatch(r"p{1,2}([A-Z]\w*|nPasses|nTermPasses)", self.name)
        return self.name if not match or not self.depth and not self.planes else match[1][0].lower() + match[1][1:]

    @property
    def element(self) -> str:
        return ("const " if self.const else "") + self.type


@dataclass
class Prototype:
    """A function of the headers, with its comment."""

    name: str
    parameters: list[Parameter]
    comment: str


def parameters(text: str) -> list[Parameter]:
    """What stands between the brackets of a prototype."""
    found = []
    for part in text.split(","):
        plain = re.sub(r"\* const ", "* ", part.strip())
        match = re.fullmatch(r"(const )?(\w+)(\**)\s*(\**)\s*(\w+)(?:\[(\d)\])?", plain)
        if not match:
            raise SystemExit(f"generate.py: not a parameter: {part}")
        const, kind, stars, more, name, planes = match.groups()
        depth = len(stars + more) - (1 if planes and stars else 0)
        found.append(Parameter(kind, name, bool(const), depth, int(planes or 0)))
    return found


def prototypes(include: Path) -> list[Prototype]:
    """The exported functions with their comments, in the order of the headers."""
    found = []
    for header in [*sorted((include / "zmxj").glob("*.h")), include / "zmxj.h"]:
        text = header.read_text()
        for match in re.finditer(r"/\*\*((?:(?!\*/).)*)\*/\s*ZMXJ_API ZmxStatus (\w+)\(([^;]*)\);", text, re.S):
            comment, name, rest = match.groups()
            found.append(Prototype(name, parameters(rest), re.sub(r"\n \*( |$)?", "\n", comment, flags=re.M)))
    return found
