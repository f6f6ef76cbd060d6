"""Builds the wheel of the Python module with CMake: what `pip install .` calls.

It needs CMake, a C++ compiler, pybind11 and the interpreter's headers from the system (Debian: cmake ninja-build g++
pybind11-dev python3-dev) and nothing from elsewhere, so that it works without a network.
"""

import base64
import csv
import hashlib
import io
import pathlib
import re
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
PACKAGE = ROOT / "python" / "lexon"
PACKAGE_FILES = [PACKAGE / name for name in ("__init__.py", "_core.pyi", "py.typed")] + sorted(PACKAGE.glob("cluster/*.py"))
SCRIPTS = "[console_scripts]\nlexon-cluster = lexon.cluster.command:main\n"


def get_requires_for_build_wheel(config_settings=None):
    return []


def _version():
    return re.search(r"^project\(lexon VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text(), re.M)[1]


def _metadata():
    return (
        f"Metadata-Version: 2.1\nName: lexon\nVersion: {_version()}\n"
        "Summary: Sentences from graphs of meaning, by a dictionary and a file of rules\n"
        "License: MIT\nRequires-Python: >=3.9\nDescription-Content-Type: text/markdown\n\n"
        + (ROOT / "docs" / "python.md").read_text()
    )


def _tag():
    name = f"cp{sys.version_info.major}{sys.version_info.minor}"
    return f"{name}-{name}-{re.sub('[-.]', '_', sysconfig.get_platform())}"


def _build_module(folder):
    subprocess.run(
        ["cmake", "-S", ROOT, "-B", folder, "-DCMAKE_BUILD_TYPE=Release", "-DLEXON_TESTS=OFF", "-DLEXON_PROGRAMS=OFF",
         f"-DLEXON_PYTHON_EXECUTABLE={sys.executable}"], check=True)
    subprocess.run(["cmake", "--build", folder, "--parallel", "--target", "lexon_python"], check=True)
    return next((pathlib.Path(folder) / "python" / "lexon").glob("_core.*.so"))


def _record_row(name, content):
    digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
    return (name, f"sha256={digest}", len(content))


def _write_wheel(path, files, info):
    rows = [_record_row(name, content) for name, content in files.items()]
    record = io.StringIO()
    csv.writer(record, lineterminator="\n").writerows([*rows, (f"{info}/RECORD", "", "")])
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as wheel:
        for name, content in {**files, f"{info}/RECORD": record.getvalue().encode()}.items():
            wheel.writestr(name, content)


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    info = f"lexon-{_version()}.dist-info"
    wheel = f"Wheel-Version: 1.0\nGenerator: lexon\nRoot-Is-Purelib: false\nTag: {_tag()}\n"
    with tempfile.TemporaryDirectory(prefix="lexon-wheel-") as folder:
        module = _build_module(folder)
        files = {path.relative_to(PACKAGE.parent).as_posix(): path.read_bytes() for path in PACKAGE_FILES}
        files[f"lexon/{module.name}"] = module.read_bytes()
    files[f"{info}/METADATA"] = _metadata().encode()
    files[f"{info}/WHEEL"] = wheel.encode()
    files[f"{info}/entry_points.txt"] = SCRIPTS.encode()
    files[f"{info}/LICENSE"] = (ROOT / "LICENSE").read_bytes()
    name = f"lexon-{_version()}-{_tag()}.whl"
    _write_wheel(pathlib.Path(wheel_directory) / name, files, info)
    return name
