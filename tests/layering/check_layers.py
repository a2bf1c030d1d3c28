"""Reads the include lines of src and fails on any edge between folders that the house does not allow."""
import pathlib
import re
import sys

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
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]', re.MULTILINE)

source = pathlib.Path(sys.argv[1])
faults = []
files = 0
for path in sorted(source.rglob("*")):
    if path.suffix not in {".h", ".cpp"}:
        continue
    files += 1
    relative = path.relative_to(source)
    folder = relative.parts[0]
    for bracket, name in INCLUDE.findall(path.read_text(encoding="utf-8")):
        target = name.split("/")[0]
        if bracket == '"' and target in MAY_USE and target != folder:
            if target not in MAY_USE[folder]:
                faults.append(f"{relative} includes {name}")
            if target == "accessfile" and not ENGINE_USERS & set(relative.parents):
                faults.append(f"{relative} includes {name}: only the data provider may")
        if folder == "accessfile" and bracket == "<" and re.match(r"Q[A-Z]|Qt", name):
            faults.append(f"{relative} includes {name}: the engine is standard C++ only")
if files == 0:
    faults.append("no sources found")
print("\n".join(faults) or f"{files} files keep the layers")
sys.exit(1 if faults else 0)
