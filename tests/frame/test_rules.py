#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""test_rules.py: whether each rule of check_rules.py notices a made-up tree that breaks it, and leaves a good one alone."""
import sys

sys.dont_write_bytecode = True
import check_rules as rules


def code(name, lines=20, head=""):
    """Lines that differ from all others, every fourth with a comment."""
    return head + "".join(f"int {name}{i};{' // why' if i % 4 == 0 else ''}\n" for i in range(lines))


def function(name, lines):
    """A function of so many lines."""
    return f"template <class T>\nint {name}(T a) {{\n" + code(name, lines - 3) + "}\n"


GOOD = {
    rules.ARCHITECTURE: """
| folder | what is in it | may include |
|---|---|---|
| `include/` | the interface | nothing |
| `src/` | the library | `include/` |
| `codecs/picture/` | pictures | nothing |
| `codecs/jpeg/`, `codecs/tiff/` | files | `include/`, `codecs/picture/`; libtiff |
| `zmx/` | the command | `codecs/` |
| `fuzz/` | fuzzers | nothing |
| `bench/` | benchmarks | `include/`; `src/pjrows.h` for a count |
| `tests/` | tests | `src/` |

| family | modules | stands on | header | model | tests | benchmark rows | fuzz target |
|---|---|---|---|---|---|---|---|
| base | `pjrows`, `pjwrap` | | `zmxj.h` | | | | |
| planes | `pjplane` | base | `zmxj/plane.h` | `planes/model/plane` | `planes/test_own_plane` | `plane/` | `fuzz_plane` |
| blocks | `pjblock` | base, planes | | | | | |

What all stand on: `pjrows.h` and `pjwrap.h`. Then `pjplane` and `pjblock`.
""",
    rules.README: "A [map](docs/architecture.md), and [planes](docs/planes.md#rows).\n",
    "docs/planes.md": "Planes.\n",
    "docs/guides/first.md": "A guide.\n",
    rules.CONTRIBUTING: "Functions of 60 lines, files of 450 lines, 15 to 30 % comments, no 6 lines\ntwice.\n",
    "include/zmxj.h": "int zmxiPlane(int a); // int zmxiNone(int a);\n",
    "include/zmxj/plane.h": "",
    "src/pjwrap.h": code("wrap"),
    "src/pjrows.h": code("rows", head='#include "pjwrap.h"\n'),
    "src/pjplane.h": code("planeOf", head='#include "pjrows.h"\n#include "zmxj.h"\n'),
    "src/pjplane.cpp": function("plane", 60) + function("other", 60),
    "src/pjblock.cpp": code("block", 449, head='#include "pjplane.h"\n'),
    "codecs/picture/picture.h": code("picture"),
    "codecs/jpeg/jpeg.h": code("jpeg", head='#include "codecs/picture/picture.h"\n'),
    "codecs/tiff/tiff.cpp": code("tiff", head='#include "zmxj.h"\n'),
    "zmx/main.cpp": code("main", head='#include "codecs/jpeg/jpeg.h"\n'),
    "bench/bench_plane.cpp": '#include "src/pjrows.h"\nint run() { return zmxiPlane(1); }\nauto name = "plane/";\n',
    "fuzz/fuzz_plane.cpp": "",
    "tests/planes/test_own_plane.cpp": '#include "pjplane.h"\n',
    "tests/planes/model/plane.h": "",
}

TABLE = "constexpr int kTable[] = {\n    1, // one\n    2,\n    3,\n    4,\n};\n"
TWICE = "".join(f"    call({i}, a + {i}, b);\n" for i in range(6))
TESTS = "    if (ZmxStatus bad = Args()\n" + "".join(f"        .ptr(p{i})\n" for i in range(6)) + "    )\n"
NAMES = "".join(f"    kName{i},\n" for i in range(9))

