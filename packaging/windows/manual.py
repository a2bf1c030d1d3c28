"""manual.py MANUAL.MD FOLDER: the operator's manual as a page for the browser, with its pictures, in FOLDER."""
import pathlib
import shutil
import sys

import markdown
from markdown.extensions.toc import TocExtension, slugify_unicode

source, folder = map(pathlib.Path, sys.argv[1:])
folder.mkdir(parents=True, exist_ok=True)
body = markdown.markdown(source.read_text("utf-8"), extensions=["tables", TocExtension(slugify=slugify_unicode)])
(folder / "manual.html").write_text(f"""<!DOCTYPE html>
<html lang="pt-BR"><head><meta charset="utf-8"><title>Planilha de Bombas: manual do operador</title>
<style>body {{ font: 16px "Segoe UI", sans-serif; max-width: 52em; margin: 2em auto; padding: 0 1em; line-height: 1.5 }}
img {{ max-width: 100%; border: 1px solid #ccc }} table {{ border-collapse: collapse }}
td, th {{ border: 1px solid #ccc; padding: .3em .6em; text-align: left }} code {{ background: #f1f3f5 }}</style>
</head><body>
{body}
</body></html>
""", "utf-8")
shutil.copytree(source.parent / "pictures", folder / "pictures", dirs_exist_ok=True)
