"""fora.py FOLDER: does what the programs under Wine ask of the Unix system, until it is ended.

A wish is FOLDER/NAME.pedido (program and arguments, a zero byte between them) with its input in NAME.entrada; the
answer is NAME.saida and NAME.erros, and then NAME.fim with the exit code."""
import os
import pathlib
import subprocess
import sys
import threading
import time

folder = pathlib.Path(sys.argv[1])


def serve(wish):
    command = wish.read_bytes().split(b"\0")
    wish.unlink()
    with open(wish.with_suffix(".entrada"), "rb") as given, open(wish.with_suffix(".saida"), "wb") as output, \
            open(wish.with_suffix(".erros"), "wb") as errors:
        try:
            code = subprocess.run(command, stdin=given, stdout=output, stderr=errors, check=False).returncode
        except OSError as error:
            errors.write(str(error).encode())
            code = 127
    unfinished = wish.with_suffix(".quase")
    unfinished.write_text(str(code))
    unfinished.rename(wish.with_suffix(".fim"))


while True:
    for entry in os.scandir(folder):
        if entry.name.endswith(".pedido"):
            wish = pathlib.Path(entry.path)
            wish = wish.rename(wish.with_suffix(".feito"))
            threading.Thread(target=serve, args=(wish,), daemon=True).start()
    time.sleep(0.005)
