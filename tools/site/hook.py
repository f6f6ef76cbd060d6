"""What the site needs beside the pages: the diagrams as images, an index for the search, and no link that leads nowhere.

Every docs/diagrams/NAME.dot becomes images/NAME.svg of the site, so that a page shows it as
![what it shows](images/NAME.svg). The images lie in build/, not in the tree.
"""
import html
import json
import os
import pathlib
import re
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


SECTIONS = []  # of all pages, for the search


def on_page_content(content, page, config, files):
    """Cuts the page at its headings: each is a section that the search can find."""
    parts = re.split(r'<h[1-4] id="([^"]+)">(.*?)</h[1-4]>', content, flags=re.S)
    for place, title, text in zip(parts[1::3], parts[2::3], parts[3::3]):
        title = plain(re.sub(r'<a class="headerlink".*?</a>', "", title))
        SECTIONS.append({"page": page.title, "place": f"{page.url}#{place}", "title": title, "text": plain(text)})
    return content


def plain(text):
    return " ".join(html.unescape(re.sub(r"<[^>]*>", " ", text)).split())


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
    index = json.dumps(SECTIONS, ensure_ascii=False)
    (site / "js" / "index.js").write_text(f"const lexonIndex = {index};\n", encoding="utf-8")
    # For web servers, and with the date of the build in it.
    for name in ("sitemap.xml", "sitemap.xml.gz"):
        (site / name).unlink(missing_ok=True)
    for page in site.glob("*.html"):
        text = bare(page)
        check_files(site, page, text)
        check_places(site, page, text)
