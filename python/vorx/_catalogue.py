"""The built functions of the library as data, and the library itself.

The table comes from the catalogue: from `catalogue/generate.py` of the source tree
this package sits in, or from `catalogue.json` written next to an installed package
(`generate.py python PATH`). VORX_CATALOGUE may name either a catalogue directory
or such a JSON file. The library is VORX_LIBRARY, else the native build of the
tree, else `libvorxa6.so` on the loader's path.
"""
import ctypes
import ctypes.util
import json
import os
import sys

_HERE = os.path.dirname(os.path.abspath(__file__))
_TREE = os.path.dirname(os.path.dirname(_HERE))


def _from_generator(directory):
    sys.path.insert(0, directory)
    try:
        import generate
    finally:
        sys.path.pop(0)
    return generate.python_table()


def load_table():
    given = os.environ.get("VORX_CATALOGUE")
    if given:
        if os.path.isdir(given):
            return _from_generator(given)
        with open(given) as fh:
            return json.load(fh)
    installed = os.path.join(_HERE, "catalogue.json")
    if os.path.exists(installed):
        with open(installed) as fh:
            return json.load(fh)
    tree = os.path.join(_TREE, "catalogue")
    if os.path.exists(os.path.join(tree, "generate.py")):
        return _from_generator(tree)
    raise ImportError("vorx: no catalogue found (set VORX_CATALOGUE)")


def load_library():
    if os.environ.get("VORX_LIBRARY"):
        path = os.environ["VORX_LIBRARY"]
        return ctypes.CDLL(path), path
    candidates = []
    candidates.append(os.path.join(_TREE, "build", "native", "libvorxa6.so"))
    candidates.append(os.path.join(_HERE, "libvorxa6.so"))
    found = ctypes.util.find_library("vorxa6")
    if found:
        candidates.append(found)
    for path in candidates:
        if os.path.exists(path) or path == found:
            return ctypes.CDLL(path), path
    raise ImportError("vorx: libvorxa6.so not found (build build/native or set VORX_LIBRARY)")
