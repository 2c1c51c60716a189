#!/usr/bin/env python3
"""Writes what fuzz targets start from, made of the texts in the tests, into a folder for each.

    fuzz/seeds.py FOLDER [TARGET ...]
"""

import ast
import hashlib
import pathlib
import re
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
TESTS = TOP / "tests"
LITERAL = re.compile(r'R"(\w*)\((.*?)\)\1"|"((?:[^"\\\n]|\\.)*)"', re.S)
JOINED = re.compile(r"\s*")


def literals(path):
    """The string literals of a C++ file, adjacent ones as one, without the marks of cases."""
    source = path.read_text()
    found, end = [], None
    for match in LITERAL.finditer(source):
        text = match[2] if match[3] is None else unescaped(match[3])
        if end is not None and JOINED.fullmatch(source, end, match.start()):
            found[-1] += text
        else:
            found.append(text)
        end = match.end()
    return [re.sub(r"\$\w+\^", "", text).encode("utf-8", "surrogatepass") for text in found]


def unescaped(text):
    try:
        return ast.literal_eval('"' + text + '"')
    except (SyntaxError, ValueError):
        return text


def texts(*patterns):
    files = [path for pattern in patterns for path in sorted(TESTS.glob(pattern))]
    return [literals(path) for path in files]


LANGUAGE_TESTS = ("languages/*_test.cc", "indexer/real_languages_test.cc")
PATH = re.compile(rb"[\w./-]+\.(py|c|h|cc|hpp|go|mod|rs|toml|java|js|ts|tsx|mjs|json|yaml)")


# By the test's name, what source_text.cc calls a text of its cases.
NAMES = {"c": (1, 2, 3), "ecmascript": (8, 9, 10, 11, 17, 18), "go": (4, 5), "java": (7,),
         "python": (0,), "rust": (6, 12), "any": range(20), "real": range(0, 20, 3),
         "extraction": (0, 1, 3, 10)}


def source_text():
    for pattern in LANGUAGE_TESTS:
        for path in sorted(TESTS.glob(pattern)):
            for text in literals(path):
                for name in NAMES[path.name.split("_")[0]]:
                    if len(text) > 20:
                        yield bytes([name]) + text


def resolution():
    """Files in the order in which tests name them; each once changed to the next text."""
    for found in texts(*LANGUAGE_TESTS):
        files = []
        for path, text in zip(found, found[1:]):
            if PATH.fullmatch(path) and not PATH.fullmatch(text):
                files.append(path + b"\0" + text + b"\0")
        for at in range(0, len(files), 2):
            chosen = files[at:at + 4]
            changed = chosen[-1].split(b"\0")[1]
            yield b"\1" + changed + b"\0" + b"".join(chosen)


def stored_bytes():
    for kind in range(4):
        for at in (0, 128):
            yield bytes([kind + at]) + bytes(range(1, 40))
    yield b"\0\1\1f\1" + b"\0" * 20


def git_output():
    zeros, ones = b"0" * 40, b"1" * 40
    raw = b":100644 100644 " + zeros + b" " + ones + b" M\0a\0:100644 120000 " + ones + b" " + \
        zeros + b" T\0b\0:100644 100644 " + ones + b" " + ones + b" R100\0c\0d\0"
    patch = b"diff --git a/a b/a\nindex " + zeros + b".." + ones + \
        b" 100644\n--- a/a\n+++ b/a\n@@ -1,3 +1,2 @@ f\n-a\n-b\n+c\n d\n\\ No newline\n"
    yield b"\0\7" + raw + b"\0" + patch
    yield b"\1\7" + ones + b" blob 5\nhello\n" + zeros + b" missing\n" + ones + b" blob 500\n"
    yield b"\2\7commit " + ones + b" (from " + zeros + b")\tHEAD\ntree " + zeros + b"\nparent " + \
        zeros + b"\n\n    words\n\nM\0a\0D\0b\0\0commit " + zeros + b"\n"
    yield b"\3\7" + b"100644 blob " + ones + b"     12\ta\0" + b"120000 blob " + ones + b" 3\tb\0"
    yield b"\4\7" + ones + b"\nx missing\n" + zeros + b"\n"


def server_lines():
    for found in texts("server/messages_test.cc", "server/session.cc"):
        for text in found:
            if text.lstrip().startswith((b"{", b"[")):
                yield text
    opening = b'{"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":' \
        b'"2025-03-26","capabilities":{}}}\n'
    yield opening + b'{"jsonrpc":"2.0","id":2,"method":"tools/list"}\n'
    yield opening + b'{"jsonrpc":"2.0","id":3,"method":"tools/call","params":{"name":"context",' \
        b'"arguments":{"action":"delta","path":"x","token_budget":5},"_meta":{"progressToken":' \
        b'"t"}}}\n{"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":3}}\n'
    yield opening + b'[{"jsonrpc":"2.0","id":"a","method":"ping"},7]\n'
    yield b'{"jsonrpc":"2.0","id":4,"method":"server/discover","params":{"_meta":{' \
        b'"io.modelcontextprotocol/protocolVersion":"2026-07-28",' \
        b'"io.modelcontextprotocol/clientCapabilities":{}}}}\n'


def small_texts():
    for kind, pattern in enumerate(("cli/presets_test.cc", "wiki/*_test.cc", "git/source_path_test.cc",
                                    "workers/*_test.cc")):
        for found in texts(pattern):
            for text in found:
                yield bytes([kind]) + text


def reports():
    for found in texts("render/sample_packs.cc", "render/html_test.cc", "render/markdown_test.cc"):
        for at in range(0, len(found), 12):
            for shape in range(4):
                yield bytes([shape]) + b"\3\1\2\xff\x50" + b"\0".join(found[at:at + 12])


TARGETS = (source_text, resolution, stored_bytes, git_output, server_lines, small_texts, reports)


def main():
    for target in TARGETS:
        if target.__name__ not in (sys.argv[2:] or [target.__name__]):
            continue
        folder = pathlib.Path(sys.argv[1]) / target.__name__
        folder.mkdir(parents=True, exist_ok=True)
        for seed in target():
            (folder / hashlib.sha1(seed).hexdigest()).write_bytes(seed)


main()
