#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_rules.py ROOT: the rules of CONTRIBUTING.md and docs/architecture.md that a script can check.

A rule is a function from a tree, a dictionary of paths and texts, to lines that tell what is wrong.
"""
import pathlib
import posixpath
import re
import sys

OURS = ("src/", "codecs/", "zmx/")  # what people read most
FOLDERS = ("include", "core", "src", "codecs", "zmx", "tests", "bench", "fuzz", "examples")
LONGEST_FILE = 450
LONGEST_FUNCTION = 60
COMMENTS = (15, 30)  # percent of the lines that are not blank
SAME_LINES = 6
ARCHITECTURE = "docs/architecture.md"
CONTRIBUTING = "CONTRIBUTING.md"
README = "README.md"


def is_code(path):
    return path.endswith((".h", ".cpp", ".c"))


def ours(tree):
    return [(path, tree[path]) for path in sorted(tree) if path.startswith(OURS) and is_code(path)]


# ---- C++, as far as it is needed

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)|(?P<string>R"(?P<tag>[^(\s]*)\(.*?\)(?P=tag)"|"(?:\\.|[^"\\\n])*")"""
    r"""|(?P<char>(?<!\w)'(?:\\.|[^'\\\n])+')""",
    re.S,
)


def code_of(text, strings=True):
    """The text without its comments, and without what is in strings, line by line as it stands."""

    def replace(match):
        if match.group("comment"):
            return " " + "\n" * match.group().count("\n")
        if strings:
            return match.group()
        return '""' + "\n" * match.group().count("\n")

    return TOKEN.sub(replace, text)


def comment_lines(text):
    """The numbers of the lines that have a comment on them."""
    lines = set()
    for match in TOKEN.finditer(text):
        if match.group("comment"):
            first = text.count("\n", 0, match.start())
            lines.update(range(first, first + match.group().count("\n") + 1))
    return lines


def kind_of_brace(words):
    """What a brace opens, by the words ahead of it: a scope, a function or data."""
    if re.search(r"\b(namespace|class|struct|union|enum|extern)\b[^()=]*$", words):
        return "scope"
    if re.search(r"(\)|\]|\bconst|\bnoexcept|\boverride|\bfinal|\bmutable|->[\w\s:<>,*&]+)$", words):
        return "function"
    return "function" if words.endswith("}") and ")" in words else "data"  # behind the initialisers of members


def functions(text):
    """The first and the last line of each function, its head included; lambdas within functions are part of them."""
    code = code_of(text, strings=False)
    code = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", lambda m: "\n" * m.group().count("\n"), code, flags=re.M)
    found, stack = [], []
    head = parentheses = 0  # where the words begin that tell what a brace opens; and how deep we are in ()
    for match in re.finditer(r"[{}();]", code):
        sign, at = match.group(), match.start()
        if sign in "()":
            parentheses += 1 if sign == "(" else -1
        elif sign == ";" and parentheses == 0:
            head = at + 1
        elif sign == "{":
            words = code[head:at].strip()
            kind = kind_of_brace(words)
            if kind == "function" and any(open_kind == "function" for open_kind, _, _ in stack):
                kind = "inner"
            stack.append((kind, head, parentheses))
            head, parentheses = at + 1, 0
        elif sign == "}" and stack:
            kind, begin, parentheses = stack.pop()
            if kind == "function":
                begin += len(code[begin:at]) - len(code[begin:at].lstrip())
                found.append((code.count("\n", 0, begin) + 1, code.count("\n", 0, at) + 1))
            # What follows the braces of data goes on: members are initialised, a declaration ends.
            head = begin if kind == "data" else at + 1
    return found


def includes(path, tree):
    """The files of the tree that a file includes, as (name, path); the path is None for one that is not there."""
    for name in re.findall(r'^\s*#\s*include\s*"([^"]+)"', tree[path], re.M):
        flat = path.startswith(("src/", "core/", "include/"))
        places = ["include/" + name, posixpath.dirname(path) + "/" + name if flat else name]
        # The internal tests and the library's own objects see its modules by name alone.
        if posixpath.basename(path).startswith("test_own_"):
            places += ["src/" + name, "core/" + name]
        yield name, next((place for place in map(posixpath.normpath, places) if place in tree), None)


