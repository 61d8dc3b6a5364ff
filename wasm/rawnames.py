#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""rawnames.py INCLUDE-DIR OUT-DIR: what the build of the WebAssembly takes from the public headers.

exports.txt, the names that the module exports; sizes.cpp, the sizes of the headers' structures; rawnames.js, both lists of
names for JavaScript.
"""
from __future__ import annotations

import json
import re
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "python"))
from headers import prototypes  # noqa: E402

# What wasm/index.js calls besides.
OURS = ["malloc", "free", "zmx_web_info", "zmx_web_decode", "zmx_web_encode", "zmx_web_transcode", "zmx_web_release",
        "zmx_web_size"]


def main() -> None:
    include, out = map(Path, sys.argv[1:])
    # The version is no status, so that it stands apart.
    names = ["zmxjGetLibVersion"] + [f.name for f in prototypes(include)]
    structures = sorted(re.findall(r"^\} (Zmx\w+);", (include / "zmxj" / "types.h").read_text(), re.M))
    sizes = "\n".join(f"    case {i}: return sizeof({name});" for i, name in enumerate(structures))
    out.mkdir(parents=True, exist_ok=True)
    (out / "exports.txt").write_text("\n".join("_" + name for name in OURS + names) + "\n")
    (out / "sizes.cpp").write_text(
        "// Made of the public headers by wasm/rawnames.py.\n#include \"zmxj.h\"\n\n#include <cstddef>\n\n"
        f"extern \"C\" std::size_t zmx_web_size(int structure) {{\n    switch (structure) {{\n{sizes}\n"
        "    default: return 0;\n    }\n}\n")
    (out / "rawnames.js").write_text(
        "// SPDX-License-Identifier: BSD-2-Clause\n// Made of the public headers by rawnames.py.\n"
        f"export const functions = {json.dumps(names, indent=1)};\n"
        f"export const structures = {json.dumps(structures)};\n")


if __name__ == "__main__":
    main()
