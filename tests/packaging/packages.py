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
import sysconfig
import tempfile
import unittest

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
ROOT = pathlib.Path(__file__).resolve().parents[2]
EMBEDDING = ROOT / "examples" / "embedding"
# Debian's interpreter: the module of the build is for no other.
PYTHON = "/usr/bin/python3"
PROGRAMS = {"usr/bin/lexon", "usr/bin/lexon-dict", "usr/bin/lexon-import", "usr/bin/lexon-lab"}
MANUAL = {f"usr/share/man/man{page[-1]}/{page}.gz"
          for page in ("lexon.1", "lexon-dict.1", "lexon-import.1", "lexon-lab.1", "lexon-rules.5", "lexon-graph.5",
                       "lexon-dictionary.5")}
COMPLETIONS = {f"usr/share/{place}" for program in ("lexon", "lexon-dict", "lexon-import", "lexon-lab")
               for place in (f"bash-completion/completions/{program}", f"zsh/vendor-completions/_{program}",
                             f"fish/vendor_completions.d/{program}.fish")}
PAPERS = {f"usr/share/doc/lexon/{name}"
          for name in ("README.md", "manual/commands.md", "examples/english/rules.txt", "editors/vscode/package.json")}
LIBRARIES = f"usr/lib/{sysconfig.get_config_var('MULTIARCH')}"
HEADERS = {"usr/include/lexon/lexon.h", "usr/include/lexon/lexon.hpp"}
DEVELOPMENT = HEADERS | {f"{LIBRARIES}/{name}" for name in (
    "liblexon.a", "liblexon.so", "pkgconfig/lexon.pc", "cmake/Lexon/LexonConfig.cmake",
    "cmake/Lexon/LexonConfigVersion.cmake", "cmake/Lexon/LexonTargets.cmake")}