def module(path):
    return posixpath.splitext(path)[0]


# ---- docs/architecture.md

def table(tree, first_head):
    """The rows of the table whose first column has this head, each a list of its cells; without the head."""
    rows, inside = [], False
    for line in tree.get(ARCHITECTURE, "").splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if not line.startswith("|"):
            inside = False
        elif inside:
            rows.append(cells)
        elif cells[0] == first_head:
            inside = True
    return rows[1:]  # the first row is the rule below the head


def names(cell):
    return re.findall(r"`([^`]+)`", cell)


def folder_rows(tree):
    """For each place of the table of folders: the places that it may include from."""
    rows = {}
    for cells in table(tree, "folder"):
        for place in names(cells[0]):
            rows[place] = names(cells[-1])
    return rows


def families(tree):
    """For each family of modules: the modules of src/, and the families that it stands on."""
    return {cells[0]: (names(cells[1]), [f.strip() for f in cells[2].split(",") if f.strip()])
            for cells in table(tree, "family")}


# ---- the rules

def who_may_include_whom(tree):
    rows = folder_rows(tree)
    if not rows:
        yield f"{ARCHITECTURE}: no table of folders"
    for place in rows:
        if not any(path.startswith(place) for path in tree):
            yield f"{ARCHITECTURE}: there is no {place}"
    for path in filter(is_code, sorted(tree)):
        place = max((p for p in rows if path.startswith(p)), key=len, default=None)
        if place is None:
            yield f"{path}: the table of folders does not name its folder"
            continue
        for name, target in includes(path, tree):
            if target is None:
                yield f"{path}: {name} is not where it should be"
            elif not target.startswith((place, *rows[place])):
                yield f"{path}: {place} may not include {target}"


def who_stands_on_whom(tree):
    rows = families(tree)
    if not rows:
        yield f"{ARCHITECTURE}: no table of families"
    family_of = {name: family for family, (modules, _) in rows.items() for name in modules}
    rank = {family: number for number, family in enumerate(rows)}
    for family, (_, below) in rows.items():
        for other in below:
            if other not in rank:
                yield f"{ARCHITECTURE}: {family} stands on {other}, which is no family"
            elif rank[other] >= rank[family]:
                yield f"{ARCHITECTURE}: {family} stands on {other}, which comes later"
    for path in sorted(tree):
        if not path.startswith("src/") or not is_code(path):
            continue
        own = family_of.get(posixpath.basename(module(path)))
        for name, target in includes(path, tree):
            other = family_of.get(posixpath.basename(module(target))) if target and target.startswith("src/") else None
            if own and other and own != other and other not in rows[own][1]:
                yield f"{path}: {own} does not stand on {other}, which has {name}"


def modules_are_named(tree):
    named = [name for modules, _ in families(tree).values() for name in modules]
    text = tree.get(ARCHITECTURE, "")
    there = sorted({posixpath.basename(module(path)) for path in tree if path.startswith("src/") and is_code(path)})
    for name in there:
        if named.count(name) != 1:
            yield f"{ARCHITECTURE}: {named.count(name)} families have the module {name}"
        if len(re.findall(rf"`{name}(?:\.h|\.cpp)?`", text)) < 2:
            yield f"{ARCHITECTURE}: nothing is said about the module {name}"
    for name in sorted(set(named) - set(there)):
        yield f"{ARCHITECTURE}: there is no module {name}"


def families_are_complete(tree):
    """Headers, models, tests, benchmarks and fuzz targets of the table are there, and no other header, model or test."""
    timed = "".join(text for path, text in tree.items() if path.startswith("bench/"))
    named = set()
    for cells in table(tree, "family"):
        paths = ["include/" + name for name in names(cells[3])]
        for name in names(cells[4]) + names(cells[5]):
            paths += [path for path in (f"tests/{name}.h", f"tests/{name}.cpp") if path in tree] or [f"tests/{name}"]
        paths += [f"fuzz/{name}.cpp" for name in names(cells[7])]
        named.update(paths)
        for path in paths:
            if path not in tree:
                yield f"{ARCHITECTURE}: {cells[0]}: there is no {path}"
        for row in names(cells[6]):
            if row not in timed:
                yield f"{ARCHITECTURE}: {cells[0]}: no benchmark has {row} in its name"
    family_folders = "|".join({path.split("/")[1] for path in named if path.startswith("tests/")}) or "none"
    for path in sorted(tree):
        if re.match(rf"include/zmxj/|tests/({family_folders})/(model/|test_)", path) and path not in named:
            yield f"{ARCHITECTURE}: no family has {path}"


