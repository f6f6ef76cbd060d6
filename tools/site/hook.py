"""What the site needs beside the pages: the diagrams as images, and no file of the theme that is missing.

Every docs/diagrams/NAME.dot becomes images/NAME.svg of the site, so that a page shows it as
![what it shows](images/NAME.svg). The images lie in build/, not in the tree.
"""
import os
import pathlib
import re
import shutil
import subprocess

from mkdocs.exceptions import BuildError
from mkdocs.structure.files import File

ROOT = pathlib.Path(__file__).resolve().parents[2]
IMAGES = ROOT / "build" / "site-images"


def draw(source, target):
    target.parent.mkdir(parents=True, exist_ok=True)
    command = ["dot", "-Tsvg", "-Gfontname=sans-serif", "-Nfontname=sans-serif", "-Efontname=sans-serif"]
    drawn = subprocess.run([*command, str(source), "-o", str(target)], capture_output=True, text=True)
    if drawn.returncode != 0 or drawn.stderr:
        raise BuildError(f"{source}: {drawn.stderr or 'cannot be drawn'}")


def on_files(files, config):
    for file in list(files):
        path = file.src_path.replace(os.sep, "/")
        if path.endswith(".dot"):
            image = "images/" + pathlib.Path(path).stem + ".svg"
            draw(pathlib.Path(file.abs_src_path), IMAGES / image)
            files.append(File(image, str(IMAGES), config["site_dir"], config["use_directory_urls"]))
        if path.startswith("man/") or path.endswith(".dot"):
            files.remove(file)
    return files


# The theme as Debian ships it asks for a script that lies elsewhere, under another name.
STAND_INS = {"js/jquery-3.6.0.min.js": "/usr/share/javascript/jquery/jquery.min.js"}


def bare(page):
    return re.sub(r"<!--.*?-->", "", page.read_text(encoding="utf-8"), flags=re.S)


def check_files(site, page, text):
    for target in re.findall(r'<(?:script|link|img)\b[^>]*?\b(?:src|href)="([^"]*)"', text):
        if re.match(r"(https?:)?//", target):
            raise BuildError(f"{page.name}: fetched from elsewhere: {target}")
        folder = site if target.startswith("/") else page.parent
        if not target.startswith("data:") and not (folder / target.split("?")[0].split("#")[0].lstrip("/")).exists():
            raise BuildError(f"{page.name}: not on the site: {target}")


def check_places(site, page, text):
    for name, place in re.findall(r'<a\b[^>]*?\bhref="([^":#/]*)#([^"]+)"', text):
        other = bare(site / name) if name else text
        if f'id="{place}"' not in other:
            raise BuildError(f"{page.name}: no such place: {name}#{place}")


def on_post_build(config):
    site = pathlib.Path(config["site_dir"])
    for name, source in STAND_INS.items():
        if not (site / name).exists() and os.path.exists(source):
            shutil.copyfile(source, site / name)
    for page in site.glob("*.html"):
        text = bare(page)
        check_files(site, page, text)
        check_places(site, page, text)
