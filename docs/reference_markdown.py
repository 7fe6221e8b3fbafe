#!/usr/bin/env python3
"""A Markdown filter for features missing from Doxygen's dialect.

A heading gets the anchor that links name it by, behind the name of its file, since the anchors of all files are one set. A link to
what is no page of the reference becomes its text. Code in which a quotation mark stands is set between two backticks each, since
from one backtick to a quotation mark is a quotation.
"""

import collections
import pathlib
import re
import sys

LINK = re.compile(r"(?<!!)\[([^][]*)\]\(([^()]*)\)")
CODE = re.compile(r"(?<!`)`([^`]*'[^`]*)`(?!`)")
HEADING = re.compile(r"##+ (.*)")


def anchor(page, heading):
    return page + "-" + re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")


def link(page, text, target):
    file, hash, place = target.partition("#")
    if file.startswith(("http:", "https:")):
        return f"[{text}]({target})"
    if hash:
        return f"[{text}](#{pathlib.Path(file).stem.lower() or page}-{place})"
    return f"[{text}]({target})" if file.endswith(".md") else text


def lines(page, text):
    in_code = False
    met = collections.Counter()
    for line in text.splitlines():
        in_code ^= line.startswith("```")
        if not in_code:
            line = LINK.sub(lambda found: link(page, *found.groups()), line)
            line = CODE.sub(r"``\1``", line)
            if heading := HEADING.fullmatch(line):
                name = anchor(page, heading[1])
                # Headings alike are told apart as on the pages of the tree: changelog-added, changelog-added-1.
                line += f" {{#{name}{f'-{met[name]}' if met[name] else ''}}}"
                met[name] += 1
        yield line


path = pathlib.Path(sys.argv[1])
sys.stdout.reconfigure(encoding="utf-8")
print("\n".join(lines(path.stem.lower(), path.read_text(encoding="utf-8"))))
