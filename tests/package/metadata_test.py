#!/usr/bin/python3
"""What software centres and menus say of the program is well-formed, and agrees with man in version and in both languages."""

import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
DATA = ROOT / "data"
VERSION = sys.argv[1]


def run(*command):
    return subprocess.run(command, capture_output=True, text=True)


result = run("desktop-file-validate", DATA / "vormaqscfg.desktop")
assert (result.returncode, result.stdout) == (0, ""), result.stdout

# The owner has not chosen a licence: the one thing that the metainfo may lack.
metainfo = DATA / "vormaqscfg.metainfo.xml"
result = run("appstreamcli", "validate", "--no-net", "--strict", "--no-color", metainfo)
assert re.findall(r"^[EWIP]: \S+ (\S+)", result.stdout, re.M) == ["metadata-license-missing"], result.stdout

pages = [DATA / "vormaqscfg.1", DATA / "ru/vormaqscfg.1"]
shapes = [re.findall(r"^\.(?:SH|TP|PP|nf)", page.read_text(), re.M) for page in pages]
assert shapes[0] == shapes[1], "the man pages differ in their paragraphs"

versions = {page: re.search(r'"vormaqscfg (\S+)"', page.read_text())[1] for page in pages}
versions[metainfo] = ElementTree.parse(metainfo).find("releases/release").get("version")
versions["debian/changelog"] = re.match(r"vormaqscfg \((.+)\)", (ROOT / "debian/changelog").read_text())[1]
versions["about box"] = re.search(r"Версия ([\d.]+)", (ROOT / "src/editor/settings.cpp").read_text())[1]
assert set(versions.values()) == {VERSION}, versions
