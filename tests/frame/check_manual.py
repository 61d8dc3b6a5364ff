#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_manual.py SOURCE-DIR DOXYFILE DOXYGEN: makes the manual and looks whether everything is in it.

Doxygen itself refuses what has no comment. This asks for more: each function that a header declares has its parameters, one
\\return in the one dialect, and a word on its buffers; what readers ask is answered where they look for it; each family, type
and guide has a page; guides show the code of the examples. At last a parameter and a field lose their comments in a copy of the headers, and the manual must fail.
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

# What readers ask, the functions or the family that answer, and words of the answer.
ANSWERS = (
    ("a decoder's bit planes from the encoder's answers", "zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R "
     "zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R", r"max\(0, sfBits - \(31 - magnBits\)\)"),
    ("where the bits of a sample stand on both sides", "codeblock", r"31 - magnBits fraction bits .* that plane as bit 0"),
    ("a block larger than its state", "zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R "
     "zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R", r"size above the one .* is not tested: it overruns"),
    ("sizes that an int cannot tell", "zmxiDecodeCBProgrGetStateSize_JPEG2K zmxiDecodeGetBufSize_JPEG2K", r"100,000 x 100,000"),
    ("the position behind a marker", "huffman", r"position stands on the byte behind that marker"),
    ("statuses that can be resumed", "huffman", r"zmxStsOutOfBufErr is not a pause.* put them back .* are final for the restart interval"),
    ("first values", "huffman", r"First values\. ?Ahead of a scan the caller sets the position"),
    ("the worst block", "zmxiEncodeHuffman8x8_JPEG_16s1u_C1 zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1", r"514 bytes"),
    ("the worst packed row", "zmxiPackBitsRow_TIFF_8u_C1", r"at most n \+ \(n \+ 4\) / 5 bytes"),
    ("the worst codeword segment", "zmxiEncodeStoreBits_JPEG2K_1u", r"no worst case need be known"),
    ("limits of frequencies", "zmxiEncodeHuffmanRawTableInit_JPEG_8u", r"0 to 1000000000.*cast the pointer"),
    ("YCoCg and its shader", "zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R", r"Co = \(\(R - B \+ 1\).*scale = b \* \(255\.0 / 8\.0\)"),
    ("the count of threads", "ownGetNumThreads", r"affinity mask.*OMP_NUM_THREADS has no say"),
)
# The same for parameters of these names, wherever they stand.
PARAMETERS = (
    (r"p(Src|Dst)(Curr)?Pos", "in and out", r"the caller sets it"),
    (r"pLastDC|pLastDC\w*", "in and out", r"the caller sets it to 0"),
    (r"p\w*Statistics", "in and out", r"257 entries.*cast"),
    (r"pBuffer", "scratch memory", r"not null, not even for 0 bytes"),
)


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


def unanswered(xml):
    """The questions that are not answered where they should be."""
    said, asked, faults = {}, dict.fromkeys(PARAMETERS, 0), set()  # a member stands in the file of its group and in that of its header
    for path in xml.glob("group__*.xml"):
        group = xml_root(path).find("compounddef")
        said[group.findtext("compoundname")] = words(group.find("detaileddescription"))
    for member in functions(xml):
        name = member.findtext("name")
        said[name] = words(member)
        for item in member.find("detaileddescription").iter("parameteritem"):
            parameter, text = words(item.find("parameternamelist")), words(item.find("parameterdescription"))
            for rule in PARAMETERS:
                if re.fullmatch(rule[0], parameter) and text.startswith(rule[1]):
                    asked[rule] += 1
                    if not re.search(rule[2], text):
                        faults.add(f"{name}: {parameter}: no word of: {rule[2]}")
    for question, places, answer in ANSWERS:
        for place in places.split():
            if not re.search(answer, said.get(place, "")):
                faults.add(f"{place}: nothing on {question}")
    return sorted(faults) + [f"no parameter is a {rule[0]}" for rule, count in asked.items() if count == 0]


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


def unnoticed(source, doxyfile, doxygen):
    """What must not pass: a parameter, and a field, without a comment; an answer that is gone."""
    changes = (("zmxj/tiff.h", r"\n \*  \\param len [^\n]*", "\n *"), ("zmxj/types.h", r"(    int width;)[^\n]*", r"\1"),
               ("zmxcore.h", "OMP_NUM_THREADS", "a word"), ("zmxj/wavelet53.h", "not null, not\n", "a word\n"))
    for header, old, new in changes:
        with tempfile.TemporaryDirectory() as folder:
            copy = pathlib.Path(folder, "include")
            subprocess.run(["cp", "-r", str(source / "include"), str(copy)], check=True)
            text = (copy / header).read_text()
            changed = re.sub(old, new, text, count=1)
            (copy / header).write_text(changed)
            status, said = make(doxygen, doxyfile, folder + "/out", f'INPUT = "{copy}" "{source}/docs/guides"')
            complains = status and all(header in line for line in said.splitlines() if ": error:" in line or ": warning:" in line)
            gone = unanswered(pathlib.Path(folder, "out", "xml")) if "word" in new else []
            if changed == text or not (gone if "word" in new else complains):
                yield f"{header}: nobody misses {old!r}"


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
        faults += unanswered(pathlib.Path(folder, "xml"))
        faults += [f"{name}: not in the manual" for name in sorted(set(wanted) - seen)]
        faults += faults_of_pages(source, pathlib.Path(folder, "html"))

    faults += unnoticed(source, doxyfile, doxygen)
    print("\n".join(faults))
    print(f"{len(wanted)} functions, {len(faults)} faults")
    return bool(faults) or len(wanted) < 200


sys.exit(main(*sys.argv[1:]))
