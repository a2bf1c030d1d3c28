#!/usr/bin/env python3
"""compare_with_sqlite.py MDBSQL COUNT [SEED]: asks the engine and SQLite COUNT random questions with GROUP BY, DISTINCT,
TOP, ORDER BY of expressions, INSERT from SELECT and the functions, as far as both mean the same by them."""
import pathlib
import random
import re
import sqlite3
import subprocess
import sys
import tempfile

mdbsql, count = sys.argv[1], int(sys.argv[2])
rng = random.Random(int(sys.argv[3]) if len(sys.argv) > 3 else 20240315)
NUMBERS, TEXTS = ["k", "a", "b", "d"], ["t", "u"]
WORDS = ["'diesel'", "'Gasolina'", "'GASOLINA'", "'etanol  x'", "'  a'", "'b'", "'2'", "''", "Null"]
ROWS = [[str(k), rng.choice("0 1 2 2 3 7 -4 Null".split()), rng.choice("1 2 5 Null".split()),
         rng.choice("0.5 1.5 -2.25 100 Null".split()), rng.choice(WORDS), rng.choice(WORDS)] for k in range(60)]

# What has another name there. IIf takes unknown for false; a text sum is Null with one.
SQLITE = {"IIf(": "iif(", "Left(": "lft(", "Right(": "rgt(", "Mid(": "substr(", "Len(": "length(", "UCase(": "upper(",
          "LCase(": "lower(", "Nz(": "ifnull(", "LTrim(": "ltrim(", "RTrim(": "rtrim(", "Trim(": "trim("}


def number(depth=0):
    kind = rng.randrange(9 if depth < 2 else 3)
    if kind < 3:
        return rng.choice(NUMBERS + ["1", "2", "-3", "0.5"])
    if kind < 5:
        return f"({number(depth + 1)} {rng.choice('+-*')} {number(depth + 1)})"
    if kind == 5:
        return f"Len({text(depth + 1)})"
    if kind == 6:
        return f"Nz({rng.choice(NUMBERS)}, {rng.choice(['0', '9'])})"
    if kind == 7:
        return f"Abs({number(depth + 1)})"
    return f"IIf({condition(depth + 1)}, {number(depth + 1)}, {number(depth + 1)})"


def text(depth=0):
    kind = rng.randrange(8 if depth < 2 else 3)
    if kind < 3:
        return rng.choice(TEXTS + ["'ab'"])
    if kind == 3:
        return f"{rng.choice(['Left', 'Right'])}({text(depth + 1)}, {rng.randrange(1, 6)})"
    if kind == 4:
        return f"Mid({text(depth + 1)}, {rng.randrange(1, 5)}, {rng.randrange(4)})"
    if kind == 5:
        return f"{rng.choice(['UCase', 'LCase', 'Trim', 'LTrim', 'RTrim'])}({text(depth + 1)})"
    return f"Nz({rng.choice(TEXTS)}, 'nada')"


def condition(depth=0):
    kind = rng.randrange(6)
    if kind < 3:
        return f"{number(depth + 1)} {rng.choice(['=', '<>', '<', '>='])} {number(depth + 1)}"
    if kind == 3:
        return f"{rng.choice(TEXTS)} {rng.choice(['=', '<>'])} {rng.choice(WORDS[:-1])}"
    if kind == 4:
        return f"{rng.choice(NUMBERS + TEXTS)} Is {rng.choice(['', 'Not '])}Null"
    return f"({condition(depth + 1)} {rng.choice(['And', 'Or'])} {condition(depth + 1)})" if depth < 2 else "a > 1"


def total():
    return rng.choice(["Count(*)", f"Count({rng.choice(NUMBERS + TEXTS)})", f"Sum({number(1)})", f"Avg({number(1)})",
                       f"Min({number(1)})", f"Max({number(1)})"])


def key():
    """A number or text that is no place in the list of items."""
    chosen = rng.choice([number, text])(1)
    return f"({chosen} + 0)" if chosen.lstrip("-").replace(".", "").isdigit() else chosen


def question():
    where = f" WHERE {condition()}" if rng.random() < 0.5 else ""
    kind = rng.randrange(4)
    if kind == 0:
        keys = [key() for _ in range(rng.randrange(1, 3))]
        items = keys + [total() for _ in range(rng.randrange(1, 4))]
        rest = f"{where} GROUP BY {', '.join(keys)}"
        if rng.random() < 0.4:
            rest += f" HAVING {total()} {rng.choice(['>', '<='])} {rng.randrange(8)}"
        return "", items, rest, ""
    if kind == 1:
        return "DISTINCT ", [rng.choice([number, text])(1) for _ in range(rng.randrange(1, 4))], where, ""
    items = [rng.choice([number, text])() for _ in range(rng.randrange(1, 4))]
    order = f" ORDER BY {key()} {rng.choice(['', 'DESC'])}, k"
    return (f"TOP {rng.randrange(1, 30)} " if kind == 2 else ""), ["k"] + items, where, order


