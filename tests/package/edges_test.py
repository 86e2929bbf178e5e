"""Finds the public operations that make memory or throw and have no edge of their own, so that something other than an
MGErr could leave them. Takes the path of the source tree."""

import pathlib
import re
import sys

# Told as they are in their headers: errors and reports are values that are made inside edges, the DER reader gives codes.
WITHOUT = re.compile(r"MGErr::|MGInfo::|der_|parse_der_struct|get_der_param|compare_oid|get_oid_str|(mem|str)_alloc|"
                     r"error_of|fail|throw_foreign|system_(error_)?text|string_to_int$|.*WithQuestion$")
DEFINITION = re.compile(r"^(?![\s/#}])[^\n;{}]*?\b((?:MG\w+::)?\w+)\(([^{};]*)\)(?: const)? \{(?:([^\n]*)\}|\n(.*?)^\})",
                        re.MULTILINE | re.DOTALL)
# What makes memory or throws, and an edge.
FALLIBLE = re.compile(r"std::(string|vector<.*?>) \w+[;,= ({]|std::string\(|std::to_string|make_unique|\bthrow (?!MGExit)|\bfail\w*\(|"
                      r"\.(append|assign|emplace_back|insert|push_back|reserve|resize|substr|replace)\(")
EDGE = re.compile(r"\bat_edge\(|\bwrite_document\(|\bread_document\(|catch \((\.\.\.|const std::exception)")


def main(root):
    install = (root / "cmake/install.cmake").read_text()
    headers = re.search(r"foreach\(header\n(.*?)\)", install, re.DOTALL).group(1).split()
    declared = "".join((root / f"src/{header}.h").read_text() for header in headers)
    declared = re.sub(r"^private:\n.*?^\};", "", declared, flags=re.MULTILINE | re.DOTALL)
    missing = []
    seen = 0
    for source in sorted(root.glob("src/*/*.cpp")):
        text = re.sub(r"^namespace \{\n.*?^\} // namespace\n", "", source.read_text(), flags=re.MULTILINE | re.DOTALL)
        for name, _, line, block in DEFINITION.findall(text):
            body = line or block
            if not re.search(rf"\b{name.split('::')[-1]}\(", declared) or WITHOUT.match(name):
                continue
            seen += 1
            if FALLIBLE.search(body) and not EDGE.search(body):
                missing.append(f"{source.relative_to(root)}: {name}")
    assert seen > 300, f"only {seen} operations were found"
    assert not missing, "no edge:\n" + "\n".join(missing)


main(pathlib.Path(sys.argv[1]))
