#!/usr/bin/python3
"""debian_test.py TREE: the packages of a built tree pass lintian, install over the machine's own packages, bring a
program that starts, and go again without a trace."""

import pathlib
import subprocess
import sys
import tempfile

from install_test import ROOT, program_starts


def run(*command):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, umask=0o077)
    assert result.returncode == 0, result.stdout
    return result.stdout


with tempfile.TemporaryDirectory() as scratch:
    out, root, admin = (pathlib.Path(scratch, name) for name in ("out", "root", "admin"))
    run(ROOT / "scripts/package", sys.argv[1], out)
    packages = sorted(out.glob("*.deb"))
    assert [p.name.split("_")[0] for p in packages] == ["libvorma-runtime-dev", "vormaqscfg"], packages
    for package in packages:
        depends = run("dpkg-deb", "--field", package, "Depends")
        assert ("libgtk-3-0" in depends) == package.name.startswith("vormaqscfg"), depends

    # A root of its own whose database knows what the machine has, so that dependencies count.
    (root / "opt").mkdir(parents=True)
    for directory in ("info", "updates", "triggers"):
        (admin / directory).mkdir(parents=True)
    (admin / "status").write_bytes(pathlib.Path("/var/lib/dpkg/status").read_bytes())
    dpkg = ["dpkg", f"--instdir={root}", f"--admindir={admin}", f"--log={admin}/log", "--force-not-root",
            "--force-script-chrootless"]
    run(*dpkg, "--install", *packages)
    for path in root.rglob("*"):  # whatever the umask of who packed and who installed
        mode = path.stat().st_mode & 0o7777
        assert mode == (0o755 if path.is_dir() or path.parent.name == "bin" else 0o644), (path, oct(mode))
    symbols = run("readelf", "--sections", root / "usr/bin/vormaqscfg")
    assert ".dynsym" in symbols and ".symtab" not in symbols, "the program is not stripped"
    program_starts(root)
    run(*dpkg, "--purge", "vormaqscfg", "libvorma-runtime-dev")
    assert list(root.rglob("*")) == [root / "opt"], list(root.rglob("*"))