def plain(value):
    """A cell as both show it: texts without case and trailing blanks, numbers to ten digits."""
    if value is None or value == "":
        return ""
    try:
        return f"{float(value) + 0:.10g}"
    except ValueError:
        return str(value).lower().rstrip(" ")


def sql_for_sqlite(sql):
    for ours, theirs in SQLITE.items():
        sql = sql.replace(ours, theirs)
    return sql


def main():
    other = sqlite3.connect(":memory:")
    other.create_function("lft", 2, lambda t, n: None if t is None else t[:n])
    other.create_function("rgt", 2, lambda t, n: None if t is None else t[-n:])
    # As in a text column of ours: case and trailing blanks do not count.
    other.create_collation("OURS", lambda a, b: (a.lower().rstrip(" ") > b.lower().rstrip(" ")) -
                           (a.lower().rstrip(" ") < b.lower().rstrip(" ")))
    columns = "k LONG, a LONG, b LONG, d DOUBLE, t TEXT(20){0}, u TEXT(20){0}"
    script = []
    for name in ("T", "C"):
        script.append(f"CREATE TABLE {name} ({columns.format('')})")
        other.execute(f"CREATE TABLE {name} ({columns.format(' COLLATE OURS')})")
    for row in ROWS:
        script.append(f"INSERT INTO T VALUES ({', '.join(row)})")
        other.execute(script[-1])

    asked = []
    for _ in range(count):
        first, items, rest, order = question()
        if rng.random() < 0.1:
            items = ["k", rng.choice(["a", "1"]), "b", number(), text(), "u"]
            script += ["DELETE FROM C", f"INSERT INTO C SELECT {', '.join(items)} FROM T{'' if 'GROUP' in rest else rest}"]
            other.execute("DELETE FROM C")
            other.execute(sql_for_sqlite(script[-1]))
            first, items, rest, order = "", ["k", "a", "b", "d", "t", "u"], "", " ORDER BY k"
            source = "C"
        else:
            source = "T"
        ours = f"SELECT {first}{', '.join(items)} FROM {source}{rest}{order}"
        # A text made by a function is compared by the column's rules with us.
        theirs = sql_for_sqlite(ours).replace(f"SELECT {first}", "SELECT " + first.split("TOP")[0], 1)
        collated = [f"{sql_for_sqlite(item)} COLLATE OURS" for item in items]
        if first.startswith("DISTINCT"):
            theirs = f"SELECT DISTINCT {', '.join(collated)} FROM {source}{sql_for_sqlite(rest)}"
        if "GROUP BY" in rest:
            keys = rest.split(" GROUP BY ")[1].split(" HAVING ")[0]
            theirs = theirs.replace(f"GROUP BY {sql_for_sqlite(keys)}", "GROUP BY " + ", ".join(
                collated[:len([i for i in items if not i.startswith(("Count", "Sum", "Avg", "Min", "Max"))])]))
        if " ORDER BY " in order and order.endswith("k"):
            theirs = re.sub(r" ORDER BY (.*?) (DESC)?, k$", r" ORDER BY \1 COLLATE OURS \2, k", theirs)
        if first.startswith("TOP"):
            theirs += " LIMIT " + first.split()[1]
        script += [ours, "SELECT 'fim' AS fim"]
        asked.append((ours, bool(order), sorted_rows(other.execute(theirs).fetchall(), bool(order))))
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run([mdbsql, str(pathlib.Path(folder) / "x.mdb"), "--create"], text=True, encoding="utf-8",
                                input="".join(line + ";\n" for line in script), capture_output=True, check=False)
    if result.returncode != 0:
        sys.exit(result.stderr)
    answers = result.stdout.split("fim\nfim\n")
    for (ours, ordered, expected), answer in zip(asked, answers, strict=False):
        rows = [line.split("\t") for line in answer.split("\n")[1:-1]]
        if sorted_rows(rows, ordered) != expected:
            sys.exit(f"differs: {ours}\nours:   {sorted_rows(rows, ordered)[:9]}\nSQLite: {expected[:9]}")
    print(f"{len(asked)} questions, {sum(bool(expected) for _, _, expected in asked)} with rows")


def sorted_rows(rows, ordered):
    cells = [tuple(plain(cell) for cell in row) for row in rows]
    return cells if ordered else sorted(cells)


main()