def no_circles(tree):
    """No module includes itself by way of others; a .cpp and the header of its name that it includes are one module."""
    targets_of = {path: {target for _, target in includes(path, tree) if target} for path in filter(is_code, tree)}
    node_of = {path: module(path) if module(path) + ".h" in targets_of[path] else path for path in targets_of}
    node_of.update({name + ".h": name for path, name in node_of.items() if path != name})
    arrows = {}
    for path in sorted(targets_of):
        targets = {node_of[target] for target in targets_of[path]} - {node_of[path]}
        arrows.setdefault(node_of[path], set()).update(targets)
    done, way = set(), []

    def walk(node):
        if node in way:
            yield "a circle: " + " -> ".join(way[way.index(node):] + [node])
        elif node not in done:
            way.append(node)
            for target in sorted(arrows.get(node, ())):
                yield from walk(target)
            way.pop()
            done.add(node)

    for node in sorted(arrows):
        yield from walk(node)


def no_function_like_macros(tree):
    for path, text in ours(tree):
        for match in re.finditer(r"^[ \t]*#[ \t]*define[ \t]+(\w+)\(", code_of(text), re.M):
            yield f"{path}: the macro {match.group(1)} has arguments"


def no_long_macros(tree):
    for path in filter(is_code, sorted(tree)):
        if path.startswith("include/"):
            continue  # what an application may use in #if has no other form
        for match in re.finditer(r"^[ \t]*#[ \t]*define[ \t]+(\w+)[^\n]*\\$", tree[path], re.M):
            yield f"{path}: the macro {match.group(1)} has several lines"


def files_are_short(tree):
    for path, text in ours(tree):
        lines = text.count("\n")
        if lines > LONGEST_FILE:
            yield f"{path}: {lines} lines; {LONGEST_FILE} are enough"


def functions_are_short(tree):
    for path, text in ours(tree):
        for first, last in functions(text):
            if last - first + 1 > LONGEST_FUNCTION:
                yield f"{path}:{first}: a function of {last - first + 1} lines; {LONGEST_FUNCTION} are enough"


def comments_are_a_fair_share(tree):
    for folder in OURS:
        commented = lines = 0
        for path, text in ours(tree):
            if path.startswith(folder):
                commented += len(comment_lines(text))
                lines += sum(1 for line in text.splitlines() if line.strip())
        share = 100 * commented / lines if lines else 0
        if lines and not COMMENTS[0] <= share <= COMMENTS[1]:
            yield f"{folder}: {share:.1f} % of the lines have comments; {COMMENTS[0]} to {COMMENTS[1]} are wanted"


def tables_are_explained(tree):
    """A constant of several lines at the outermost level has a comment above its head, or behind it."""
    for path, text in ours(tree):
        lines, commented = text.splitlines(), comment_lines(text)
        for at, line in enumerate(lines):
            if not re.match(r"(?:inline |static )*(?:constexpr|const)\b[^()]*(?:=.*)?\{\s*(?://.*)?$", line):
                continue
            end = next((i for i in range(at, len(lines)) if lines[i].startswith("}")), at)
            if end - at > 3 and not commented & {at - 1, at}:
                yield f"{path}:{at + 1}: a table without a comment"


NAME = r'(?:[\w:.]+|"[^"]*")'
LIST_LINE = re.compile(
    r"#include.*|#pragmaonce|namespace\w*{|using[\w:]+;"
    rf"|{NAME}(?:,{NAME})*,?"  # names, numbers and strings in a row, as in an enumeration
    r"|if\(ZmxStatusbad=Args\(\)|\.\w+\([^{};]*\)+"  # the tests of arguments, which each function states in full
)