SHARED = {f"{LIBRARIES}/liblexon.so.0"}


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

    def check_bytes(self, unpacked):
        """Debian's own judgement, and packages that are the same wherever and whenever they are made."""
        made = sorted((self.scratch / "packages").glob("*.deb"))
        told = subprocess.run(["lintian", "--allow-root", "--fail-on", "error,warning", *map(str, made)],
                              capture_output=True, text=True)
        self.assertEqual(told.returncode, 0, told.stdout + told.stderr)
        again = self.scratch / "again"
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", again)
        self.assertEqual([file.read_bytes() for file in made], [(again / file.name).read_bytes() for file in made])
        for file in unpacked.rglob("*"):
            if file.is_file() and not file.is_symlink():
                self.assertNotIn(str(ROOT).encode() + b"/", file.read_bytes(), file)
        for file in unpacked.glob("usr/share/metainfo/*.xml"):
            run("appstreamcli", "validate", "--no-net", file)
        for file in unpacked.glob("usr/share/applications/*.desktop"):
            run("desktop-file-validate", file)

    def check_completions(self, share):
        """What a shell offers, asked of the shells."""
        line = "lexon-dict build --sk"
        script = (f"source {share}/bash-completion/completions/lexon-dict; COMP_WORDS=({line}); COMP_CWORD=2; "
                  "_lexon_dict; echo ${COMPREPLY[@]}")
        self.assertEqual(run("bash", "-c", script), "--skip-bad\n")
        script = f"set -p fish_complete_path {share}/fish/vendor_completions.d; complete -C 'lexon-dict bu'; complete -C '{line}'"
        path = f"{share.parent}/bin:{os.environ['PATH']}"  # a command that is not there has no completions
        offered = run("fish", "--no-config", "-c", script, env=dict(os.environ, HOME=str(self.scratch), PATH=path))
        self.assertEqual([each.split("\t")[0] for each in offered.splitlines()], ["build", "--skip-bad"])
        for file in (share / "zsh/vendor-completions").iterdir():
            run("zsh", "-n", file)

    def check_example(self, usr):
        work = self.scratch / "work"
        shutil.rmtree(work, ignore_errors=True)
        shutil.copytree(usr / "share/doc/lexon/examples/english", work)
        for name in ("entries", "cr"):
            run(usr / "bin/lexon-dict", "build", work / f"{name}.txt", work / f"{name}.dic")
        run(usr / "bin/lexon", "entries.dic", "rules.txt", "input.txt", "out.txt", "-Ccr.dic", "-L0", "-N0", cwd=work)
        self.assertEqual(sentences(work / "out.txt"), (work / "expected.txt").read_text().splitlines())

    def check_embedding(self, usr):
        """The example programs find what is installed, by CMake and by pkg-config, and render what they shall."""
        work, graphs = self.scratch / "work", "[S:1]\nagn(sleep(>rest).@entry.@past, dog(>animal).@def)\n[/S]\n"
        shown = "[S:1]\tdone\tThe dog slept.\n"
        built = self.scratch / "embedding"
        run("cmake", "-S", EMBEDDING, "-B", built, f"-DCMAKE_PREFIX_PATH={usr}")
        run("cmake", "--build", built)
        libraries = usr.parent / LIBRARIES if usr.name == "usr" else usr / LIBRARIES.removeprefix("usr/")
        environment = dict(os.environ, PKG_CONFIG_PATH=str(libraries / "pkgconfig"), LD_LIBRARY_PATH=str(libraries))
        flags = run("pkg-config", "--cflags", "--libs", "lexon", env=environment).split()
        run("c++", "-std=c++20", EMBEDDING / "sentences.cpp", "-o", built / "by-pkg-config", *flags)
        static = run("pkg-config", "--libs-only-other", "--static", "lexon", env=environment).split()
        run("cc", f"-I{usr}/include", EMBEDDING / "sentences.c", libraries / "liblexon.a", "-o", built / "static", *static,
            "-lstdc++", "-lm")
        files = (work / "entries.dic", work / "rules.txt")
        for name in ("sentences-cpp", "by-pkg-config"):
            self.assertEqual(run(built / name, *files, input=graphs, env=environment), shown, name)
        for name in ("sentences-c", "static"):
            self.assertEqual(run(built / name, *files, graphs, env=environment), shown, name)

    def check_python(self, folder):
        command = [PYTHON, EMBEDDING / "sentences.py", self.scratch / "work/entries.dic", self.scratch / "work/rules.txt",
                   self.scratch / "work/cr.dic"]
        shown = run(*command, input=(self.scratch / "work/input.txt").read_text(), env=dict(os.environ, PYTHONPATH=folder))
        self.assertEqual([line.split("\t")[2] for line in shown.splitlines()],
                         (self.scratch / "work/expected.txt").read_text().splitlines())

    def test_installs_where_it_is_told(self):
        run("cmake", "--install", BUILD, "--prefix", "/opt/lexon", env=dict(os.environ, DESTDIR=str(self.scratch / "root")))
        root = self.scratch / "root/opt/lexon"
        wanted = {name.removeprefix("usr/") for name in PROGRAMS | MANUAL | PAPERS | COMPLETIONS | DEVELOPMENT | SHARED}
        self.assertEqual(wanted - files_in(root), set())
        self.assertEqual(files_in(self.scratch / "root"), {"opt/lexon/" + name for name in files_in(root)})
        self.assertIn(b".Sh EXIT STATUS", gzip.decompress((root / "share/man/man1/lexon.1.gz").read_bytes()))
        self.assertEqual({name for name in files_in(root) if name.startswith("include/")},
                         {name.removeprefix("usr/") for name in HEADERS})
        self.check_example(root)
        self.check_embedding(root)

    def test_packages_hold_what_runs(self):
        packages, unpacked = self.make_packages()
        self.assertEqual({"lexon", "lexon-doc", "liblexon0", "liblexon-dev"} - set(packages), set())
        self.assertEqual((PROGRAMS | MANUAL | COMPLETIONS) - packages["lexon"]["files"], set())
        self.assertEqual((PAPERS | {"usr/share/doc-base/lexon"}) - packages["lexon-doc"]["files"], set())
        self.assertEqual(packages["lexon-doc"]["Architecture"], "all")
        self.assertFalse([name for name in packages["lexon"]["files"] if name.endswith((".dic", ".rul", ".a", ".hpp"))])
        self.assertEqual(DEVELOPMENT - packages["liblexon-dev"]["files"], set())
        self.assertEqual(SHARED - packages["liblexon0"]["files"], set())
        self.assertEqual(packages["liblexon-dev"]["Depends"], f"liblexon0 (= {packages['liblexon0']['Version']})")
        self.assertIn("libstdc++6", packages["liblexon0"]["Depends"])
        self.assertRegex(packages["lexon"]["Depends"], r"libc6 \(>= [\d.]+\).*libstdc\+\+6")
        for name, fields in packages.items():
            self.assertIn(f"usr/share/doc/{name}/copyright", fields["files"])
            self.assertRegex(fields["Version"], r"^\d+\.\d+\.\d+$")
            self.assertTrue(all(fields.get(key) for key in ("Maintainer", "Section", "Description", "Architecture")), name)
            self.assertEqual((fields["rights"], fields["owners"]), ({"drwxr-xr-x"}, {"root/root"}), name)
        self.check_bytes(unpacked)
        self.check_completions(unpacked / "usr/share")
        self.check_example(unpacked / "usr")
        self.check_embedding(unpacked / "usr")
        if "python3-lexon" in packages:
            self.assertIn("python3 (>= ", packages["python3-lexon"]["Depends"])
            self.check_python(unpacked / "usr/lib/python3/dist-packages")
            self.assertLessEqual({"usr/bin/lexon-cluster", "usr/share/man/man1/lexon-cluster.1.gz"},
                                 packages["python3-lexon"]["files"])
            run(PYTHON, unpacked / "usr/bin/lexon-cluster", "--version",
                env=dict(os.environ, PYTHONPATH=unpacked / "usr/lib/python3/dist-packages"))
        if "lexon-gui" in packages:
            self.assertLessEqual({"usr/bin/lexon-gui", "usr/share/man/man1/lexon-gui.1.gz",
                                  "usr/share/lexon/translations/lexon-gui_de.qm"}, packages["lexon-gui"]["files"])
            self.assertIn("libqt6widgets6", packages["lexon-gui"]["Depends"])
            self.assertNotIn("qt", packages["lexon"]["Depends"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
