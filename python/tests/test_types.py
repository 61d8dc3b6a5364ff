# SPDX-License-Identifier: BSD-2-Clause
"""Type hints and docstrings are there, and say what the functions take."""
from __future__ import annotations

import ast
import inspect
from pathlib import Path

import zmxjpx
import zmxjpx.numcodecs
import zmxjpx.pillow
from zmxjpx import raw

PACKAGE = Path(zmxjpx.__file__).parent


def test_the_stub_of_raw_has_every_function_and_its_parameters():
    assert (PACKAGE / "py.typed").exists()
    tree = ast.parse((PACKAGE / "raw.pyi").read_text())
    stubs = {node.name: node for node in tree.body if isinstance(node, ast.FunctionDef)}
    functions = {name for name in dir(raw) if name.startswith("zmx")}
    assert set(stubs) == functions and len(functions) == 235
    for name in functions - {"zmxjGetLibVersion"}:
        parameters = inspect.signature(getattr(raw, name)).parameters
        arguments = stubs[name].args
        assert [a.arg for a in arguments.args + arguments.kwonlyargs] == list(parameters), name
        optional = [p.name for p in parameters.values() if p.kind is p.KEYWORD_ONLY]
        assert [a.arg for a in arguments.kwonlyargs] == optional, name
        assert stubs[name].returns is not None and all(a.annotation for a in arguments.args + arguments.kwonlyargs)
        assert "Status: zmxSts" in getattr(raw, name).__doc__ and ast.get_docstring(stubs[name])


def test_what_is_public_is_documented_and_typed():
    for name in zmxjpx.__all__:
        thing = getattr(zmxjpx, name)
        assert thing.__doc__, name
        if inspect.isfunction(thing):
            assert all(p.annotation is not p.empty for p in inspect.signature(thing).parameters.values()), name
            assert inspect.signature(thing).return_annotation is not inspect.Signature.empty
    for module in (zmxjpx, raw, zmxjpx.numcodecs, zmxjpx.pillow):
        assert module.__doc__
