#!/usr/bin/env python3
"""Checks that the pages show what the files contain.

  tests/PagesTest.py TREE

A code block whose first line ends with the path of a file must be a part of this file; if its language is "json", it
must be the whole file. In docs/first-change.md, the blocks in the language "diff" must fit the files, each after the
ones before it. docs/sites.md must name every key of the documents, and every component, button and link.
"""
import pathlib
import re
import sys

# Where the names are that docs/sites.md must explain, and what a line with a name looks like.
NAMES = {
    "TalvoConsentSDK/models/json/BannerFields.h": r'field<&[\w:]+>\("(\w+)"\)',
    "TalvoConsentSDK/models/json/ServicesFields.h": r'field<&[\w:]+>\("(\w+)"\)',
    "TalvoConsentSDK/ui/ComponentRendererFactory.cpp": r'^    \{"(\w+)", ',
    "TalvoConsentSDK/ui/BannerActions.h": r'_view \w+Action = "(\w+)"',
    "TalvoConsentSDK/ui/Labels.cpp": r'^    \{"(\w+)", &Messages::',
}
# Keys of `CategoryItem`, which documents do not contain.
NOT_IN_DOCUMENTS = {"enabled", "required"}


def blocks(text):
    """Returns the words of each block's first line, and the block's lines."""
    return [(head.split(), body) for head, body in re.findall(r"^```(\S.*)\n((?:(?!```).*\n)*)```$", text, re.M)]


def wrong_excerpts(root, page, text):
    for (language, *_, path), body in (block for block in blocks(text) if "/" in block[0][-1]):
        content = (root / path).read_text() if (root / path).is_file() else ""
        if body != content if language == "json" else body not in content:
            yield f"{page}: {path} does not contain this block:\n{body}"


def wrong_patches(root, page, text):
    files = {}
    for (language, *_), body in blocks(text):
        if language != "diff":
            continue
        path = re.search(r"^\+\+\+ b/(.*)", body, re.M)[1]
        content = files.get(path) or (root / path).read_text()
        for hunk in re.split(r"^@@.*\n", body, flags=re.M)[1:]:
            lines = hunk.splitlines(keepends=True)
            old = "".join(line[1:] for line in lines if line[0] != "+")
            new = "".join(line[1:] for line in lines if line[0] != "-")
            if new in content:
                continue  # a reader has followed the page
            if content.count(old) != 1:
                yield f"{page}: this part of the patch of {path} does not fit:\n{hunk}"
            content = content.replace(old, new)
        files[path] = content


def unexplained_names(root, page, text):
    for path, pattern in NAMES.items():
        names = set(re.findall(pattern, (root / path).read_text(), re.M))
        if not names:
            yield f"{path}: no names match {pattern}"
        for name in sorted(names - NOT_IN_DOCUMENTS):
            if not re.search(rf"`(?:\w+\.)*{name}`", text):
                yield f"{page}: `{name}` of {path} is not explained"


def main():
    root = pathlib.Path(sys.argv[1])
    names = ("docs/sites.md", "docs/guide.md", "docs/first-change.md")
    pages = {name: (root / name).read_text() for name in names}
    wrong = [each for page in pages.items() for each in wrong_excerpts(root, *page)]
    wrong += wrong_patches(root, "docs/first-change.md", pages["docs/first-change.md"])
    wrong += unexplained_names(root, "docs/sites.md", pages["docs/sites.md"])
    print("\n".join(wrong))
    return bool(wrong)


if __name__ == "__main__":
    sys.exit(main())
