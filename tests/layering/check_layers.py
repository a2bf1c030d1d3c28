"""Reads the include lines of src and fails on any edge between folders that the house does not allow.

check_layers.py SRC reads the sources; check_layers.py plants wrong edges in a tree of its own and fails when one of them
is not reported.
"""
import pathlib
import re
import sys
import tempfile

MAY_USE = {
    "accessfile": [],
    "platform": ["accessfile"],
    "mdbsql": ["platform", "accessfile"],
    "data": ["platform"],
    "shared": ["data", "platform"],
    "registers": ["shared", "data", "platform"],
    "stock": ["shared", "data", "platform"],
    "gauging": ["shared", "data", "platform"],
    "reports": ["shared", "data", "platform"],
    "app": ["registers", "stock", "gauging", "reports", "shared", "data", "platform"],
}
# Of the program itself only the provider knows the Access engine; the command line beside it is made of it.
ENGINE_USERS = {pathlib.PurePath("platform/ado"), pathlib.PurePath("mdbsql")}
# Within the engine: the rooms behind its door that each room may use, and what of the door its headers may.
ROOMS = {
    "": [],
    "file": [],
    "format": ["file/Page.h"],
    "table": ["format", "file"],
    "check": ["table", "format", "file"],
    "sql": ["format/Utf8.h"],
}
DOOR = {"Database.h", "Error.h", "Storage.h", "Value.h"}
DOOR_FOR_HEADERS = {"file": set(), "format": {"Value.h"}}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]', re.MULTILINE)


def engine_edge(relative, name):
    """Whether a file of the engine, by its path in accessfile/, may include another, by the same."""
    room = relative.parent.as_posix().strip(".")
    target = pathlib.PurePath(name)
    if len(target.parts) == 1:
        return name in (DOOR_FOR_HEADERS.get(room, DOOR) if relative.suffix == ".h" else DOOR)
    return target.parts[0] == room or target.parts[0] in ROOMS[room] or name in ROOMS[room]


def wrong_edges(source):
    files = 0
    for path in sorted(source.rglob("*")):
        if path.suffix not in {".h", ".cpp"}:
            continue
        files += 1
        relative = path.relative_to(source)
        folder = relative.parts[0]
        for bracket, name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            target, _, inside = name.partition("/")
            edge = f"{relative} includes {name}"
            if bracket == "<":
                if folder == "accessfile" and re.match(r"Q[A-Z]|Qt", name):
                    yield f"{edge}: the engine is standard C++ only"
            elif target == "accessfile" == folder:
                if not engine_edge(relative.relative_to(folder), inside):
                    yield edge
            elif target in MAY_USE and target != folder:
                if target not in MAY_USE[folder]:
                    yield edge
                elif target == "accessfile" and not ENGINE_USERS & set(relative.parents):
                    yield f"{edge}: only the data provider may"
                elif target == "accessfile" and inside not in DOOR:
                    yield f"{edge}: not at the engine's door"
    if files == 0:
        yield "no sources found"


# Texts of the database are text wherever they are shown: only PlainText.cpp hands a tool tip what it interprets.
MARKUP = re.compile(r"RichText|AutoText|MarkdownText|[sS]etHtml|QTextEdit|QTextBrowser|WhatsThis|<html"
                    r"|QToolTip::showText\((?![^;]*toolTipOf)")


def markup(source):
    for path in sorted(source.rglob("*")):
        if path.suffix in {".h", ".cpp", ".ui"}:
            for found in MARKUP.findall(path.read_text(encoding="utf-8")):
                yield f"{path.relative_to(source)}: {found} shows a text as markup"


def planted():
    """Edges that must be reported, each in a tree of one file."""
    wrong = [("data/A.h", "shared/B.h"), ("app/A.cpp", "accessfile/Value.h"), ("accessfile/sql/A.cpp", "QString"),
             ("mdbsql/main.cpp", "accessfile/sql/Parser.h")]
    wrong += [("accessfile/" + file, "accessfile/" + name) for file, name in (
        ("file/A.cpp", "format/B.h"), ("file/A.h", "Error.h"), ("format/A.cpp", "file/Pager.h"),
        ("format/A.h", "Storage.h"), ("table/A.cpp", "check/B.h"), ("sql/A.cpp", "table/B.h"), ("A.h", "sql/B.h"))]
    for file, name in wrong:
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, file)
            path.parent.mkdir(parents=True)
            path.write_text(f"#include <{name}>\n" if name.startswith("Q") else f'#include "{name}"\n', encoding="utf-8")
            if not list(wrong_edges(pathlib.Path(folder))):
                yield f"{file} including {name} is not reported"


    for line in ("label.setTextFormat(Qt::RichText);", "QToolTip::showText(place, text);"):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "A.cpp").write_text(line, encoding="utf-8")
            if not list(markup(pathlib.Path(folder))):
                yield f"{line} is not reported"


def all_faults(source):
    yield from wrong_edges(source)
    yield from markup(source)


faults = list(all_faults(pathlib.Path(sys.argv[1])) if len(sys.argv) > 1 else planted())
print("\n".join(faults) or "no wrong edge")
sys.exit(1 if faults else 0)
