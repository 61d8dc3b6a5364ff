#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_manual.py SOURCE-DIR DOXYFILE DOXYGEN: makes the manual and looks whether everything is in it.

Doxygen itself refuses what has no comment. This asks for more: each function that a header declares has its parameters, one
\\return in the one dialect, and a word on its buffers; each family, type and guide has a page; guides show the code of the
examples. At last a parameter and a field lose their comments in a copy of the headers, and the manual must fail.
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

STATUS = r"zmxSts\w+"
# STATUS when ...; STATUS when ...; zmxStsNoErr otherwise
DIALECT = re.compile(rf"(?:{STATUS}(?:, a warning,| \([^)]*\))? when [^;]+; )+zmxStsNoErr otherwise")


def make(doxygen, doxyfile, folder, *changes):
    """Runs Doxygen into a folder with some settings changed. The exit status, and what it said."""
    settings = doxyfile.read_text() + f'\nOUTPUT_DIRECTORY = "{folder}"\n' + "\n".join(changes) + "\n"
    done = subprocess.run([doxygen, "-"], input=settings, capture_output=True, text=True, timeout=200)
    return done.returncode, done.stdout + done.stderr


def declared(source):
    """Name and number of parameters of each function that the headers declare."""
    found = {}
    for header in [*source.glob("include/*.h"), *source.glob("include/zmxj/*.h")]:
        for match in re.finditer(r"^(?:ZMXJ_API|ZMX_EXPORT) [^;(]*?(\w+)\(([^;]*)\);", header.read_text(), re.M):
            arguments = match.group(2)
            found[match.group(1)] = 0 if arguments == "void" else arguments.count(",") + 1
    return found


def words(element):
    return re.sub(r"\s+", " ", "".join(element.itertext())).strip() if element is not None else ""


def functions(xml):
    for path in xml.glob("*.xml"):
        for member in xml_root(path).iter("memberdef"):
            if member.get("kind") == "function":
                yield member


def xml_root(path):
    return xml.etree.ElementTree.parse(path).getroot()


def faults_of(member, parameters):
    name = member.findtext("name")
    if not words(member.find("briefdescription")):
        yield f"{name}: no first sentence"
    details = member.find("detaileddescription")
    listed = [item for item in details.iter("parameteritem")]
    if len(listed) != parameters:
        yield f"{name}: {len(listed)} of {parameters} parameters"
    for item in listed:
        if not words(item.find("parameterdescription")):
            yield f"{name}: a parameter without a word"
    returns = [words(part) for part in details.iter("simplesect") if part.get("kind") == "return"]
    if len(returns) > 1 or (not returns and words(member.find("type")) != "void"):
        yield f"{name}: {len(returns)} returns"
    if words(member.find("type")) == "ZmxStatus":
        if returns and not DIALECT.fullmatch(returns[0]):
            yield f"{name}: returns in another dialect: {returns[0]}"
        if "Buffers" not in [words(part.find("title")) for part in details.iter("simplesect")]:
            yield f"{name}: not a word on its buffers"


def faults_of_pages(source, html):
    text = "\n".join(path.read_text() for path in source.glob("include/**/*.h"))
    for group in re.findall(r"\\defgroup (\w+)", text):
        if not (html / f"group__{group}.html").exists():
            yield f"no page of the family {group}"
    for record in re.findall(r"^typedef struct (\w+)", text, re.M):
        if not (html / f"struct{record.replace('_', '__')}.html").exists():
            yield f"no page of the type {record}"
    if not (html / "search").is_dir():
        yield "no search"
    pages = {re.sub(r"<[^>]+>", "", page.read_text()): page.name for page in html.glob("*.html")}
    guides = list(source.glob("docs/guides/*.md"))
    quoted = ""
    for guide in guides:
        title = guide.read_text().splitlines()[0].lstrip("# ").split(" {#")[0]
        if not any(title in page for page in pages):
            yield f"no page of the guide {guide.name}"
        if re.search(r"^```c", guide.read_text(), re.M):
            yield f"{guide.name}: code that no example runs"
        quoted += guide.read_text()
    examples = [*source.glob("examples/*.c"), *source.glob("examples/*.cpp")]
    for example in examples:
        names = set(re.findall(r"[/*/]+ \[(\w+)\]", example.read_text()))
        if not names:
            yield f"{example.name}: nothing for a guide"
        for name in names:
            if not re.search(rf"\\snippet {re.escape(example.name)} {name}\b", quoted):
                yield f"{example.name}: no guide has [{name}]"
    if len(guides) < 4 or len(examples) < 12:
        yield f"only {len(guides)} guides and {len(examples)} examples"


def main(source, doxyfile, doxygen):
    source, doxyfile = pathlib.Path(source), pathlib.Path(doxyfile)
    faults = []
    with tempfile.TemporaryDirectory() as folder:
        status, said = make(doxygen, doxyfile, folder)
        if status or said.strip():
            faults.append(f"Doxygen ended with {status}: {said}")
        wanted, seen = declared(source), set()
        for member in functions(pathlib.Path(folder, "xml")):
            name = member.findtext("name")
            if name in wanted and name not in seen:
                seen.add(name)
                faults += faults_of(member, wanted[name])
        faults += [f"{name}: not in the manual" for name in sorted(set(wanted) - seen)]
        faults += faults_of_pages(source, pathlib.Path(folder, "html"))

    # What must not pass: a parameter, and a field, without a comment.
    for header, line in (("zmxj/tiff.h", " *  \\param len "), ("zmxj/types.h", "    int width;")):
        with tempfile.TemporaryDirectory() as folder:
            copy = pathlib.Path(folder, "include")
            subprocess.run(["cp", "-r", str(source / "include"), str(copy)], check=True)
            text = (copy / header).read_text()
            at = text.index(line)
            end = text.index("\n", at)
            kept = "    int width;" if "width" in line else " *"
            (copy / header).write_text(text[:at] + kept + text[end:])
            status, _ = make(doxygen, doxyfile, folder + "/out", f'INPUT = "{copy}"')
            if status == 0:
                faults.append(f"a missing comment in {header} is not noticed")

    print("\n".join(faults))
    print(f"{len(wanted)} functions, {len(faults)} faults")
    return bool(faults) or len(wanted) < 200


sys.exit(main(*sys.argv[1:]))