# A rule, and the files with which a tree breaks it; None takes a file away.
BROKEN = [
    (rules.who_may_include_whom, {"codecs/jpeg/a.h": '#include "codecs/tiff/tiff.h"\n', "codecs/tiff/tiff.h": ""}),
    (rules.who_may_include_whom, {"codecs/tiff/a.h": '#include "src/pjrows.h"\n'}),
    (rules.who_may_include_whom, {"codecs/picture/a.h": '#include "codecs/jpeg/jpeg.h"\n'}),
    (rules.who_may_include_whom, {"bench/a.cpp": '#include "src/pjwrap.h"\n'}),
    (rules.who_may_include_whom, {"zmx/a.cpp": '#  include "zmxj.h"\n'}),
    (rules.who_may_include_whom, {"codecs/jpeg/a.h": '#include "jpeg.h"\n'}),  # no path from the root
    (rules.who_may_include_whom, {"src/pjblock.h": '#include "src/pjrows.h"\n'}),  # here no path is wanted
    (rules.who_may_include_whom, {"tests/a.cpp": '#include "pjplane.h"\n'}),  # not an internal test
    (rules.who_may_include_whom, {"tools/a.cpp": ""}),
    (rules.who_may_include_whom, {"bench/bench_plane.cpp": None}),  # a row without a folder
    (rules.who_may_include_whom, {rules.ARCHITECTURE: "nothing"}),
    (rules.who_stands_on_whom, {"src/pjrows.h": '#include "pjplane.h"\n'}),
    (rules.who_stands_on_whom, {"src/pjplane.h": '#include "pjblock.h"\n', "src/pjblock.h": ""}),
    (rules.who_stands_on_whom, {rules.ARCHITECTURE: GOOD[rules.ARCHITECTURE].replace("| base, planes |", "| else |")}),
    (rules.who_stands_on_whom, {rules.ARCHITECTURE: GOOD[rules.ARCHITECTURE].replace("`pjplane` | base", "`pjplane` | blocks")}),
    (rules.who_stands_on_whom, {rules.ARCHITECTURE: "nothing"}),
    (rules.modules_are_named, {"src/pjnew.cpp": ""}),
    (rules.modules_are_named, {"src/pjwrap.h": None}),
    (rules.modules_are_named, {rules.ARCHITECTURE: GOOD[rules.ARCHITECTURE].replace("and `pjblock`.", ".")}),
    (rules.modules_are_named, {rules.ARCHITECTURE: GOOD[rules.ARCHITECTURE].replace("`pjplane` |", "`pjplane`, `pjrows` |")}),
    (rules.families_are_complete, {"include/zmxj/plane.h": None}),
    (rules.families_are_complete, {"include/zmxj/block.h": ""}),
    (rules.families_are_complete, {"tests/planes/model/plane.h": None}),
    (rules.families_are_complete, {"tests/planes/model/other.cpp": ""}),
    (rules.families_are_complete, {"tests/planes/test_own_plane.cpp": None}),
    (rules.families_are_complete, {"tests/planes/test_new.cpp": ""}),
    (rules.families_are_complete, {"fuzz/fuzz_plane.cpp": None}),
    (rules.families_are_complete, {"bench/bench_plane.cpp": "zmxiPlane"}),
    (rules.no_circles, {"src/pjrows.h": '#include "pjplane.h"\n'}),
    # By way of the two files of a module.
    (rules.no_circles, {"src/pjwrap.cpp": '#include "pjwrap.h"\n#include "pjrows.h"\n'}),
    (rules.no_circles, {"zmx/a.h": '#include "zmx/b.h"\n', "zmx/b.h": '#include "zmx/c.h"\n', "zmx/c.h": '#include "zmx/a.h"\n'}),
    (rules.no_function_like_macros, {"src/pjrows.h": "#define twice(x) ((x) + (x))\n"}),
    (rules.no_function_like_macros, {"zmx/a.cpp": " # define ONE() 1\n"}),
    (rules.no_long_macros, {"tests/a.h": "#define LIST 1, \\\n    2\n"}),
    (rules.files_are_short, {"src/pjblock.cpp": code("block", 451)}),
    (rules.functions_are_short, {"codecs/jpeg/a.cpp": function("a", 61)}),
    (rules.functions_are_short, {"codecs/jpeg/a.cpp": "class A {\n    int i;\n" + function("a", 61) + "};\n"}),
    (rules.functions_are_short, {"codecs/jpeg/a.cpp": "A::A(int i) : a{i}, b{1} {\n" + code("a", 60) + "}\n"}),
    (rules.functions_are_short, {"codecs/jpeg/a.cpp": "int a() const noexcept {\n" + code("a", 60) + "}\n"}),
    (rules.functions_are_short, {"codecs/jpeg/a.cpp": "auto a(int x) -> std::vector<int> {\n" + code("a", 60) + "}\n"}),
    (rules.functions_are_short, {"codecs/jpeg/a.cpp": "const int a = [] {\n" + code("a", 60) + "}();\n"}),
    (rules.functions_are_short, {"zmx/a.cpp": "int a() {\n    if (b) {\n" + code("a", 59) + "    }\n}\n"}),
    (rules.functions_are_short, {"zmx/a.cpp": "int a() { // {\n    char b = '{', *c = \"}\";\n" + code("a", 58) + "}\n"}),
    (rules.comments_are_a_fair_share, {"zmx/a.cpp": code("a", 40).replace("// why", "")}),
    (rules.comments_are_a_fair_share, {"src/a.cpp": "/* all\n of\n this */\n" * 300}),
    (rules.tables_are_explained, {"src/pjrows.h": TABLE}),
    (rules.nothing_stands_twice, {"src/pjrows.h": TWICE, "zmx/a.cpp": "    " + TWICE.replace(" + ", "+  ")}),
    (rules.nothing_stands_twice, {"src/pjrows.h": TWICE + code("rows") + TWICE}),
    (rules.nothing_stands_twice, {"src/pjrows.h": TWICE, "zmx/a.cpp": TWICE.replace(";\n", "; // why\n\n")}),
    (rules.nothing_stands_twice, {"tests/jpeg/model/a.h": TWICE, "tests/jpeg/support/a.h": TWICE}),
    (rules.every_function_has_a_benchmark, {"include/b.h": "ZmxStatus zmxiOther_8u(const int* p,\n    int n);\n"}),
    (rules.every_function_has_a_benchmark, {"bench/bench_plane.cpp": '// zmxiPlane\nconst char* name = "zmxiPlane";\n'}),
    (rules.every_function_has_a_benchmark, {"include/zmxj.h": ""}),
    (rules.pages_are_linked, {"docs/blocks.md": ""}),
    (rules.pages_are_linked, {"docs/planes.md": None}),
    (rules.pages_are_linked, {rules.README: "docs/planes.md, [a map](docs/architecture.md)"}),
    (rules.fuzzers_are_named, {"fuzz/fuzz_block.cpp": ""}),
    (rules.fuzzers_are_named, {"fuzz/fuzz_plane.cpp": None}),
    (rules.limits_are_stated, {rules.CONTRIBUTING: "Functions of 61 lines, files of 450 lines, 15 to 30 % comments, no 6 lines twice."}),
]

