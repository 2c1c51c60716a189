"""Tables of a language that are out of order, repeat themselves or lack their form stop the build.

    tables_test.py TABLES_TO_HEADER
"""
import pathlib
import subprocess
import sys
import tempfile

GOOD = "# all\n[nodes]\nCALL call new\n[fields]\nname operation=operator\n" \
       "[words W]\na b\nc\n[records R]\na | 1\nb | 2\\\"\n"
BAD = {
    "[words W]\na c\nb\n": ":3: 'b' is out of order: it comes before 'c'",
    "[words W]\na b\nb\n": ":3: 'b' is repeated",
    "[words W]\n": ":1: the table 'W' is empty",
    "[words]\na\n": ":1: the table needs a name",
    "[node]\nCALL call\n": ":1: unknown section",
    "loose\n": ":1: a word before the first section",
    "[nodes]\nCALL call\nCALL new\n": ":3: 'CALL' is repeated",
    "[nodes]\nCALL call\nNEW call\n": ":3: two kinds have the node 'call'",
    "[fields]\nname name\n": ":2: 'name' is repeated",
    "[records R]\na | 1\nb\n": ":3: the record has another number of fields",
    "[records R]\nb | 1\na | 2\n": ":3: 'a' is out of order: it comes before 'b'",
}


def run(program, folder, text):
    (folder / "t.txt").write_text(text)
    return subprocess.run([program, folder / "t.txt", folder / "t.h", "a::b"], text=True,
                          capture_output=True)


def main(program):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        good = run(program, folder, GOOD)
        assert good.returncode == 0, good.stderr
        header = (folder / "t.h").read_text()
        for part in ('{"new", Node::CALL}', 'field_id(language, "operator")', '{{"b", "2\\\\\\""}}'):
            assert part in header, (part, header)
        for text, message in BAD.items():
            bad = run(program, folder, text)
            assert bad.returncode != 0 and message in bad.stderr, (text, bad.stderr)
    print(f"{len(BAD) + 1} passed, 0 failed")


main(sys.argv[1])
