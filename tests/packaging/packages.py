#!/usr/bin/env python3
"""Installs a build into a scratch folder and makes the Debian packages of it; then unpacks these, and everything has to
work from where it lies: the programs, the example, the manual, and the library in another program.

packages.py BUILD_FOLDER
"""
import gzip
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
# Who links the core and runs nothing but what needs no front end.
USER = """
#include <cstdio>
#include "run/driver.hpp"
#include "run/host.hpp"
struct Quiet : lexon::Host {
  void report_stop(const std::string& text) override { std::puts(text.c_str()); }
  bool ask_yes_no(const std::string&) override { return false; }
  void minimise() override {}
  lexon::StepResult run_step(lexon::RunContext&, const char*, std::int32_t) override { return {}; }
  void finish() override { std::puts("finished"); }
};
int main() {
  Quiet host;
  lexon::run_driver(lexon::RunSettings{}, host);
}
"""
PROGRAMS = {"usr/bin/lexon", "usr/bin/lexon-dict"}
MANUAL = {f"usr/share/man/man{page[-1]}/{page}.gz"
          for page in ("lexon.1", "lexon-dict.1", "lexon-rules.5", "lexon-graph.5", "lexon-dictionary.5")}
PAPERS = {f"usr/share/doc/lexon/{name}"
          for name in ("copyright", "changelog.gz", "README.md", "manual/commands.md", "examples/english/rules.txt",
                       "editors/vscode/package.json")}
LIBRARY = {"usr/lib/liblexon.a", "usr/lib/pkgconfig/lexon.pc", "usr/include/lexon/run/driver.hpp",
           "usr/include/lexon/data/records.hpp"}


def run(*words, **more):
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True, **more)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, words))}: {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def files_in(folder):
    return {path.relative_to(folder).as_posix() for path in folder.rglob("*") if not path.is_dir()}


def sentences(output):
    return [line for line in output.read_text().splitlines() if not line.startswith((";;", "[S"))]


class Packages(unittest.TestCase):
    def setUp(self):
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="lexon-packages-"))
        self.addCleanup(shutil.rmtree, self.scratch)

    def make_packages(self):
        """The packages by their names, with what they say of themselves, each unpacked into one folder."""
        made = self.scratch / "packages"
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", made)
        packages, unpacked = {}, self.scratch / "unpacked"
        for file in sorted(made.glob("*.deb")):
            fields = dict(re.findall(r"^([A-Z][\w-]*): (.*)$", run("dpkg-deb", "--field", file), re.M))
            content = run("dpkg-deb", "--contents", file)
            fields["files"] = {line.split()[5][2:] for line in content.splitlines() if line[0] != "d"}
            fields["rights"] = {line.split()[0] for line in content.splitlines() if line[0] == "d"}
            fields["owners"] = {line.split()[1] for line in content.splitlines()}
            packages[fields["Package"]] = fields
            run("dpkg-deb", "--extract", file, unpacked)
        return packages, unpacked

    def check_example(self, usr):
        work = self.scratch / "work"
        shutil.rmtree(work, ignore_errors=True)
        shutil.copytree(usr / "share/doc/lexon/examples/english", work)
        for name in ("entries", "cr"):
            run(usr / "bin/lexon-dict", "build", work / f"{name}.txt", work / f"{name}.dic")
        run(usr / "bin/lexon", "entries.dic", "rules.txt", "input.txt", "out.txt", "-Ccr.dic", "-L0", "-N0", cwd=work)
        self.assertEqual(sentences(work / "out.txt"), (work / "expected.txt").read_text().splitlines())

    def check_library(self, usr):
        (self.scratch / "user.cpp").write_text(USER)
        environment = dict(os.environ, PKG_CONFIG_PATH=str(usr / "lib/pkgconfig"))
        flags = run("pkg-config", "--cflags", "--libs", "lexon", env=environment).split()
        run("c++", "user.cpp", "-o", "user", *flags, cwd=self.scratch)
        self.assertEqual(run(self.scratch / "user"), "Can't Open Output File : !\nfinished\n")

    def test_installs_where_it_is_told(self):
        run("cmake", "--install", BUILD, "--prefix", "/opt/lexon", env=dict(os.environ, DESTDIR=str(self.scratch / "root")))
        root = self.scratch / "root/opt/lexon"
        wanted = {name.removeprefix("usr/") for name in PROGRAMS | MANUAL | PAPERS | LIBRARY}
        self.assertLessEqual(wanted, files_in(root))
        self.assertEqual(files_in(self.scratch / "root"), {"opt/lexon/" + name for name in files_in(root)})
        self.assertIn(b".Sh EXIT STATUS", gzip.decompress((root / "share/man/man1/lexon.1.gz").read_bytes()))
        self.check_example(root)

    def test_packages_hold_what_runs(self):
        packages, unpacked = self.make_packages()
        self.assertLessEqual({"lexon", "liblexon-dev"}, set(packages))
        self.assertLessEqual(PROGRAMS | MANUAL | PAPERS, packages["lexon"]["files"])
        self.assertFalse([name for name in packages["lexon"]["files"] if name.endswith((".dic", ".rul", ".a", ".hpp"))])
        self.assertLessEqual(LIBRARY, packages["liblexon-dev"]["files"])
        self.assertRegex(packages["lexon"]["Depends"], r"libc6 \(>= [\d.]+\).*libstdc\+\+6")
        for name, fields in packages.items():
            self.assertIn(f"usr/share/doc/{name}/copyright", fields["files"])
            self.assertRegex(fields["Version"], r"^\d+\.\d+\.\d+$")
            self.assertTrue(all(fields.get(key) for key in ("Maintainer", "Section", "Description", "Architecture")), name)
            self.assertEqual((fields["rights"], fields["owners"]), ({"drwxr-xr-x"}, {"root/root"}), name)
        self.check_example(unpacked / "usr")
        self.check_library(unpacked / "usr")
        if "lexon-gui" in packages:
            self.assertIn("usr/bin/lexon-gui", packages["lexon-gui"]["files"])
            self.assertIn("usr/share/man/man1/lexon-gui.1.gz", packages["lexon-gui"]["files"])
            self.assertIn("libqt6widgets6", packages["lexon-gui"]["Depends"])
            self.assertNotIn("qt", packages["lexon"]["Depends"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