# What no rule minds: close to what it looks for.
HARMLESS = [
    # A .cpp that does not include the header of its name is not its other half.
    {"src/pjwrap.cpp": code("c", head='#include "pjrows.h"\n')},
    {"src/pjrows.h": code("rows", head='// #include "pjplane.h"\n')},
    {"src/pjrows.h": code("rows", head="#define ROWS (1)\n")},
    {"src/pjrows.h": code("rows", head="// All of it.\n" + TABLE)},
    {"src/pjrows.h": code("rows", head="// Names.\nenum A {\n" + NAMES + "};\n"), "zmx/a.cpp": code("c", head="enum B {\n" + NAMES + "};\n")},
    {"src/pjrows.h": code("rows", head="".join(TWICE.splitlines(True)[:5])), "zmx/a.cpp": code("a", head="".join(TWICE.splitlines(True)[:5]))},
    {"src/pjrows.h": code("rows", head=TWICE), "tests/model.h": TWICE},
    {"src/pjrows.h": code("rows", head=TESTS), "zmx/a.cpp": code("a", head=TESTS)},
    {"src/pjrows.h": code("rows", head="// Numbers.\nconst int k[] = {\n" + "    1,\n" * 70 + "};\n")},
    {"codecs/jpeg/a.cpp": "namespace a {\nclass B {\n" + function("a", 40) + function("b", 40) + "};\n}\n"},
    {"codecs/jpeg/a.cpp": "int c{1};\n" * 9 + function("a", 40).replace("a0;", "1'000'000;") + function("b", 40)},
]


def changed(changes):
    tree = {**GOOD, **changes}
    return {path: text for path, text in tree.items() if text is not None}


def main():
    failures = 0
    for rule, changes in BROKEN:
        if not list(rule(changed(changes))):
            print(f"{rule.__name__} does not notice {changes}")
            failures += 1
    for changes in [{}] + HARMLESS:
        for rule in rules.RULES:
            for fault in rule(changed(changes)):
                print(f"{rule.__name__} minds {list(changes)}: {fault}")
                failures += 1
    for rule in rules.RULES:
        if rule not in [broken for broken, _ in BROKEN]:
            print(f"{rule.__name__} is not tested")
            failures += 1
    print(f"{len(BROKEN)} broken trees, {len(HARMLESS) + 1} good ones, {failures} failures")
    return failures


if __name__ == "__main__":
    sys.exit(1 if main() else 0)