def code_lines(text):
    """(number, line without white space) of the lines of code, lists of names apart."""
    for number, line in enumerate(code_of(text).splitlines(), 1):
        line = re.sub(r"\s+", "", line)
        if line and not LIST_LINE.fullmatch(line):
            yield number, line


def nothing_stands_twice(tree):
    # Tests have models, which state anew what the code does; so the two are not compared with one another. The
    # program of digests is to stand by itself, and sees no other test.
    for folders in (OURS, ("tests/", "bench/", "fuzz/")):
        yield from repetitions({path: tree[path] for path in sorted(tree)
                                if path.startswith(folders) and not path.startswith("tests/digests/") and is_code(path)})


def repetitions(files):
    first_place, last = {}, None
    for path, text in files.items():
        lines = list(code_lines(text))
        for i in range(len(lines) - SAME_LINES + 1):
            key = tuple(line for _, line in lines[i : i + SAME_LINES])
            there, where, at = first_place.setdefault(key, (path, lines[i][0], i))
            if there == path and i - at < SAME_LINES:
                continue  # itself, or a piece that overlaps it
            # Of a longer piece that stands twice, the beginning is enough.
            if last != (path, i - 1, there, at - 1):
                yield f"{path}:{lines[i][0]}: stands at {there}:{where} too"
            last = (path, i, there, at)


def every_function_has_a_benchmark(tree):
    declared = set()
    for path, text in tree.items():
        if path.startswith("include/") and is_code(path):
            declared.update(re.findall(r"\b(zmx[isj]\w+)\s*\(", code_of(text)))
    timed = set()
    for path, text in tree.items():
        if path.startswith("bench/") and is_code(path):
            timed.update(re.findall(r"\bzmx[isj]\w+", code_of(text, strings=False)))
    if not declared:
        yield "include/: no function is declared"
    for name in sorted(declared - timed):
        yield f"{name} is called in no benchmark"


def limits_are_stated(tree):
    text = re.sub(r"\s+", " ", tree.get(CONTRIBUTING, ""))
    for limit in (f"{LONGEST_FUNCTION} lines", f"{LONGEST_FILE} lines", f"{COMMENTS[0]} to {COMMENTS[1]} %",
                  f"{SAME_LINES} lines"):
        if limit not in text:
            yield f"{CONTRIBUTING}: nothing is said of {limit}"


def pages_are_linked(tree):
    """A page that nobody links is read by nobody."""
    linked = set(re.findall(r"\]\((docs/[^/)#]+\.md)", tree.get(README, "")))
    pages = {path for path in tree if re.fullmatch(r"docs/[^/]+\.md", path)}
    for page in sorted(pages - linked):
        yield f"{README}: no link to {page}"
    for page in sorted(linked - pages):
        yield f"{README}: no page {page}"


def fuzzers_are_named(tree):
    named = set(re.findall(r"`(fuzz_\w+)`", tree[ARCHITECTURE]))
    there = {path[len("fuzz/"):-len(".cpp")] for path in tree if re.fullmatch(r"fuzz/fuzz_\w+\.cpp", path)}
    for target in sorted(named ^ there):
        yield f"{ARCHITECTURE}: {target} is {'not named' if target in there else 'not there'}"


RULES = (who_may_include_whom, who_stands_on_whom, modules_are_named, families_are_complete, no_circles, no_function_like_macros,
         no_long_macros, files_are_short, functions_are_short, comments_are_a_fair_share, tables_are_explained,
         nothing_stands_twice, every_function_has_a_benchmark, limits_are_stated, pages_are_linked,
         fuzzers_are_named)


def read_tree(root):
    tree = {}
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.is_file() and is_code(path.name):
                tree[path.relative_to(root).as_posix()] = path.read_text()
    for page in (CONTRIBUTING, README, *(p.relative_to(root).as_posix() for p in sorted((root / "docs").glob("*.md")))):
        tree[page] = (root / page).read_text()
    return tree


def check(tree):
    faults = 0
    for rule in RULES:
        for fault in rule(tree):
            print(f"{rule.__name__}: {fault}")
            faults += 1
    return faults


if __name__ == "__main__":
    sys.exit(1 if check(read_tree(pathlib.Path(sys.argv[1]))) else 0)
