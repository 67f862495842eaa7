#!/usr/bin/env python3
"""Prints, for apt, where this machine's own archives of Debian keep their source packages.

Reads both formats of source list (one line an entry, and stanzas of fields) below /etc/apt and
writes stanzas. Archives of other makers are left out: no library is taken from them.
"""
import pathlib
import re

KEPT_FIELDS = ("Signed-By", "Trusted", "Check-Valid-Until", "Check-Date")
ONE_LINE_ENTRY = re.compile(r"deb(?:-src)?\s+(?:\[(?P<options>[^]]*)\]\s+)?(?P<uri>\S+)"
                            r"\s+(?P<suite>\S+)(?P<components>.*)")


def one_line_entries(text):
    for line in text.splitlines():
        entry = ONE_LINE_ENTRY.match(line.split("#")[0].strip())
        if entry is None:
            continue
        options = dict(option.split("=", 1) for option in (entry["options"] or "").split()
                       if "=" in option)
        yield {"URIs": entry["uri"], "Suites": entry["suite"], "Components": entry["components"],
               **{name.title(): value for name, value in options.items()}}


def stanzas(text):
    lines = [line for line in text.splitlines() if not line.startswith("#")]
    for stanza in re.split(r"\n\s*\n", "\n".join(lines)):
        fields = dict(re.findall(r"^([\w-]+):\s*(.*(?:\n[ \t].*)*)", stanza, re.MULTILINE))
        if "URIs" in fields and fields.get("Enabled", "yes") != "no":
            yield fields


def is_debian(uri, signed_by):
    if signed_by:
        return "debian-archive" in signed_by
    return re.search(r"\.debian\.org/|/debian(-security)?(\.list)?/?$", uri) is not None


def entries(folder):
    for path in [folder / "sources.list", *sorted(folder.glob("sources.list.d/*.list"))]:
        if path.is_file():
            yield from one_line_entries(path.read_text())
    for path in sorted(folder.glob("sources.list.d/*.sources")):
        yield from stanzas(path.read_text())


def source_stanza(fields, uri, suites):
    kept = [f"{name}: {fields[name]}" for name in KEPT_FIELDS if name in fields]
    return "\n".join(["Types: deb-src", f"URIs: {uri}", f"Suites: {suites}", "Components: main",
                      *kept]) + "\n"


def main():
    found = {}  # a dictionary keeps the order and drops what is said twice
    for fields in entries(pathlib.Path("/etc/apt")):
        for uri in fields["URIs"].split():
            if not is_debian(uri, fields.get("Signed-By", "")):
                continue
            if "main" not in fields.get("Components", "").split():
                continue
            found[source_stanza(fields, uri, fields["Suites"])] = None
            if "security" not in uri:
                # The second choice, where a mirror lacks a file of this machine's own release.
                found[source_stanza(fields, uri, "stable oldstable")] = None
    print("\n".join(found))


main()
