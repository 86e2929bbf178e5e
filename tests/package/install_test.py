#!/usr/bin/python3
"""install_test.py TREE: what `cmake --install` stages runs from there."""

import pathlib
import subprocess
import sys
import tempfile

from installed import program_starts

with tempfile.TemporaryDirectory() as scratch:
    root = pathlib.Path(scratch, "root")
    subprocess.run(["env", f"DESTDIR={root}", "cmake", "--install", sys.argv[1], "--prefix", "/usr"],
                   check=True, stdout=subprocess.DEVNULL)
    program_starts(root)
